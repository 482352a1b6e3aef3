#include "workspace/DirectoryCache.h"

#include <string_view>
#include <unordered_set>

#include "identity/EventNodeIDHint.h"
#include "workspace/PathComponents.h"

void cacheWorkspaceDirectoryPayload(const WorkspaceDirectoryListing& listing, ManagedWorkspace& workspace) {
    const WorkspaceBrowserDirectoryPayload& payload = listing.payload;
    workspace.loadedDirectoryPaths.insert(payload.directoryPath);
    std::vector<std::string>& childNodeIDs = workspace.childNodeIDsByDirectoryPath[payload.directoryPath];
    childNodeIDs.clear();
    childNodeIDs.reserve(payload.nodes.size());
    for (std::size_t position = 0; position < payload.nodes.size(); ++position) {
        const WorkspaceBrowserNodePayload& node = payload.nodes[position];
        childNodeIDs.push_back(node.nodeID);
        workspace.cachedNodesByID.insert_or_assign(node.nodeID, node);
        if (const auto fileNumber = listing.fileNumbers[position]) {
            workspace.knownPathsByEventNodeID.set(eventNodeIDHint(*fileNumber), node.path);
        }
    }
}

WorkspaceBrowserDirectoryPayload cachedWorkspaceDirectoryPayload(const std::string& rootPath,
                                                                 const std::string& directoryPath,
                                                                 const ManagedWorkspace& workspace) {
    WorkspaceBrowserDirectoryPayload payload{.rootPath = rootPath, .directoryPath = directoryPath};
    const auto childNodeIDs = workspace.childNodeIDsByDirectoryPath.find(directoryPath);
    if (childNodeIDs == workspace.childNodeIDsByDirectoryPath.end()) return payload;
    for (const std::string& nodeID : childNodeIDs->second) {
        const auto node = workspace.cachedNodesByID.find(nodeID);
        if (node != workspace.cachedNodesByID.end()) payload.nodes.push_back(node->second);
    }
    return payload;
}

void pruneWorkspaceCache(ManagedWorkspace& workspace) {
    std::unordered_set<std::string_view> listedNodeIDs;
    for (const auto& [directoryPath, nodeIDs] : workspace.childNodeIDsByDirectoryPath) {
        listedNodeIDs.insert(nodeIDs.begin(), nodeIDs.end());
    }
    std::erase_if(workspace.cachedNodesByID, [&](const auto& entry) { return !listedNodeIDs.contains(entry.first); });

    std::unordered_set<std::string_view> liveDirectoryPaths{workspace.rootPath};
    for (const auto& [nodeID, node] : workspace.cachedNodesByID) {
        if (node.isDirectory) liveDirectoryPaths.insert(node.path);
    }
    std::erase_if(workspace.loadedDirectoryPaths,
                  [&](const std::string& path) { return !liveDirectoryPaths.contains(path); });
    std::erase_if(workspace.childNodeIDsByDirectoryPath,
                  [&](const auto& entry) { return !workspace.loadedDirectoryPaths.contains(entry.first); });
}

void removeLoadedWorkspaceDirectory(const std::string& atOrWithin, ManagedWorkspace& workspace) {
    std::erase_if(workspace.loadedDirectoryPaths,
                  [&](const std::string& path) { return isAtOrWithin(path, atOrWithin); });
    std::erase_if(workspace.childNodeIDsByDirectoryPath,
                  [&](const auto& entry) { return isAtOrWithin(entry.first, atOrWithin); });
}
