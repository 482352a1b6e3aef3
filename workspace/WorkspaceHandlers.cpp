#include <cassert>

#include "daemon/EditorDocumentDaemon.h"
#include "identity/StableNodeID.h"
#include "workspace/DirectoryCache.h"
#include "workspace/DirectoryListing.h"
#include "workspace/WorkspacePathRules.h"

void EditorDocumentDaemon::handleOpenWorkspace(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const auto requestedRootPath = requestedPath(request.rootPath, fileManager);
    if (!requestedRootPath) return respondFailure(request, "Missing workspace root path.");
    const std::string& rootPath = *requestedRootPath;
    if (!fileManager.isDirectory(rootPath)) {
        return respondFailure(request, "The selected project root is unavailable.");
    }
    WorkspaceDirectoryListing listing = loadWorkspaceDirectory(rootPath, rootPath, listingSources());
    const auto answer = encodedListing(request, rootPath, listing.payload);

    ManagedWorkspace& workspace = workspacesByRootPath.try_emplace(rootPath, rootPath).first->second;
    workspace.knownPathsByEventNodeID = EventNodePathIndex(rootPath);
    workspace.isEventNodeIndexReady = false;
    workspace.realRootPath = fileManager.realPath(rootPath).value_or(rootPath);
    workspace.loadedDirectoryPaths.insert(rootPath);
    cacheWorkspaceDirectoryPayload(std::move(listing), workspace);
    pruneWorkspaceCache(workspace);
    refreshWatchRoots();
    scheduleWorkspaceEventNodePathIndexRebuild(rootPath);
    emit(answer);
}

void EditorDocumentDaemon::handleCloseWorkspace(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const auto requestedRootPath = requestedPath(request.rootPath, fileManager);
    if (!requestedRootPath) return respondFailure(request, "Missing workspace root path.");
    const std::string& rootPath = *requestedRootPath;
    closeWorkspace(rootPath);
    refreshWatchRoots();
    write({
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = request.requestID,
        .command = request.command,
        .success = true,
        .workspaceRootPath = rootPath,
    });
}

void EditorDocumentDaemon::handleLoadWorkspaceChildren(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const auto requestedRootPath = requestedPath(request.rootPath, fileManager);
    const auto requestedDirectoryPath = requestedPath(request.path, fileManager);
    if (!requestedRootPath || !requestedDirectoryPath) {
        return respondFailure(request, "Missing workspace directory path.");
    }
    const std::string& rootPath = *requestedRootPath;
    const std::string& directoryPath = *requestedDirectoryPath;
    requirePath(directoryPath, rootPath);
    if (!fileManager.isDirectory(directoryPath)) {
        return respondFailure(request, "The requested directory is unavailable.");
    }
    WorkspaceDirectoryListing listing = loadWorkspaceDirectory(rootPath, directoryPath, listingSources());
    const auto answer = encodedListing(request, rootPath, listing.payload);

    // Expanding a directory of a root that was never opened opens the root.
    ManagedWorkspace& workspace = workspacesByRootPath.try_emplace(rootPath, rootPath).first->second;
    const bool needsIndex = workspace.knownPathsByEventNodeID.isEmpty();
    if (needsIndex) {
        workspace.isEventNodeIndexReady = false;
        workspace.realRootPath = fileManager.realPath(rootPath).value_or(rootPath);
    }
    workspace.loadedDirectoryPaths.insert(rootPath);
    cacheWorkspaceDirectoryPayload(std::move(listing), workspace);
    pruneWorkspaceCache(workspace);
    refreshWatchRoots();
    if (needsIndex) scheduleWorkspaceEventNodePathIndexRebuild(rootPath);
    emit(answer);
}

// The envelope has the listing only while it is encoded: a large one is worth no copy.
std::optional<EncodedLine> EditorDocumentDaemon::encodedListing(const EditorDocumentDaemonRequest& request,
                                                                const std::string& rootPath,
                                                                WorkspaceBrowserDirectoryPayload& listing) {
    EditorDocumentDaemonEnvelope envelope{
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = request.requestID,
        .command = request.command,
        .success = true,
        .workspaceRootPath = rootPath,
        .workspaceDirectory = std::move(listing),
    };
    auto line = EncodedLine::of(std::move(envelope));
    listing = std::move(*envelope.workspaceDirectory);
    return line;
}

void EditorDocumentDaemon::closeWorkspace(const std::string& rootPath) {
    if (workspacesByRootPath.erase(rootPath) == 0) return;
    std::vector<std::string> openRootPaths;
    for (const auto& [openRootPath, workspace] : workspacesByRootPath) openRootPaths.push_back(openRootPath);
    stableNodeIDs.closeRoot(rootPath, openRootPaths);
}

WorkspaceListingSources EditorDocumentDaemon::listingSources() {
    return {fileManager, *platform.fileIdentification, collation, stableNodeIDs};
}

std::string EditorDocumentDaemon::stableNodeID(const std::string& path) {
    return ::stableNodeID(path, stableNodeIDs, *platform.fileIdentification, fileManager);
}
