#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/Environment.h"
#include "platform/EventStream.h"
#include "platform/FileManager.h"
#include "platform/Output.h"
#include "platform/Queue.h"
#include "watch/RenamePairing.h"
#include "watch/WorkspaceWatchEvent.h"

// What the watch stream asks of the system.
struct WatchStreamPlatform {
    EventStreamSource& eventStreamSource;
    Queue& queue;
    const Clock& clock;
    const FileManager& fileManager;
    const Environment& environment;
    Output& errorOutput;
};

// Turns the system's notifications about a set of root directories into events, and hands each list of them to one
// callback. It knows paths, and nothing of workspaces or documents. All its state lives on its own queue, on which the
// callback is called; the members below enter that queue and wait until they are done.
class WorkspaceWatchStream : public std::enable_shared_from_this<WorkspaceWatchStream> {
public:
    // An empty list says that, for want of memory, events were lost.
    using Callback = std::function<void(std::vector<WorkspaceWatchEvent>)>;

    WorkspaceWatchStream(const WatchStreamPlatform& watchPlatform, Callback eventsCallback);
    ~WorkspaceWatchStream();
    WorkspaceWatchStream(const WorkspaceWatchStream&) = delete;
    WorkspaceWatchStream& operator=(const WorkspaceWatchStream&) = delete;

    // Replaces the watched roots, and what is of interest below them. Roots that stay lose no events by it. A root that
    // is no directory is not watched; when it becomes one, it is told of as changed, and it is for the caller to come
    // back with the roots.
    void updateWatchedRoots(const std::vector<std::string>& rootPaths, const EventStreamInterest& interest);

    // No event is delivered any more.
    void cancel();

private:
    void watch(std::vector<std::string> normalizedRootPaths, const EventStreamInterest& interest);
    void startStream();
    void awaitRoots(std::vector<std::string> missingRootPaths);
    void tellMissedSoon(const std::vector<std::string>& missingRootPaths);
    void awaitedRootsAppeared();

    void handleEventBatch(const EventStreamBatch& batch);
    void pairAndDeliver(const EventStreamBatch& batch);
    void schedulePendingRenameFlush();
    void flushPendingRenames();
    void deliver(const std::vector<RawEvent>& rawBatch, std::vector<WorkspaceWatchEvent> events);
    const std::string* matchingRoot(const std::string& path) const;

    const WatchStreamPlatform platform;
    Queue& queue;
    const Callback callback;
    const bool debugWatchEvents;
    std::unique_ptr<EventStream> stream; // none while nothing is watched, or when the system refused
    RenamePairing renamePairing;
    std::vector<std::string> watchedRoots;
    std::vector<std::string> awaitedRoots; // in normal form
    std::optional<EventStreamInterest> presentInterest;
};
