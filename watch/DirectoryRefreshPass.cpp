#include "watch/DirectoryRefreshPass.h"

#include <algorithm>
#include <functional>

#include "workspace/DirectoryCache.h"
#include "workspace/MutationPayload.h"
#include "workspace/PathComponents.h"

namespace {

using Kind = WorkspaceBrowserMutationKind;

constexpr std::chrono::seconds eventDelay{1}; // by then an event has come, if there is one

std::size_t depthBelow(std::string_view path, std::string_view rootPath) {
    std::size_t depth = 0;
    bool isInComponent = false;
    for (const char character : path.substr(std::min(path.size(), rootPath.size()))) {
        if (character != '/' && !isInComponent) ++depth;
        isInComponent = character != '/';
    }
    return depth;
}

const WorkspaceBrowserNodePayload* nodeBeforePass(const std::string& nodeID, const DirectoryRefreshPass& pass,
                                                  const ManagedWorkspace& workspace) {
    if (const auto earlier = pass.nodesBeforePass.find(nodeID); earlier != pass.nodesBeforePass.end()) {
        return &earlier->second;
    }
    const auto cached = workspace.cachedNodesByID.find(nodeID);
    return cached == workspace.cachedNodesByID.end() ? nullptr : &cached->second;
}

// Where the documents still think that the item is, even if a directory above it has been renamed as well.
const std::string& pathBeforePass(const WorkspaceBrowserNodePayload& node, const DirectoryRefreshPass& pass) {
    const auto earlier = pass.pathsBeforePass.find(node.nodeID);
    return earlier == pass.pathsBeforePass.end() ? node.path : earlier->second;
}

WorkspaceBrowserMutationPayload externalMutation(Kind kind, const WorkspaceBrowserNodePayload& node,
                                                 const DirectoryRefreshPass& pass) {
    return {
        .rootPath = pass.rootPath,
        .origin = WorkspaceBrowserMutationOrigin::externalWatch,
        .kind = kind,
        .itemNodeID = node.nodeID,
        .isDirectory = node.isDirectory,
    };
}

WorkspaceBrowserMutationPayload creation(const WorkspaceBrowserNodePayload& node, const DirectoryRefreshPass& pass,
                                         const FileManager& fileManager) {
    auto mutation = externalMutation(node.isDirectory ? Kind::createdFolder : Kind::createdFile, node, pass);
    mutation.destinationPath = node.path;
    return workspaceMutationPayload(std::move(mutation), {node.path}, fileManager);
}

WorkspaceBrowserMutationPayload renameOrMove(const WorkspaceBrowserNodePayload& previous,
                                             const WorkspaceBrowserNodePayload& node, const DirectoryRefreshPass& pass,
                                             const FileManager& fileManager) {
    auto mutation = externalMutation(previous.parentPath == node.parentPath ? Kind::renamed : Kind::moved, node, pass);
    mutation.sourcePath = previous.path;
    mutation.destinationPath = node.path;
    return workspaceMutationPayload(std::move(mutation), {previous.path, node.path}, fileManager);
}

WorkspaceBrowserMutationPayload removal(const WorkspaceBrowserNodePayload& previous, const DirectoryRefreshPass& pass,
                                        const FileManager& fileManager) {
    auto mutation = externalMutation(Kind::deleted, previous, pass);
    mutation.sourcePath = previous.path;
    return workspaceMutationPayload(std::move(mutation), {previous.path}, fileManager);
}

// The path as it is after the remaps; those of one listing happen at once, so that two directories may swap names. They
// are in descending order: what left a directory that was renamed itself is not taken along with it.
std::string remapped(const std::string& path, const std::vector<WorkspacePathRemap>& remaps) {
    for (const WorkspacePathRemap& remap : remaps) {
        if (isAtOrWithin(path, remap.sourcePath)) return remap.destinationPath + path.substr(remap.sourcePath.size());
    }
    return path;
}

// What the pass has listed at the old place is what stands there now, and the client has been told of it there.
bool isListedWhereItWas(const std::string& path, const DirectoryRefreshPass& pass) {
    return pass.processedPaths.contains(path);
}

void remapLoadedDirectories(const std::vector<WorkspacePathRemap>& directoryRemaps, DirectoryRefreshPass& pass,
                            ManagedWorkspace& workspace) {
    std::set<std::string> loadedDirectoryPaths;
    for (const std::string& path : workspace.loadedDirectoryPaths) {
        std::string newPath = remapped(path, directoryRemaps);
        if (newPath != path) {
            pass.pendingPaths.insert(newPath);
            pass.directoryPathsToTell.insert(newPath);
            if (isListedWhereItWas(path, pass)) loadedDirectoryPaths.insert(path);
        }
        loadedDirectoryPaths.insert(std::move(newPath));
    }
    workspace.loadedDirectoryPaths = std::move(loadedDirectoryPaths);

    decltype(workspace.childNodeIDsByDirectoryPath) childNodeIDs;
    for (auto& [path, nodeIDs] : workspace.childNodeIDsByDirectoryPath) {
        childNodeIDs.insert_or_assign(isListedWhereItWas(path, pass) ? path : remapped(path, directoryRemaps),
                                      std::move(nodeIDs));
    }
    workspace.childNodeIDsByDirectoryPath = std::move(childNodeIDs);
}

// The children of directories that went along are where they were: in the same directory. Told of one by one they would
// look moved.
void remapCachedNodesBelow(const std::vector<WorkspacePathRemap>& directoryRemaps, DirectoryRefreshPass& pass,
                           ManagedWorkspace& workspace) {
    std::unordered_set<std::string_view> stayingNodeIDs;
    for (const std::string& path : pass.processedPaths) {
        const auto listed = workspace.childNodeIDsByDirectoryPath.find(path);
        if (listed != workspace.childNodeIDsByDirectoryPath.end() && remapped(path, directoryRemaps) != path)
            stayingNodeIDs.insert(listed->second.begin(), listed->second.end());
    }
    for (auto& [nodeID, node] : workspace.cachedNodesByID) {
        if (!node.parentPath || stayingNodeIDs.contains(nodeID)) continue;
        std::string newParentPath = remapped(*node.parentPath, directoryRemaps);
        if (newParentPath == *node.parentPath) continue;
        pass.pathsBeforePass.emplace(nodeID, node.path);
        node.path = appendingPathComponent(newParentPath, node.name);
        node.parentPath = std::move(newParentPath);
    }
}

} // namespace

std::string workspaceMutationKey(const WorkspaceBrowserMutationPayload& payload) {
    const std::string_view parts[] = {nameOf(payload.origin), nameOf(payload.kind),
                                      payload.sourcePath ? *payload.sourcePath : std::string_view(),
                                      payload.destinationPath ? *payload.destinationPath : std::string_view()};
    std::string key;
    key.reserve(std::size(parts) + parts[0].size() + parts[1].size() + parts[2].size() + parts[3].size());
    for (const std::string_view part : parts) (key += part) += '|';
    key.pop_back();
    return key;
}

bool ascendingWorkspaceDirectoryPathSort(const std::string& left, const std::string& right,
                                         const std::string& rootPath) {
    const std::size_t leftDepth = depthBelow(left, rootPath);
    const std::size_t rightDepth = depthBelow(right, rootPath);
    return leftDepth != rightDepth ? leftDepth < rightDepth : left < right;
}

std::optional<std::string> nextWorkspaceDirectoryPathToRefresh(DirectoryRefreshPass& pass) {
    while (!pass.pendingPaths.empty()) {
        std::string path = std::move(pass.pendingPaths.extract(pass.pendingPaths.begin()).value());
        if (pass.processedPaths.insert(path).second) return path;
    }
    return std::nullopt;
}

WorkspaceNodesByID previousChildNodes(const std::string& directoryPath, const DirectoryRefreshPass& pass,
                                      const ManagedWorkspace& workspace) {
    WorkspaceNodesByID children;
    const auto childNodeIDs = workspace.childNodeIDsByDirectoryPath.find(directoryPath);
    if (childNodeIDs == workspace.childNodeIDsByDirectoryPath.end()) return children;
    for (const std::string& nodeID : childNodeIDs->second) {
        if (const auto* node = nodeBeforePass(nodeID, pass, workspace)) children.emplace(nodeID, *node);
    }
    return children;
}

bool isNoNews(const WorkspaceBrowserDirectoryPayload& payload, const DirectoryRefreshPass& pass,
              const ManagedWorkspace& workspace) {
    return pass.nodesBeforePass.empty() && !pass.directoryPathsToTell.contains(payload.directoryPath) &&
           workspace.loadedDirectoryPaths.contains(payload.directoryPath) && isCachedAsItIs(payload, workspace);
}

void collectWorkspaceExternalMutations(const WorkspaceNodesByID& previousChildNodesByID,
                                       const WorkspaceBrowserDirectoryPayload& payload, DirectoryRefreshPass& pass,
                                       const FileManager& fileManager) {
    std::unordered_set<std::string_view> currentNodeIDs;
    for (const WorkspaceBrowserNodePayload& node : payload.nodes) {
        currentNodeIDs.insert(node.nodeID);
        const auto previous = previousChildNodesByID.find(node.nodeID);
        if (previous == previousChildNodesByID.end()) {
            enterListedMutation(creation(node, pass, fileManager), pass);
        } else if (previous->second.path != node.path) {
            pass.renamedOrMovedNodeIDs.insert(node.nodeID);
            enterListedMutation(renameOrMove(previous->second, node, pass, fileManager), pass);
        }
    }
    for (const auto& [nodeID, previous] : previousChildNodesByID) {
        if (!currentNodeIDs.contains(nodeID)) {
            pass.pendingRemovals.push_back({nodeID, removal(previous, pass, fileManager)});
        }
    }
}

void remapMovedNodes(const WorkspaceBrowserDirectoryPayload& payload, DirectoryRefreshPass& pass,
                     ManagedWorkspace& workspace) {
    std::vector<WorkspacePathRemap> directoryRemaps;
    for (const WorkspaceBrowserNodePayload& node : payload.nodes) {
        const auto cached = workspace.cachedNodesByID.find(node.nodeID);
        if (cached == workspace.cachedNodesByID.end() || cached->second.path == node.path) continue;
        const WorkspacePathRemap remap{cached->second.path, node.path};
        pass.remaps.insert({pathBeforePass(cached->second, pass), node.path});
        if (node.isDirectory && workspace.loadedDirectoryPaths.contains(remap.sourcePath)) {
            directoryRemaps.push_back(remap);
        }
    }
    if (directoryRemaps.empty()) return;
    workspace.mayHoldUnlisted = true;
    std::sort(directoryRemaps.begin(), directoryRemaps.end(), std::greater<>());
    remapLoadedDirectories(directoryRemaps, pass, workspace);
    remapCachedNodesBelow(directoryRemaps, pass, workspace);
}

void cacheRefreshedListing(WorkspaceDirectoryListing listing, DirectoryRefreshPass& pass, ManagedWorkspace& workspace) {
    const WorkspaceBrowserDirectoryPayload& payload = listing.payload;
    const bool isLoaded = workspace.loadedDirectoryPaths.contains(payload.directoryPath);
    const bool hasChanged =
        isLoaded && (pass.directoryPathsToTell.contains(payload.directoryPath) ||
                     cachedWorkspaceDirectoryPayload(pass.rootPath, payload.directoryPath, workspace) != payload);
    for (const WorkspaceBrowserNodePayload& node : payload.nodes) {
        const auto cached = workspace.cachedNodesByID.find(node.nodeID);
        if (cached != workspace.cachedNodesByID.end() && cached->second != node) {
            pass.nodesBeforePass.emplace(node.nodeID, cached->second);
        }
    }
    if (hasChanged) pass.changedPayloads.push_back(payload);
    cacheWorkspaceDirectoryPayload(std::move(listing), workspace);
}

void enterListedMutation(WorkspaceBrowserMutationPayload mutation, DirectoryRefreshPass& pass) {
    const std::string key = workspaceMutationKey(mutation);
    if (pass.external.insert_or_assign(key, std::move(mutation)).second) pass.listedKeys.insert(key);
}

void rememberMutationsFromListings(const DirectoryRefreshPass& pass, std::chrono::nanoseconds now,
                                   ManagedWorkspace& workspace) {
    auto& remembered = workspace.mutationsFromListings;
    std::erase_if(remembered, [&](const auto& entry) { return now - entry.second >= eventDelay; });
    for (const std::string& key : pass.listedKeys) remembered.insert_or_assign(key, now);
}

bool takeMutationFromListing(const std::string& mutationKey, std::chrono::nanoseconds now,
                             ManagedWorkspace& workspace) {
    const auto entry = workspace.mutationsFromListings.extract(mutationKey);
    return entry && now - entry.mapped() < eventDelay;
}
