#pragma once

#include <set>
#include <string>
#include <unordered_set>

#include "watch/DirectoryRefreshPass.h"
#include "watch/RefreshKeys.h"

// What one list of watch events leads to, gathered from all of them before anything is told.
struct WatchEventEffects {
    WorkspaceMutationsByRootPath mutations{};
    std::set<WorkspaceDirectoryRefreshKey> refreshKeys{};
    std::set<std::string> unavailableRootPaths{};
    // The workspaces of which every listing is to be done again already.
    std::unordered_set<std::string> whollyRefreshedRootPaths{};
    // New directories. What is below one of them was entered into the index together with it.
    std::unordered_set<std::string> createdDirectoryPaths{};
};
