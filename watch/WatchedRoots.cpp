#include "watch/WatchedRoots.h"

#include <algorithm>
#include <set>

#include "workspace/PathComponents.h"

std::vector<std::string> watchedRoots(const std::map<std::string, ManagedWorkspace>& workspacesByRootPath,
                                      const std::map<std::string, ManagedDocument>& documentsByID) {
    std::set<std::string> roots;
    for (const auto& [rootPath, workspace] : workspacesByRootPath) roots.insert(rootPath);
    for (const auto& [documentID, document] : documentsByID) {
        std::string folderPath = parentPath(document.path);
        const bool isCovered = std::any_of(workspacesByRootPath.begin(), workspacesByRootPath.end(),
                                           [&](const auto& entry) { return isAtOrWithin(folderPath, entry.first); });
        if (!isCovered) roots.insert(std::move(folderPath));
    }
    return {roots.begin(), roots.end()};
}

EventStreamInterest watchedInterest(const std::vector<std::string>& rootPaths,
                                    const std::map<std::string, ManagedWorkspace>& workspacesByRootPath,
                                    const std::map<std::string, ManagedDocument>& documentsByID) {
    EventStreamInterest interest;
    for (const auto& [rootPath, workspace] : workspacesByRootPath) {
        const auto& loaded = workspace.loadedDirectoryPaths;
        interest.directoryPaths.insert(interest.directoryPaths.end(), loaded.begin(), loaded.end());
    }
    for (const auto& [documentID, document] : documentsByID) interest.documentPaths.push_back(document.path);
    for (const std::string& rootPath : rootPaths) {
        if (!workspacesByRootPath.contains(rootPath)) interest.documentRootPaths.push_back(rootPath);
    }
    return interest;
}
