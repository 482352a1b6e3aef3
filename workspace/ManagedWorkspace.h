#pragma once

#include <chrono>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "identity/EventNodePathIndex.h"
#include "shared/WorkspaceBrowserNodePayload.h"
#include "watch/WorkspaceWatchEvent.h"

// One open workspace root: what the client has been shown of it, and what is known of the rest. It can be large, and so
// it is changed where it stands, after the last step that can fail.
struct ManagedWorkspace {
    explicit ManagedWorkspace(const std::string& normalizedRootPath)
        : rootPath(normalizedRootPath), knownPathsByEventNodeID(normalizedRootPath) {}

    std::string rootPath;
    std::string realRootPath{};                   // with no link on the way, when the client opened it last
    std::set<std::string> loadedDirectoryPaths{}; // the directories whose children the client has
    std::set<std::string> awayDirectoryPaths{};   // of them, those that were shown and not found, to be looked at again
    std::unordered_map<std::string, WorkspaceBrowserNodePayload> cachedNodesByID{};
    std::unordered_map<std::string, std::vector<std::string>> childNodeIDsByDirectoryPath{}; // in listing order
    std::unordered_map<std::string, std::chrono::nanoseconds> mutationsFromListings{}; // by key, when they were told
    bool mayHoldUnlisted = false; // whether anything can have left the listings since the cache was pruned
    EventNodePathIndex knownPathsByEventNodeID;
    bool isEventNodeIndexReady = false;
    std::vector<WorkspaceWatchEvent> pendingWatchEvents{}; // held back until the index is ready
};
