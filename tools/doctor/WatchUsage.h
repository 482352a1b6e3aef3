#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/doctor/Finding.h"

// Who uses the kernel's inotify watches, of which each user has only so many.

struct WatchLimits {
    std::optional<std::uint64_t> watches{};
    std::optional<std::uint64_t> instances{};
    std::optional<std::uint64_t> queuedEvents{};
};

struct ProcessWatches {
    pid_t processID{};
    std::string name{};
    uid_t user{};
    std::uint64_t instances{};
    std::uint64_t watches{};
};

struct WatchUsage {
    std::vector<ProcessWatches> processes{}; // those that have instances, the largest first
    std::size_t unreadableCount{};           // processes of this user into which it may not look
};

// Both read what the kernel tells below the folder, which is /proc.
WatchLimits readWatchLimits(const std::string& procPath);
WatchUsage readWatchUsage(const std::string& procPath, uid_t user);

// What follows for a user who wants to watch so many folders.
std::vector<Finding> watchFindings(const WatchLimits& limits, const WatchUsage& usage, uid_t user,
                                   std::uint64_t folderCount);
