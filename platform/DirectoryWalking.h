#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/FileManager.h"

// An entry as a walk meets it. Valid during the call that hands it over.
struct WalkedEntry {
    std::string_view name{};
    FileType type{};            // of the item itself, links not followed
    std::uint64_t fileNumber{}; // as attributesOfItem tells it
};

// A place in a tree of directories, from which one goes down and up. It works at any depth, never follows a link, and
// never comes to a directory in which it already is.
class DirectoryWalk {
public:
    virtual ~DirectoryWalk() = default;

    // All entries of the present directory but "." and ".." and unfinished temporaries of this program. What cannot be
    // read is passed over. To be called once in each directory.
    virtual void forEachEntry(const std::function<void(const WalkedEntry&)>& visit) = 0;

    // Goes down to a directory of the present one. False when that cannot be read.
    virtual bool enter(const std::string& name) = 0;
    // Goes back up. Once for each enter() that was true.
    virtual void leave() = 0;
};

// May be called on any queue; a walk belongs to the queue that began it.
class DirectoryWalking {
public:
    virtual ~DirectoryWalking() = default;

    // A walk that stands at the directory; null when it cannot be read. FollowLinks is about this path only.
    virtual std::unique_ptr<DirectoryWalk> walk(const std::string& directoryPath, FollowLinks links) const = 0;
};
