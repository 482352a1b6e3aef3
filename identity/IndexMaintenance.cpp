#include <cassert>
#include <exception>
#include <new>

#include "daemon/EditorDocumentDaemon.h"
#include "identity/EventNodePathIndexBuild.h"
#include "identity/StableNodeID.h"
#include "workspace/ItemRules.h"
#include "workspace/PathComponents.h"

// How the index of each open workspace is built beside the requests, and kept in step with the daemon's own mutations.

void EditorDocumentDaemon::scheduleWorkspaceEventNodePathIndexRebuild(const std::string& rootPath) {
    workspaceIndexingQueue->async([weakDaemon = weak_from_this(), rootPath] {
        const auto daemon = weakDaemon.lock();
        if (!daemon) return;
        const auto delay = eventNodeIndexDelay(
            daemon->platform.environment->value("MARBLEFERN_EDITOR_DOCUMENT_DAEMON_EVENT_NODE_INDEX_DELAY_MS"));
        daemon->workspaceIndexingQueue->asyncAfter(delay, [weakDaemon, rootPath] {
            if (const auto builder = weakDaemon.lock()) builder->buildIndexOnIndexingQueue(rootPath);
        });
    });
}

void EditorDocumentDaemon::buildIndexOnIndexingQueue(const std::string& rootPath) {
    assert(workspaceIndexingQueue->isCurrent());
    // The index is moved through the queue, which copies its tasks.
    const auto built = std::make_shared<EventNodePathIndex>(rootPath);
    try {
        *built = buildWorkspaceEventNodePathIndex(rootPath, *platform.directoryWalking, fileManager);
    } catch (const std::bad_alloc&) {
        // Events must not wait for an index that has no room. Without it only some renames look like something else.
    }
    queue->async([weakDaemon = weak_from_this(), rootPath, built] {
        if (const auto daemon = weakDaemon.lock()) daemon->mergeBuiltIndex(rootPath, std::move(*built));
    });
}

void EditorDocumentDaemon::mergeBuiltIndex(const std::string& rootPath, EventNodePathIndex built) {
    assert(queue->isCurrent());
    const auto found = workspacesByRootPath.find(rootPath);
    if (found == workspacesByRootPath.end()) return;
    ManagedWorkspace& workspace = found->second;
    workspace.isEventNodeIndexReady = true;
    try {
        workspace.knownPathsByEventNodeID.merge(std::move(built));
        replayPendingWatchEvents(workspace);
    } catch (const std::exception&) {
        tellEverythingAnewSoon();
    }
}

void EditorDocumentDaemon::applyInternalWorkspaceMutationToEventNodePathIndex(
    const std::string& rootPath, WorkspaceBrowserMutationKind kind, const std::optional<std::string>& sourcePath,
    const std::optional<std::string>& destinationPath) {
    using Kind = WorkspaceBrowserMutationKind;
    assert(queue->isCurrent());
    const auto found = workspacesByRootPath.find(rootPath);
    if (found == workspacesByRootPath.end()) return;
    EventNodePathIndex& index = found->second.knownPathsByEventNodeID;
    switch (kind) {
        case Kind::createdFile:
        case Kind::createdFolder:
        case Kind::copied:
        case Kind::duplicated:
            if (destinationPath) {
                indexWorkspaceEventNodePathSubtree(*destinationPath, index, *platform.directoryWalking, fileManager);
            }
            break;
        case Kind::renamed:
        case Kind::moved:
            if (sourcePath && destinationPath) followMove(*sourcePath, *destinationPath, index);
            break;
        case Kind::trashed:
        case Kind::deleted:
            if (sourcePath) index.removeAtOrWithin(*sourcePath);
            break;
    }
}

// A folder that was in the workspace before takes along what is known below it; one that comes from outside is new.
void EditorDocumentDaemon::followMove(const std::string& sourcePath, const std::string& destinationPath,
                                      EventNodePathIndex& index) {
    if (isAtOrWithin(sourcePath, index.rootPath()) && isDirectoryItem(destinationPath, fileManager)) {
        return index.remap(sourcePath, destinationPath);
    }
    indexWorkspaceEventNodePathSubtree(destinationPath, index, *platform.directoryWalking, fileManager);
}

// The save has put another file under the name. Only who knows it is not misled when it is moved before it is listed.
void EditorDocumentDaemon::recogniseSavedFile(const std::string& path) {
    try {
        for (auto& [rootPath, workspace] : workspacesByRootPath) {
            if (!isAtOrWithin(path, rootPath)) continue;
            indexWorkspaceEventNodePathSubtree(path, workspace.knownPathsByEventNodeID, *platform.directoryWalking,
                                               fileManager);
            stableNodeID(path);
        }
    } catch (const std::bad_alloc&) {
        // The save is done and answered; the next listing will see the file as well.
    }
}
