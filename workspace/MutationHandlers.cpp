#include <cassert>
#include <cerrno>
#include <exception>

#include "daemon/EditorDocumentDaemon.h"
#include "platform/PlatformError.h"
#include "workspace/ItemRules.h"
#include "workspace/MutationPayload.h"
#include "workspace/PathComponents.h"
#include "workspace/WorkspacePathRules.h"

namespace {

using Kind = WorkspaceBrowserMutationKind;

constexpr auto sourceIsGone = "The source item no longer exists.";
constexpr auto selectionIsGone = "The selected item no longer exists.";
constexpr auto destinationIsTaken = "A file already exists at the destination.";

bool isTakenName(const PlatformError& error) {
    return error.domain == posixErrorDomain && error.code == EEXIST;
}

bool hasMade(const std::string& path, const std::vector<std::string>& madeDirectories) {
    return !madeDirectories.empty() && madeDirectories.back() == path;
}

} // namespace

void EditorDocumentDaemon::handleCreateWorkspaceFile(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string anchorPath = creationAnchorDirectoryPath(request, rootPath, fileManager);
    const std::string name = requestedWorkspaceItemName(request, "untitled");
    const std::string path = uniqueCreationPath(anchorPath, name, fileManager);
    fileManager.createDirectory(anchorPath);
    try {
        fileManager.createFile(path);
    } catch (const PlatformError&) {
        return respondFailure(request, "Failed to create the file.");
    }
    announceCreated(request, rootPath, Kind::createdFile, path);
}

void EditorDocumentDaemon::handleCreateWorkspaceFolder(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string anchorPath = creationAnchorDirectoryPath(request, rootPath, fileManager);
    const std::string name = requestedWorkspaceItemName(request, "untitled");
    std::string path = uniqueCreationPath(anchorPath, name, fileManager);
    // A folder that somebody else makes in the last moment stays theirs.
    while (!hasMade(path, fileManager.createDirectory(path))) path = uniqueCreationPath(anchorPath, name, fileManager);
    announceCreated(request, rootPath, Kind::createdFolder, path);
}

void EditorDocumentDaemon::handleRenameWorkspaceItem(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string itemPath = requiredItemPath(request, fileManager);
    requirePath(itemPath, rootPath);
    const std::string destinationPath = resolvedRenameDestinationPath(request, itemPath, rootPath, fileManager);
    if (!fileManager.itemExists(itemPath)) return respondFailure(request, sourceIsGone);
    if (itemPath == destinationPath) {
        applyInternalWorkspaceMutationToEventNodePathIndex(rootPath, Kind::renamed, itemPath, destinationPath);
        return announce(request, rootPath, Kind::renamed, workspaceMutationIdentity(itemPath, destinationPath),
                        itemPath, destinationPath, {itemPath});
    }
    // In another spelling the item may itself be what is at the destination; moving knows what to do then.
    if (fileManager.itemExists(destinationPath) && !isSameItem(itemPath, destinationPath, fileManager)) {
        return respondFailure(request, destinationIsTaken);
    }
    moveWorkspaceItem(request, rootPath, Kind::renamed, itemPath, destinationPath);
}

void EditorDocumentDaemon::handleMoveWorkspaceItem(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string itemPath = requiredItemPath(request, fileManager);
    const std::string destinationPath =
        resolvedDestinationPath(request, itemPath, rootPath, SourceWithinRoot::notRequired, fileManager);
    if (!fileManager.itemExists(itemPath)) return respondFailure(request, sourceIsGone);
    if (fileManager.itemExists(destinationPath)) return respondFailure(request, destinationIsTaken);
    moveWorkspaceItem(request, rootPath, Kind::moved, itemPath, destinationPath);
}

void EditorDocumentDaemon::handleCopyWorkspaceItem(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string itemPath = requiredItemPath(request, fileManager);
    const std::string destinationPath =
        resolvedDestinationPath(request, itemPath, rootPath, SourceWithinRoot::notRequired, fileManager);
    if (!fileManager.itemExists(itemPath)) return respondFailure(request, sourceIsGone);
    if (fileManager.itemExists(destinationPath)) return respondFailure(request, destinationIsTaken);
    requireOutsideItem(itemPath, destinationPath, fileManager);
    fileManager.createDirectory(parentPath(destinationPath));
    copyWorkspaceItem(request, rootPath, Kind::copied, itemPath, destinationPath);
}

void EditorDocumentDaemon::handleDuplicateWorkspaceItem(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string itemPath = requiredItemPath(request, fileManager);
    requirePath(itemPath, rootPath);
    if (!fileManager.itemExists(itemPath)) return respondFailure(request, sourceIsGone);
    if (!presentField(request.destinationPath)) {
        return copyWorkspaceItem(request, rootPath, Kind::duplicated, itemPath,
                                 uniqueDuplicatePath(itemPath, rootPath, fileManager));
    }
    const std::string destinationPath =
        resolvedDestinationPath(request, itemPath, rootPath, SourceWithinRoot::required, fileManager);
    if (fileManager.itemExists(destinationPath)) return respondFailure(request, destinationIsTaken);
    copyWorkspaceItem(request, rootPath, Kind::duplicated, itemPath, destinationPath);
}

void EditorDocumentDaemon::handleTrashWorkspaceItem(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string itemPath = requiredItemPath(request, fileManager);
    if (!fileManager.itemExists(itemPath)) return respondFailure(request, selectionIsGone);
    fileManager.trashItem(itemPath);
    announceRemoved(request, rootPath, Kind::trashed, itemPath);
}

void EditorDocumentDaemon::handleDeleteWorkspaceItem(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const std::string rootPath = requiredWorkspaceRootPath(request, fileManager);
    const std::string itemPath = requiredItemPath(request, fileManager);
    if (!fileManager.itemExists(itemPath)) return respondFailure(request, selectionIsGone);
    fileManager.removeItem(itemPath);
    announceRemoved(request, rootPath, Kind::deleted, itemPath);
}

void EditorDocumentDaemon::moveWorkspaceItem(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                                             WorkspaceBrowserMutationKind kind, const std::string& itemPath,
                                             const std::string& destinationPath) {
    requireOutsideItem(itemPath, destinationPath, fileManager);
    fileManager.createDirectory(parentPath(destinationPath));
    try {
        fileManager.moveItem(itemPath, destinationPath);
    } catch (const PlatformError& error) {
        // Somebody was faster.
        if (isTakenName(error)) return respondFailure(request, destinationIsTaken);
        throw;
    }
    retargetManagedDocuments(itemPath, destinationPath, EmitUpdatedEvents::no);
    stableNodeIDs.carry(itemPath, destinationPath);
    applyInternalWorkspaceMutationToEventNodePathIndex(rootPath, kind, itemPath, destinationPath);
    announce(request, rootPath, kind, workspaceMutationIdentity(itemPath, destinationPath), itemPath, destinationPath,
             {itemPath, destinationPath});
}

void EditorDocumentDaemon::copyWorkspaceItem(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                                             WorkspaceBrowserMutationKind kind, const std::string& itemPath,
                                             const std::string& destinationPath) {
    try {
        fileManager.copyItem(itemPath, destinationPath);
    } catch (const PlatformError& error) {
        if (isTakenName(error)) return respondFailure(request, destinationIsTaken);
        throw;
    }
    applyInternalWorkspaceMutationToEventNodePathIndex(rootPath, kind, itemPath, destinationPath);
    announce(request, rootPath, kind, workspaceMutationIdentity(itemPath, destinationPath), itemPath, destinationPath,
             {itemPath, destinationPath});
}

void EditorDocumentDaemon::announceCreated(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                                           WorkspaceBrowserMutationKind kind, const std::string& path) {
    applyInternalWorkspaceMutationToEventNodePathIndex(rootPath, kind, std::nullopt, path);
    announce(request, rootPath, kind, workspaceMutationIdentity(std::nullopt, path), std::nullopt, path, {path});
}

void EditorDocumentDaemon::announceRemoved(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                                           WorkspaceBrowserMutationKind kind, const std::string& itemPath) {
    markManagedDocumentsDeleted(itemPath);
    const WorkspaceItemIdentity identity = workspaceMutationIdentity(itemPath, std::nullopt);
    stableNodeIDs.removeAtOrWithin(itemPath);
    announce(request, rootPath, kind, identity, itemPath, std::nullopt, {itemPath});
}

void EditorDocumentDaemon::announce(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                                    WorkspaceBrowserMutationKind kind, const WorkspaceItemIdentity& identity,
                                    const std::optional<std::string>& sourcePath,
                                    const std::optional<std::string>& destinationPath,
                                    const std::vector<std::string>& touchedPaths) {
    const WorkspaceBrowserMutationPayload mutation = workspaceMutationPayload(
        {
            .rootPath = rootPath,
            .origin = WorkspaceBrowserMutationOrigin::internalOperation,
            .kind = kind,
            .itemNodeID = identity.nodeID,
            .isDirectory = identity.isDirectory,
            .sourcePath = sourcePath,
            .destinationPath = destinationPath,
        },
        touchedPaths, fileManager);
    write({
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = request.requestID,
        .command = request.command,
        .success = true,
        .workspaceRootPath = rootPath,
        .workspaceMutation = mutation,
    });
    // The request is answered, and is not to be answered again.
    try {
        write({
            .kind = EditorDocumentEnvelopeKind::event,
            .event = EditorDocumentEventKind::workspaceMutation,
            .workspaceRootPath = rootPath,
            .workspaceMutation = mutation,
        });
        emitWorkspaceRefreshes(rootPath, touchedPaths);
    } catch (const std::exception&) {
        tellEverythingAnewSoon();
    }
}

WorkspaceItemIdentity EditorDocumentDaemon::workspaceMutationIdentity(
    const std::optional<std::string>& sourcePath, const std::optional<std::string>& destinationPath) {
    const std::optional<std::string>& path = destinationPath ? destinationPath : sourcePath;
    if (!path) return {};
    if (fileManager.itemExists(*path)) return {stableNodeID(*path), isDirectoryItem(*path, fileManager)};
    return destinationPath ? WorkspaceItemIdentity{} : cachedIdentity(*path);
}

// What is gone is known from the listings that the client has seen. The ID leads to the node, so that nobody need look
// through all of them.
WorkspaceItemIdentity EditorDocumentDaemon::cachedIdentity(const std::string& path) const {
    const std::string nodeID = stableNodeIDs.knownNodeID(path).value_or("path:" + path);
    for (const auto& [rootPath, workspace] : workspacesByRootPath) {
        const auto node = workspace.cachedNodesByID.find(nodeID);
        if (node != workspace.cachedNodesByID.end() && node->second.path == path) {
            return {nodeID, node->second.isDirectory};
        }
    }
    return {};
}
