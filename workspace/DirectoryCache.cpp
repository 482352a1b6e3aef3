#include "workspace/DirectoryCache.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "identity/EventNodeIDHint.h"
#include "workspace/PathComponents.h"

namespace {

// Whether a child of before is none of the listing, or is not the directory there that it was.
bool losesAnything(const std::vector<std::string>& childNodeIDsBefore, const WorkspaceBrowserDirectoryPayload& payload,
                   const ManagedWorkspace& workspace) {
    for (const WorkspaceBrowserNodePayload& node : payload.nodes) {
        const auto cached = workspace.cachedNodesByID.find(node.nodeID);
        const bool wasDirectory = cached != workspace.cachedNodesByID.end() && cached->second.isDirectory;
        if (wasDirectory && (!node.isDirectory || cached->second.path != node.path)) return true;
    }
    if (childNodeIDsBefore.empty()) return false;
    std::unordered_set<std::string_view> nodeIDs;
    for (const WorkspaceBrowserNodePayload& node : payload.nodes) nodeIDs.insert(node.nodeID);
    return std::ranges::any_of(childNodeIDsBefore, [&](const auto& nodeID) { return !nodeIDs.contains(nodeID); });
}

bool isListedDirectory(const std::string& path, const ManagedWorkspace& workspace) {
    if (path == workspace.rootPath) return true;
    const auto siblings = workspace.childNodeIDsByDirectoryPath.find(parentPath(path));
    if (siblings == workspace.childNodeIDsByDirectoryPath.end()) return false;
    return std::ranges::any_of(siblings->second, [&](const std::string& nodeID) {
        const auto node = workspace.cachedNodesByID.find(nodeID);
        return node != workspace.cachedNodesByID.end() && node->second.isDirectory && node->second.path == path;
    });
}

// Of nodes with the same ID. Name and parent stand in the path.
bool isSameItem(const WorkspaceBrowserNodePayload& left, const WorkspaceBrowserNodePayload& right) {
    return left.path == right.path && left.isDirectory == right.isDirectory;
}

} // namespace

void indexListing(const WorkspaceDirectoryListing& listing, EventNodePathIndex& index) {
    std::vector<EventNodePathIndex::NumberedName> children;
    children.reserve(listing.payload.nodes.size());
    for (std::size_t position = 0; position < listing.payload.nodes.size(); ++position) {
        if (const auto fileNumber = listing.fileNumbers[position]) {
            children.push_back({listing.payload.nodes[position].name, *fileNumber});
        }
    }
    index.setChildren(listing.payload.directoryPath, children);
}

void cacheWorkspaceDirectoryPayload(WorkspaceDirectoryListing listing, ManagedWorkspace& workspace) {
    indexListing(listing, workspace.knownPathsByEventNodeID);
    WorkspaceBrowserDirectoryPayload& payload = listing.payload;
    const bool isNew = workspace.loadedDirectoryPaths.insert(payload.directoryPath).second;
    // Most directories that are listed again are as they were.
    if (!isNew && isCachedAsItIs(payload, workspace)) return;
    std::vector<std::string>& childNodeIDs = workspace.childNodeIDsByDirectoryPath[payload.directoryPath];
    if (losesAnything(childNodeIDs, payload, workspace) ||
        (isNew && !isListedDirectory(payload.directoryPath, workspace))) {
        workspace.mayHoldUnlisted = true;
    }
    childNodeIDs.resize(payload.nodes.size());
    for (std::size_t position = 0; position < payload.nodes.size(); ++position) {
        WorkspaceBrowserNodePayload& node = payload.nodes[position];
        childNodeIDs[position] = node.nodeID;
        workspace.cachedNodesByID.insert_or_assign(childNodeIDs[position], std::move(node));
    }
}

bool isCachedAsItIs(const WorkspaceBrowserDirectoryPayload& payload, const ManagedWorkspace& workspace) {
    const auto childNodeIDs = workspace.childNodeIDsByDirectoryPath.find(payload.directoryPath);
    return childNodeIDs != workspace.childNodeIDsByDirectoryPath.end() &&
           std::ranges::equal(childNodeIDs->second, payload.nodes, [&](const std::string& nodeID, const auto& node) {
               if (nodeID != node.nodeID) return false;
               const auto cached = workspace.cachedNodesByID.find(nodeID);
               return cached != workspace.cachedNodesByID.end() && isSameItem(cached->second, node);
           });
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
    if (!workspace.mayHoldUnlisted) return;
    std::unordered_set<std::string_view> listedNodeIDs;
    listedNodeIDs.reserve(workspace.cachedNodesByID.size());
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
    const std::size_t dropped = std::erase_if(workspace.childNodeIDsByDirectoryPath, [&](const auto& entry) {
        return !workspace.loadedDirectoryPaths.contains(entry.first);
    });
    workspace.mayHoldUnlisted = dropped > 0;
}

bool isShownAsDirectory(const std::string& directoryPath, const ManagedWorkspace& workspace) {
    const auto siblings = workspace.childNodeIDsByDirectoryPath.find(parentPath(directoryPath));
    if (siblings == workspace.childNodeIDsByDirectoryPath.end()) return false;
    return std::ranges::any_of(siblings->second, [&](const std::string& nodeID) {
        const auto node = workspace.cachedNodesByID.find(nodeID);
        return node != workspace.cachedNodesByID.end() && node->second.path == directoryPath &&
               node->second.isDirectory;
    });
}

void removeLoadedWorkspaceDirectory(const std::string& atOrWithin, ManagedWorkspace& workspace) {
    workspace.mayHoldUnlisted = true;
    std::erase_if(workspace.loadedDirectoryPaths,
                  [&](const std::string& path) { return isAtOrWithin(path, atOrWithin); });
    std::erase_if(workspace.childNodeIDsByDirectoryPath,
                  [&](const auto& entry) { return isAtOrWithin(entry.first, atOrWithin); });
}
