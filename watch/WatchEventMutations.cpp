#include <cassert>

#include "daemon/EditorDocumentDaemon.h"
#include "identity/EventNodePathIndexBuild.h"
#include "identity/StableNodeID.h"
#include "watch/WatchEventEffects.h"
#include "workspace/ItemRules.h"
#include "workspace/MutationPayload.h"
#include "workspace/PathComponents.h"

// The mutations that watch events stand for. The index of the workspace is kept in step on the way.

namespace {

using Kind = WorkspaceBrowserMutationKind;

WorkspaceBrowserMutationPayload externalMutation(Kind kind, const WorkspaceWatchEvent& event) {
    return {
        .rootPath = event.rootPath,
        .origin = WorkspaceBrowserMutationOrigin::externalWatch,
        .kind = kind,
        .isDirectory = event.isDirectory,
    };
}

} // namespace

std::optional<WorkspaceBrowserMutationPayload> EditorDocumentDaemon::workspaceMutation(const WorkspaceWatchEvent& event,
                                                                                       ManagedWorkspace& workspace,
                                                                                       WatchEventEffects& effects) {
    assert(queue->isCurrent());
    switch (event.kind) {
        case WorkspaceWatchEventKind::itemCreated:
        case WorkspaceWatchEventKind::itemCloned:
            return creation(event, workspace, effects);
        case WorkspaceWatchEventKind::itemRenamed:
            effects.createdDirectoryPaths.erase(event.path);
            return event.relatedPath ? renameOrMove(event, event.path, *event.relatedPath, workspace)
                                     : unpairedRename(event, workspace);
        case WorkspaceWatchEventKind::itemRemoved:
            effects.createdDirectoryPaths.erase(event.path);
            return removal(event, workspace);
        case WorkspaceWatchEventKind::changeInDirectory:
        case WorkspaceWatchEventKind::rootChanged:
        case WorkspaceWatchEventKind::itemChangedOwner:
        case WorkspaceWatchEventKind::itemModified:
            break;
    }
    return std::nullopt;
}

WorkspaceBrowserMutationPayload EditorDocumentDaemon::creation(const WorkspaceWatchEvent& event,
                                                               ManagedWorkspace& workspace,
                                                               WatchEventEffects& effects) {
    const bool isDirectory = event.isDirectory ? *event.isDirectory : isDirectoryItem(event.path, fileManager);
    auto mutation = externalMutation(isDirectory ? Kind::createdFolder : Kind::createdFile, event);
    mutation.itemNodeID = nodeIDOfEvent(event, std::nullopt, event.path);
    mutation.destinationPath = event.path;

    EventNodePathIndex& index = workspace.knownPathsByEventNodeID;
    if (!isDirectory) {
        if (mutation.itemNodeID) index.set(*mutation.itemNodeID, event.path);
    } else {
        // A deep tree would be walked again for each of its directories.
        if (!effects.createdDirectoryPaths.contains(parentPath(event.path))) {
            indexWorkspaceEventNodePathSubtree(event.path, index, *platform.directoryWalking, fileManager);
        }
        effects.createdDirectoryPaths.insert(event.path);
    }
    if (!event.isRegularFile) return workspaceMutationPayload(std::move(mutation), {event.path}, fileManager);
    // The disk is not asked about what the event says already: files come by the thousand.
    std::string directoryPath = parentPath(event.path);
    if (isAtOrWithin(directoryPath, event.rootPath)) mutation.affectedDirectoryPaths = {std::move(directoryPath)};
    return mutation;
}

WorkspaceBrowserMutationPayload EditorDocumentDaemon::renameOrMove(const WorkspaceWatchEvent& event,
                                                                   const std::string& sourcePath,
                                                                   const std::string& destinationPath,
                                                                   ManagedWorkspace& workspace) {
    const bool isRename = parentPath(sourcePath) == parentPath(destinationPath);
    auto mutation = externalMutation(isRename ? Kind::renamed : Kind::moved, event);
    mutation.itemNodeID = nodeIDOfEvent(event, sourcePath, destinationPath);
    mutation.sourcePath = sourcePath;
    mutation.destinationPath = destinationPath;

    EventNodePathIndex& index = workspace.knownPathsByEventNodeID;
    if (event.isDirectory == true) index.remap(sourcePath, destinationPath);
    if (mutation.itemNodeID) index.set(*mutation.itemNodeID, destinationPath);
    return workspaceMutationPayload(std::move(mutation), {sourcePath, destinationPath}, fileManager);
}

// The other end is where the item was last known.
std::optional<WorkspaceBrowserMutationPayload> EditorDocumentDaemon::unpairedRename(const WorkspaceWatchEvent& event,
                                                                                    ManagedWorkspace& workspace) {
    const auto nodeID = nodeIDOfEvent(event, std::nullopt, event.path);
    if (!nodeID) return std::nullopt;
    EventNodePathIndex& index = workspace.knownPathsByEventNodeID;
    const auto knownPath = index.path(*nodeID);
    if (!knownPath || *knownPath == event.path) {
        index.set(*nodeID, event.path);
        return std::nullopt;
    }
    followOutsideRename(*knownPath, event.path);
    return renameOrMove(event, *knownPath, event.path, workspace);
}

WorkspaceBrowserMutationPayload EditorDocumentDaemon::removal(const WorkspaceWatchEvent& event,
                                                              ManagedWorkspace& workspace) {
    const WorkspaceItemIdentity known = cachedIdentity(event.path);
    auto mutation = externalMutation(Kind::deleted, event);
    mutation.itemNodeID = event.nodeIDHint ? event.nodeIDHint : known.nodeID;
    if (!mutation.isDirectory) mutation.isDirectory = known.isDirectory;
    mutation.sourcePath = event.path;
    workspace.knownPathsByEventNodeID.removeAtOrWithin(event.path);
    return workspaceMutationPayload(std::move(mutation), {event.path}, fileManager);
}

std::optional<std::string> EditorDocumentDaemon::nodeIDOfEvent(const WorkspaceWatchEvent& event,
                                                               const std::optional<std::string>& sourcePath,
                                                               const std::optional<std::string>& destinationPath) {
    if (event.nodeIDHint) return event.nodeIDHint;
    if (auto hint = eventNodeIDHint(event.path, fileManager)) return hint;
    return workspaceMutationIdentity(sourcePath, destinationPath).nodeID;
}
