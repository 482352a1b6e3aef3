#include <algorithm>
#include <cassert>

#include "daemon/EditorDocumentDaemon.h"
#include "documents/DocumentRetargeting.h"
#include "platform/PlatformError.h"
#include "watch/DirectoryRefreshPass.h"
#include "watch/RefreshKeys.h"
#include "workspace/DirectoryCache.h"
#include "workspace/MutationPayload.h"
#include "workspace/WorkspaceErrors.h"

void EditorDocumentDaemon::emitWorkspaceRefreshes(const std::string& rootPath,
                                                  const std::vector<std::string>& changedPaths) {
    const auto workspace = workspacesByRootPath.find(rootPath);
    if (workspace == workspacesByRootPath.end()) return;
    std::set<WorkspaceDirectoryRefreshKey> keys;
    for (const std::string& path : changedPaths) {
        keys.merge(refreshKeys(workspace->second,
                               {.rootPath = rootPath, .path = path, .kind = WorkspaceWatchEventKind::itemModified},
                               fileManager));
    }
    emitWorkspaceDirectoryUpdates(keys, EmitMutationEvents::no, {}, {});
}

void EditorDocumentDaemon::emitWorkspaceDirectoryUpdates(const std::set<WorkspaceDirectoryRefreshKey>& keys,
                                                         EmitMutationEvents emitMutationEvents,
                                                         WorkspaceMutationsByRootPath seedExternalMutations,
                                                         const std::set<std::string>& toldDocumentIDs) {
    std::map<std::string, WorkspaceDirectoryPaths> directoryPathsByRootPath;
    for (const WorkspaceDirectoryRefreshKey& key : keys) {
        directoryPathsByRootPath[key.rootPath].insert(key.directoryPath);
    }
    for (auto& [rootPath, directoryPaths] : directoryPathsByRootPath) {
        DirectoryRefreshPass pass{.rootPath = rootPath, .pendingPaths = std::move(directoryPaths)};
        pass.external = std::move(seedExternalMutations[rootPath]);
        pass.toldDocumentIDs = toldDocumentIDs;
        emitWorkspaceDirectoryUpdates(std::move(pass), emitMutationEvents);
    }
}

void EditorDocumentDaemon::emitWorkspaceDirectoryUpdates(DirectoryRefreshPass pass,
                                                         EmitMutationEvents emitMutationEvents) {
    assert(queue->isCurrent());
    const auto workspace = workspacesByRootPath.find(pass.rootPath);
    if (workspace == workspacesByRootPath.end()) return;
    while (const auto directoryPath = nextWorkspaceDirectoryPathToRefresh(pass)) {
        try {
            refreshWorkspaceDirectory(*directoryPath, emitMutationEvents, pass, workspace->second);
        } catch (const PlatformError& error) {
            if (*directoryPath == pass.rootPath) return dropUnlistableRoot(pass.rootPath, error);
            giveUpOrLookAgain(*directoryPath, error, workspace->second);
        }
    }
    pruneWorkspaceCache(workspace->second);
    for (WorkspacePendingRemovalMutation& removal : pass.pendingRemovals) {
        if (pass.renamedOrMovedNodeIDs.contains(removal.nodeID)) continue;
        enterListedMutation(std::move(removal.payload), pass);
    }
    emitRefreshedState(std::move(pass), emitMutationEvents);
}

// What is loaded above it was listed before, and would have shown where it went. If it shows the directory where none
// was found, that has gone in between, and may come back before anybody tells.
void EditorDocumentDaemon::giveUpOrLookAgain(const std::string& directoryPath, const PlatformError& error,
                                             ManagedWorkspace& workspace) {
    const bool isAway =
        error.code == workspaceDirectoryUnavailableError().code && isShownAsDirectory(directoryPath, workspace);
    if (!isAway) return removeLoadedWorkspaceDirectory(directoryPath, workspace);
    if (!workspace.awayDirectoryPaths.insert(directoryPath).second) return;
    queue->asyncAfter(RenamePairing::pendingRenameRetention,
                      [weakDaemon = weak_from_this(), rootPath = workspace.rootPath, directoryPath] {
                          if (const auto daemon = weakDaemon.lock()) daemon->lookAgain(rootPath, directoryPath);
                      });
}

void EditorDocumentDaemon::lookAgain(const std::string& rootPath, const std::string& directoryPath) {
    const auto workspace = workspacesByRootPath.find(rootPath);
    if (workspace == workspacesByRootPath.end() || workspace->second.awayDirectoryPaths.erase(directoryPath) == 0)
        return;
    if (!fileManager.isDirectory(directoryPath)) removeLoadedWorkspaceDirectory(directoryPath, workspace->second);
    emitWorkspaceRefreshes(rootPath, {directoryPath});
    refreshWatchRoots();
}

// Throws what the listing throws.
void EditorDocumentDaemon::refreshWorkspaceDirectory(const std::string& directoryPath,
                                                     EmitMutationEvents emitMutationEvents, DirectoryRefreshPass& pass,
                                                     ManagedWorkspace& workspace) {
    // A directory that the client never opened is never listed here.
    if (directoryPath != pass.rootPath && !workspace.loadedDirectoryPaths.contains(directoryPath)) return;
    WorkspaceDirectoryListing listing = loadWorkspaceDirectory(pass.rootPath, directoryPath, listingSources());
    // Most listings find everything as it was. That is found out without a copy of all there is.
    if (isNoNews(listing.payload, pass, workspace)) return indexListing(listing, workspace.knownPathsByEventNodeID);
    const WorkspaceNodesByID previousChildren = previousChildNodes(directoryPath, pass, workspace);
    if (emitMutationEvents == EmitMutationEvents::yes) {
        collectWorkspaceExternalMutations(previousChildren, listing.payload, pass, fileManager);
    }
    remapMovedNodes(listing.payload, pass, workspace);
    cacheRefreshedListing(std::move(listing), pass, workspace);
}

void EditorDocumentDaemon::dropUnavailableWorkspace(const std::string& rootPath, std::optional<std::string> message) {
    closeWorkspace(rootPath);
    write({
        .kind = EditorDocumentEnvelopeKind::event,
        .message = std::move(message),
        .event = EditorDocumentEventKind::workspaceRootUnavailable,
        .workspaceRootPath = rootPath,
    });
}

void EditorDocumentDaemon::dropUnlistableRoot(const std::string& rootPath, const PlatformError& error) {
    dropUnavailableWorkspace(rootPath, error.localizedDescription);
    refreshWatchRoots();
    for (const std::string& documentID : documentIDsAtOrWithin(rootPath, documentsByID)) {
        checkDocumentForChanges(documentID);
    }
}

// Documents first, then all listings, then all mutations.
void EditorDocumentDaemon::emitRefreshedState(DirectoryRefreshPass pass, EmitMutationEvents emitMutationEvents) {
    for (const WorkspacePathRemap& remap : pass.remaps) followListedRename(remap, pass.toldDocumentIDs);
    std::sort(pass.changedPayloads.begin(), pass.changedPayloads.end(), [&](const auto& left, const auto& right) {
        return ascendingWorkspaceDirectoryPathSort(left.directoryPath, right.directoryPath, pass.rootPath);
    });
    for (WorkspaceBrowserDirectoryPayload& payload : pass.changedPayloads) {
        write({
            .kind = EditorDocumentEnvelopeKind::event,
            .event = EditorDocumentEventKind::workspaceChildrenUpdated,
            .workspaceRootPath = pass.rootPath,
            .workspaceDirectory = std::move(payload),
        });
    }
    if (emitMutationEvents == EmitMutationEvents::yes) emitMutations(pass);
}

// A file that is seen under another name may be what a save, which is under way, keeps of the old text. If nothing has
// said that it was renamed, its document waits until that must have come to an end.
void EditorDocumentDaemon::followListedRename(const WorkspacePathRemap& remap,
                                              const std::set<std::string>& toldDocumentIDs) {
    const auto document = documentIDByPath.find(remap.sourcePath);
    if (document == documentIDByPath.end() || toldDocumentIDs.contains(document->second)) {
        return retargetManagedDocuments(remap.sourcePath, remap.destinationPath, EmitUpdatedEvents::yes);
    }
    queue->asyncAfter(RenamePairing::pendingRenameRetention, [weakDaemon = weak_from_this(), remap] {
        const auto daemon = weakDaemon.lock();
        if (daemon) daemon->retargetManagedDocuments(remap.sourcePath, remap.destinationPath, EmitUpdatedEvents::yes);
    });
}

void EditorDocumentDaemon::emitMutations(DirectoryRefreshPass& pass) {
    const std::string& rootPath = pass.rootPath;
    rememberMutationsFromListings(pass, platform.clock->uptime(), workspacesByRootPath.at(rootPath));
    std::vector<WorkspaceBrowserMutationPayload> mutations;
    mutations.reserve(pass.external.size());
    for (auto& [key, mutation] : pass.external) mutations.push_back(std::move(mutation));
    EditorDocumentDaemonEnvelope envelope{
        .kind = EditorDocumentEnvelopeKind::event,
        .event = EditorDocumentEventKind::workspaceMutation,
        .workspaceRootPath = rootPath,
    };
    const GatheredOutput::Row row(output);
    for (WorkspaceBrowserMutationPayload& mutation : workspaceMutationSort(std::move(mutations), collation)) {
        envelope.workspaceMutation = std::move(mutation);
        emit(EncodedLine::of(std::move(envelope)));
    }
}
