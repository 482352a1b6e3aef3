#include "watch/WatchedRoots.h"

#include <algorithm>
#include <set>

#include "workspace/PathComponents.h"

namespace {

using Workspaces = std::map<std::string, ManagedWorkspace>;

// The path again, but for the directory, which has another one as well.
std::string pathBelow(const std::string& directoryPath, const std::string& path,
                      const std::string& otherDirectoryPath) {
    const std::size_t rest = path.find_first_not_of('/', directoryPath.size());
    return rest == path.npos ? otherDirectoryPath : appendingPathComponent(otherDirectoryPath, path.substr(rest));
}

bool isCovered(const std::string& directoryPath, const Workspaces& workspaces) {
    return std::ranges::any_of(workspaces, [&](const auto& entry) { return isAtOrWithin(directoryPath, entry.first); });
}

// Whether watching the workspaces or, if the document lies in none, its directory, tells of the file by the document's
// path. Links that lead to a root lead to all that is told of it.
bool isToldByOwnPath(const ManagedDocument& document, const Workspaces& workspaces) {
    const DocumentPlace& place = document.place;
    const std::string directoryPath = parentPath(document.path);
    if (!isCovered(directoryPath, workspaces))
        return pathBelow(directoryPath, document.path, place.realDirectoryPath) == place.realPath;
    return std::ranges::any_of(workspaces, [&](const auto& entry) {
        return isAtOrWithin(directoryPath, entry.first) &&
               pathBelow(entry.first, document.path, entry.second.realRootPath) == place.realPath;
    });
}

} // namespace

std::vector<std::string> watchedRoots(const std::map<std::string, ManagedWorkspace>& workspacesByRootPath,
                                      const std::map<std::string, ManagedDocument>& documentsByID) {
    std::set<std::string> roots;
    for (const auto& [rootPath, workspace] : workspacesByRootPath) roots.insert(rootPath);
    const auto cover = [&](std::string directoryPath) {
        if (!isCovered(directoryPath, workspacesByRootPath)) roots.insert(std::move(directoryPath));
    };
    for (const auto& [documentID, document] : documentsByID) {
        cover(parentPath(document.path));
        if (!isToldByOwnPath(document, workspacesByRootPath)) cover(parentPath(document.place.realPath));
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
    for (const auto& [documentID, document] : documentsByID) {
        interest.documentPaths.push_back(document.path);
        if (!isToldByOwnPath(document, workspacesByRootPath)) interest.documentPaths.push_back(document.place.realPath);
    }
    for (const std::string& rootPath : rootPaths) {
        if (!workspacesByRootPath.contains(rootPath)) interest.documentRootPaths.push_back(rootPath);
    }
    return interest;
}
