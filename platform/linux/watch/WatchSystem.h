#pragma once

#include <cerrno>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileManager.h"
#include "platform/linux/FileIdentity.h"
#include "platform/linux/watch/DeliveryWindow.h"
#include "platform/linux/watch/ItemIdentity.h"
#include "platform/linux/watch/MountTable.h"

// What the watcher asks of the kernel; a test may put a limit or a disk of its own in its place.

// What the kernel can tell of a file system's changes.
enum class EventCoverage : std::uint8_t {
    complete,
    ownChangesOnly, // others reach the files on another way, as with network file systems
    pointless       // made up by the kernel; nobody's files are there
};

struct FolderStatus {
    FileIdentity identity{};
    std::uint64_t mountNumber{}; // of the mount through which it was reached; 0 where the kernel does not tell
    std::int64_t stamp{};        // another one after a change to the list of entries
    bool isSettled = false;      // the last change is so old that a further one would have another stamp
    EventCoverage coverage{};
};

// By what a poll tells that a file was written.
struct FileStamp {
    std::uint64_t inode{};
    std::uint64_t size{};
    std::int64_t modified{};

    bool operator==(const FileStamp&) const = default;
};

class OpenFolder;

struct OpenedFolder {
    std::unique_ptr<OpenFolder> folder{}; // absent on failure
    int error{};
};

struct AddedWatch {
    int watch = -1; // -1 on failure
    int error{};
};

// Whether an error says that no folder is there, and not that it cannot be reached.
inline bool isAbsence(int error) {
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

// A folder that stays the same one, whatever happens to its path.
class OpenFolder {
public:
    virtual ~OpenFolder() = default;

    virtual FolderStatus status() const = 0;
    virtual ItemIdentity item(const std::string& name) const = 0;
    virtual std::optional<FileStamp> fileStamp(const std::string& name) const = 0;
    // Hands over all entries. False when the reading failed part of the way.
    virtual bool forEachEntry(const std::function<void(std::string_view, ItemIdentity)>& visit) const = 0;

    // A folder in this one, for listing, links not followed.
    virtual OpenedFolder openFolder(const std::string& name) const = 0;
    virtual AddedWatch watch() const = 0;
};

enum class OpenFor { looking, listing };

class WatchSystem {
public:
    virtual ~WatchSystem() = default;

    virtual WatchTime now() const = 0;
    virtual bool canWatch() const = 0;

    virtual OpenedFolder openFolder(const std::string& path, FollowLinks links, OpenFor purpose) = 0;
    virtual std::optional<FileIdentity> directoryAt(const std::string& path) = 0; // links followed
    virtual std::string realPath(const std::string& path) = 0;                    // the same where nothing is there
    virtual ItemIdentity itemAt(const std::string& path) = 0;

    // Paths of this size and more are gone step by step.
    virtual std::size_t longestPath() const = 0;

    // A folder that is watched already keeps its watch, however it is watched again.
    virtual AddedWatch watchFolder(const std::string& path, FollowLinks links) = 0;
    virtual AddedWatch watchAncestor(const std::string& path) = 0; // tells only that it is moved or deleted
    virtual void unwatch(int watch) = 0;

    virtual std::vector<MountPoint> mountPoints() = 0;
};
