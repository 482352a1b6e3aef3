#pragma once

#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "watch/DirectoryRefreshPass.h"
#include "watch/RefreshKeys.h"

// What one list of watch events leads to, gathered from all of them before anything is told.
struct WatchEventEffects {
    WorkspaceMutationsByRootPath mutations{};
    std::set<WorkspaceDirectoryRefreshKey> refreshKeys{};
    std::set<std::string> unavailableRootPaths{};
    // By root, the directories in which something has changed that concerns no other listings than any other such
    // change.
    std::unordered_map<std::string, std::unordered_set<std::string>> refreshedDirectoryPaths{};
    // The workspaces of which every listing is to be done again already.
    std::unordered_set<std::string> whollyRefreshedRootPaths{};
    // New directories. What is below one of them was entered into the index together with it.
    std::unordered_set<std::string> createdDirectoryPaths{};
};
