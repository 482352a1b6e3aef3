#include <cassert>
#include <exception>
#include <utility>

#include "daemon/EditorDocumentDaemon.h"
#include "documents/DocumentLoading.h"
#include "watch/WatchEventEffects.h"
#include "watch/WatchEventRules.h"
#include "workspace/PathComponents.h"

namespace {

using Kind = WorkspaceWatchEventKind;

} // namespace

// Nobody waits for an answer to events, and so whatever keeps them from being told is made good later.
void EditorDocumentDaemon::takeWatchEvents() {
    assert(queue->isCurrent());
    try {
        const WatchEventNews news = watchEventMailbox->take();
        if (!news.events.empty()) handleWatchEvents(news.events);
        if (news.isIncomplete || mustTellEverythingAnew) tellEverythingAnewSoon();
    } catch (const std::exception&) {
        tellEverythingAnewSoon();
    }
}

void EditorDocumentDaemon::handleWatchEvents(const std::vector<WorkspaceWatchEvent>& events) {
    assert(queue->isCurrent());
    WatchEventEffects effects;
    for (const WorkspaceWatchEvent& event : events) handleWatchEvent(event, effects);
    tellWatchEvents(events, std::move(effects));
}

// Documents and IDs followed these events when they came.
void EditorDocumentDaemon::replayPendingWatchEvents(ManagedWorkspace& workspace) {
    assert(queue->isCurrent());
    const std::vector<WorkspaceWatchEvent> events = std::exchange(workspace.pendingWatchEvents, {});
    if (events.empty()) return;
    WatchEventEffects effects;
    for (const WorkspaceWatchEvent& event : events) handleWorkspaceEvent(event, workspace, effects);
    tellWatchEvents(events, std::move(effects));
}

// Watching follows what the events did to roots and documents before anything is listed or checked, so that a change
// after that is an event of its own; and once more at the end, since listings can show documents and directories at new
// places.
void EditorDocumentDaemon::tellWatchEvents(const std::vector<WorkspaceWatchEvent>& events, WatchEventEffects effects) {
    for (const std::string& rootPath : effects.unavailableRootPaths) dropUnavailableWorkspace(rootPath, std::nullopt);
    refreshWatchRoots();
    const std::set<std::string> documentIDs = affectedDocumentIDs(events, documentsByID);
    const std::set<std::string> toldDocumentIDs = ::toldDocumentIDs(events, documentsByID);
    emitWorkspaceDirectoryUpdates(effects.refreshKeys, EmitMutationEvents::yes, std::move(effects.mutations),
                                  toldDocumentIDs);
    for (const std::string& documentID : documentIDs) {
        toldDocumentIDs.contains(documentID) ? checkDocumentForChanges(documentID) : checkNearbyDocument(documentID);
    }
    refreshWatchRoots();
}

// Something else has changed near the document. If its file is not there just now, or has lost its text, another
// program may be between two steps of a save. An event of its own says what came of that; the second look is for a file
// that went before it was watched.
void EditorDocumentDaemon::checkNearbyDocument(const std::string& documentID) {
    const auto open = documentsByID.find(documentID);
    if (open == documentsByID.end()) return;
    const DocumentMetadata& known = open->second.metadata;
    const DocumentMetadata found = currentMetadata(open->second.path, fileManager);
    const bool isInBetween = (found.isMissing && !known.isMissing) || (found.fileSize == 0 && known.fileSize != 0);
    if (!isInBetween) return checkDocumentForChanges(documentID);
    queue->asyncAfter(RenamePairing::pendingRenameRetention, [weakDaemon = weak_from_this(), documentID] {
        if (const auto daemon = weakDaemon.lock()) daemon->checkDocumentAgain(documentID);
    });
}

void EditorDocumentDaemon::checkDocumentAgain(const std::string& documentID) {
    const auto open = documentsByID.find(documentID);
    if (open == documentsByID.end()) return;
    const DocumentPlace former = open->second.place;
    checkDocumentForChanges(documentID);
    // Links may have come to lead elsewhere, where nothing is watched yet.
    if (open->second.place != former) refreshWatchRoots();
}

void EditorDocumentDaemon::handleWatchEvent(const WorkspaceWatchEvent& event, WatchEventEffects& effects) {
    if (event.kind == Kind::itemRenamed && event.relatedPath) {
        retargetManagedDocuments(event.path, *event.relatedPath, EmitUpdatedEvents::yes);
        followOutsideRename(event.path, *event.relatedPath);
    }
    for (auto& [rootPath, workspace] : workspacesByRootPath) {
        if (isSeenUnchanged(event, rootPath)) {
            handleWorkspaceEvent(event, workspace, effects);
        } else if (const auto seen = eventInWorkspace(event, rootPath)) {
            handleWorkspaceEvent(*seen, workspace, effects);
        }
    }
    // Only now, since the client is told of what is gone by the ID that it knows.
    if (event.kind == Kind::itemRemoved) stableNodeIDs.removeAtOrWithin(event.path);
}

void EditorDocumentDaemon::handleWorkspaceEvent(const WorkspaceWatchEvent& event, ManagedWorkspace& workspace,
                                                WatchEventEffects& effects) {
    if (event.kind == Kind::rootChanged) {
        if (!fileManager.isDirectory(workspace.rootPath)) {
            effects.unavailableRootPaths.insert(workspace.rootPath);
            return;
        }
        // Another folder, of which the index knows nothing, may have taken the root's place.
        scheduleWorkspaceEventNodePathIndexRebuild(workspace.rootPath);
    }
    if (!workspace.isEventNodeIndexReady) {
        workspace.pendingWatchEvents.push_back(event);
        return;
    }
    if (auto mutation = workspaceMutation(event, workspace, effects)) {
        const std::string key = workspaceMutationKey(*mutation);
        if (!takeMutationFromListing(key, platform.clock->uptime(), workspace)) {
            effects.mutations[workspace.rootPath].insert_or_assign(key, std::move(*mutation));
        }
    }
    if (effects.whollyRefreshedRootPaths.contains(workspace.rootPath)) return;
    // Files come by the thousand.
    if (dependsOnDirectoryAlone(event) &&
        !effects.refreshedDirectoryPaths[workspace.rootPath].insert(parentPath(event.path)).second)
        return;
    effects.refreshKeys.merge(refreshKeys(workspace, event, fileManager));
    if (event.kind == Kind::itemRenamed && !event.relatedPath) {
        effects.whollyRefreshedRootPaths.insert(workspace.rootPath);
    }
}

// What has come to the old place since is another item, and keeps the IDs of its names.
void EditorDocumentDaemon::followOutsideRename(const std::string& sourcePath, const std::string& destinationPath) {
    if (!fileManager.itemExists(sourcePath)) stableNodeIDs.carry(sourcePath, destinationPath);
}
