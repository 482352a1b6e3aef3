#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileIdentifier.h"
#include "platform/Queue.h"

// The seam to the system's stream of file-system events.

// One thing that happened at one path. The flags say what; several may be set. A notification without any flag says
// that something in the directory, or in a document of it, may have changed, and that nobody knows what.
// A rename comes as two adjacent notifications, the old path before the new, both with the item's identifier.
struct EventStreamNotification {
    std::optional<std::string> path{};
    std::uint32_t flags{};
    std::optional<FileIdentifier> fileID{}; // absent where the item is gone

    bool operator==(const EventStreamNotification&) const = default;
};

namespace EventStreamFlag {
inline constexpr std::uint32_t rootChanged = 0x00000020;
inline constexpr std::uint32_t itemCreated = 0x00000100;
inline constexpr std::uint32_t itemRemoved = 0x00000200;
inline constexpr std::uint32_t itemInodeMetaMod = 0x00000400;
inline constexpr std::uint32_t itemRenamed = 0x00000800;
inline constexpr std::uint32_t itemModified = 0x00001000;
inline constexpr std::uint32_t itemChangeOwner = 0x00004000;
inline constexpr std::uint32_t itemIsFile = 0x00010000;
inline constexpr std::uint32_t itemIsDir = 0x00020000;
inline constexpr std::uint32_t itemIsSymlink = 0x00040000;
inline constexpr std::uint32_t itemCloned = 0x00400000;
} // namespace EventStreamFlag

using EventStreamBatch = std::vector<EventStreamNotification>;

// What somebody looks at. It comes first where the system cannot watch everything at once, or not everything at all.
// Paths are normalised.
struct EventStreamInterest {
    std::vector<std::string> directoryPaths{}; // directories whose listings are kept up to date
    std::vector<std::string> documentPaths{};  // open documents; their folders are of interest too
    // Roots that are there only for the documents in them. Of a large tree below such a root only the nearest thousand
    // directories are watched.
    std::vector<std::string> documentRootPaths{};

    bool operator==(const EventStreamInterest&) const = default;
};

// A stream over a set of directories and all below them, from its start on and without history.
// To be used on the queue on which it delivers.
class EventStream {
public:
    virtual ~EventStream() = default; // stops it

    // False when the system refuses; the stream is then of no use. Returns with the roots and everything of interest
    // watched; what is left of a large tree follows soon, without holding up the caller.
    virtual bool start() = 0;
    // After the return no further batch is delivered and the queue is left alone.
    virtual void stop() = 0;
};

// One stream runs at a time. A stream that is started right after another was stopped, within the same task of the
// queue, goes on where that one stood: what both watch stays watched and no change is lost in between.
class EventStreamSource {
public:
    virtual ~EventStreamSource() = default;

    // The stream delivers its batches on the queue. The latency is the time for which it may gather notifications; a
    // system that knows better when a change is complete goes by that. Absent when there is no such stream to give.
    virtual std::unique_ptr<EventStream> makeEventStream(const std::vector<std::string>& rootPaths,
                                                         std::chrono::nanoseconds latency, Queue& queue,
                                                         std::function<void(EventStreamBatch)> deliver) = 0;

    // Replaces the interest, before or while a stream runs; in the latter case to be called on the stream's queue.
    // After the return nothing in these directories changes unnoticed. A directory that had not been watched until now
    // is reported once without flags, since it may have changed between the caller's look at it and this call.
    virtual void setInterest(EventStreamInterest interest) = 0;

    // Calls appeared once, on the queue, when any of these paths, missing until now, is a directory, be there a stream
    // or not. Replaces what was awaited before; an empty list awaits nothing. To be called on the queue.
    virtual void awaitDirectories(std::vector<std::string> paths, Queue& queue, std::function<void()> appeared) = 0;
};
