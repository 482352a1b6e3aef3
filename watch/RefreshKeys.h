#pragma once

#include <compare>
#include <set>
#include <string>
#include <vector>

#include "platform/FileManager.h"
#include "watch/WorkspaceWatchEvent.h"
#include "workspace/ManagedWorkspace.h"

// One directory listing that is to be done again.
struct WorkspaceDirectoryRefreshKey {
    std::string rootPath{};
    std::string directoryPath{};

    auto operator<=>(const WorkspaceDirectoryRefreshKey&) const = default;
};

// The directories from the start up to the root, which is always the last, also for a start outside it.
std::vector<std::string> ancestorPaths(const std::string& startPath, const std::string& rootPath,
                                       const FileManager& fileManager);

// Whether the listings that the event can have changed are the same for every such event in its directory.
bool dependsOnDirectoryAlone(const WorkspaceWatchEvent& event);

// Which of the listings that the client has loaded an event can have changed.
std::set<WorkspaceDirectoryRefreshKey> refreshKeys(const ManagedWorkspace& workspace, const WorkspaceWatchEvent& event,
                                                   const FileManager& fileManager);
