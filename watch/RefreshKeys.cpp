#include "watch/RefreshKeys.h"

#include "workspace/DirectoryListing.h"
#include "workspace/PathComponents.h"
#include "workspace/WorkspacePathRules.h"

namespace {

using Keys = std::set<WorkspaceDirectoryRefreshKey>;

bool isIgnored(const ManagedWorkspace& workspace, const WorkspaceWatchEvent& event) {
    return shouldIgnoreWorkspacePath(event.path, workspace.rootPath) ||
           (event.relatedPath && shouldIgnoreWorkspacePath(*event.relatedPath, workspace.rootPath));
}

void addLoadedAncestors(Keys& keys, const std::string& startPath, const ManagedWorkspace& workspace,
                        const FileManager& fileManager) {
    for (std::string& path : ancestorPaths(startPath, workspace.rootPath, fileManager)) {
        if (workspace.loadedDirectoryPaths.contains(path)) keys.insert({workspace.rootPath, std::move(path)});
    }
}

// Both the directory that lost the item and the one that gained it.
Keys keysOfPairedRename(const ManagedWorkspace& workspace, const WorkspaceWatchEvent& event,
                        const FileManager& fileManager) {
    Keys keys;
    addLoadedAncestors(keys, parentPath(event.path), workspace, fileManager);
    addLoadedAncestors(keys, parentPath(*event.relatedPath), workspace, fileManager);
    return keys;
}

// The other end may lie anywhere.
Keys keysOfUnpairedRename(const ManagedWorkspace& workspace) {
    Keys keys;
    for (const std::string& path : workspace.loadedDirectoryPaths) keys.insert({workspace.rootPath, path});
    return keys;
}

// What is gone tells nothing of what has come to its place.
bool isAtKnownFile(const WorkspaceWatchEvent& event) {
    return event.isRegularFile && event.kind != WorkspaceWatchEventKind::itemRemoved;
}

bool isAtDirectory(const WorkspaceWatchEvent& event, const std::string& path, const FileManager& fileManager) {
    return !isAtKnownFile(event) && fileManager.isDirectory(path);
}

Keys keysOfChange(const ManagedWorkspace& workspace, const WorkspaceWatchEvent& event, const FileManager& fileManager) {
    Keys keys;
    const std::string path = normalizedPath(event.path, fileManager);
    addLoadedAncestors(keys, isAtDirectory(event, path, fileManager) ? path : parentPath(path), workspace, fileManager);
    if (keys.empty() && workspace.loadedDirectoryPaths.contains(workspace.rootPath)) {
        keys.insert({workspace.rootPath, workspace.rootPath});
    }
    return keys;
}

} // namespace

std::vector<std::string> ancestorPaths(const std::string& startPath, const std::string& rootPath,
                                       const FileManager& fileManager) {
    std::vector<std::string> paths;
    std::string current = normalizedPath(startPath, fileManager);
    while (isAtOrWithin(current, rootPath)) {
        paths.push_back(current);
        if (current == rootPath) return paths;
        current = parentPath(current);
    }
    paths.push_back(rootPath);
    return paths;
}

bool dependsOnDirectoryAlone(const WorkspaceWatchEvent& event) {
    return isAtKnownFile(event) && event.kind != WorkspaceWatchEventKind::itemRenamed;
}

Keys refreshKeys(const ManagedWorkspace& workspace, const WorkspaceWatchEvent& event, const FileManager& fileManager) {
    if (isIgnored(workspace, event)) return {};
    if (event.kind == WorkspaceWatchEventKind::rootChanged) return {{workspace.rootPath, workspace.rootPath}};
    if (event.kind != WorkspaceWatchEventKind::itemRenamed) return keysOfChange(workspace, event, fileManager);
    if (!event.relatedPath) return keysOfUnpairedRename(workspace);
    return keysOfPairedRename(workspace, event, fileManager);
}
