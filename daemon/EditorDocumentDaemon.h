#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "daemon/DaemonPlatform.h"
#include "daemon/EncodedLine.h"
#include "daemon/GatheredOutput.h"
#include "documents/DocumentLoading.h"
#include "documents/ManagedDocument.h"
#include "identity/StableNodeIDTable.h"
#include "platform/LineInput.h"
#include "platform/PlatformError.h"
#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "watch/DirectoryRefreshPass.h"
#include "watch/RefreshKeys.h"
#include "watch/WatchEventEffects.h"
#include "watch/WatchEventMailbox.h"
#include "watch/WorkspaceWatchStream.h"
#include "workspace/DirectoryListing.h"
#include "workspace/ManagedWorkspace.h"

enum class EmitUpdatedEvents { no, yes };
enum class EmitMutationEvents { no, yes };

// What is known of the item that a mutation is about.
struct WorkspaceItemIdentity {
    std::optional<std::string> nodeID{};
    std::optional<bool> isDirectory{};
};

// The daemon: its state, the request loop and the table of commands. All state lives on queue, where every member but
// run() is called, and so nothing here is locked. Each wing defines its members in its own folder.
class EditorDocumentDaemon : public std::enable_shared_from_this<EditorDocumentDaemon> {
public:
    explicit EditorDocumentDaemon(DaemonPlatform daemonPlatform);

    // Answers the lines of the input one by one and returns at its end. What is pending then is not waited for.
    // To be called on a thread of its own, not on queue.
    void run(LineInput& input);

    // Answers one line that has no white space around it. Behind it stand LineInput::padding readable bytes. On queue.
    void handle(std::string_view line);

    // Compares an open document with its file and tells the client, by at most one event, what became of it. On queue.
    void checkDocumentForChanges(const std::string& documentID);

    // Takes in what the watch stream has seen, and tells the client what it means. On queue.
    void handleWatchEvents(const std::vector<WorkspaceWatchEvent>& events);

private:
    // Each handler writes exactly one response. What it throws is answered by handle().
    using Handler = void (EditorDocumentDaemon::*)(EditorDocumentDaemonRequest request);
    static Handler handlerForCommand(EditorDocumentRequestCommand command);
    void handleOpen(EditorDocumentDaemonRequest request);
    void handleSave(EditorDocumentDaemonRequest request);
    void handleClose(EditorDocumentDaemonRequest request);
    void handleOpenWorkspace(EditorDocumentDaemonRequest request);
    void handleCloseWorkspace(EditorDocumentDaemonRequest request);
    void handleLoadWorkspaceChildren(EditorDocumentDaemonRequest request);
    void handleCreateWorkspaceFile(EditorDocumentDaemonRequest request);
    void handleCreateWorkspaceFolder(EditorDocumentDaemonRequest request);
    void handleRenameWorkspaceItem(EditorDocumentDaemonRequest request);
    void handleMoveWorkspaceItem(EditorDocumentDaemonRequest request);
    void handleCopyWorkspaceItem(EditorDocumentDaemonRequest request);
    void handleDuplicateWorkspaceItem(EditorDocumentDaemonRequest request);
    void handleTrashWorkspaceItem(EditorDocumentDaemonRequest request);
    void handleDeleteWorkspaceItem(EditorDocumentDaemonRequest request);

    // The one door by which envelopes leave. An envelope that cannot be encoded is dropped. Where state goes with an
    // envelope, the line is made first and emitted last: for want of memory the making can fail, and then nothing is to
    // have changed.
    void write(EditorDocumentDaemonEnvelope&& envelope) { emit(EncodedLine::of(std::move(envelope))); }
    void emit(const std::optional<EncodedLine>& line);
    void respondFailure(const EditorDocumentDaemonRequest& request, std::string message);
    void respondUnreadable(std::string_view description);

    // Documents. Absent when the request names no open document.
    const ManagedDocument* requestedDocument(const EditorDocumentDaemonRequest& request) const;
    void markMissing(ManagedDocument& document);
    void followSavedFile(ManagedDocument& document);
    void tellOtherDocuments(const ManagedDocument& saved);
    void reload(ManagedDocument& document);
    void tellLoaded(ManagedDocument& document, const std::string& path, LoadedDocument loaded);

    // Documents that follow their files.
    void retargetManagedDocuments(const std::string& sourcePath, const std::string& destinationPath,
                                  EmitUpdatedEvents emitUpdatedEvents);
    void markManagedDocumentsDeleted(const std::string& atOrWithin);
    void follow(ManagedDocument& document, const std::string& newPath);
    bool followsOutsideRename(const ManagedDocument& document, const std::string& newPath) const;
    void moveDocument(ManagedDocument& document, std::string newPath);
    void forgetPath(const ManagedDocument& document);

    // Workspaces.
    void closeWorkspace(const std::string& rootPath);
    WorkspaceListingSources listingSources();
    static std::optional<EncodedLine> encodedListing(const EditorDocumentDaemonRequest& request,
                                                     const std::string& rootPath,
                                                     WorkspaceBrowserDirectoryPayload& listing);

    // Identity, and the index of each workspace.
    std::string stableNodeID(const std::string& path);
    void scheduleWorkspaceEventNodePathIndexRebuild(const std::string& rootPath);
    void buildIndexOnIndexingQueue(const std::string& rootPath);
    void mergeBuiltIndex(const std::string& rootPath, EventNodePathIndex built);
    void applyInternalWorkspaceMutationToEventNodePathIndex(const std::string& rootPath,
                                                            WorkspaceBrowserMutationKind kind,
                                                            const std::optional<std::string>& sourcePath,
                                                            const std::optional<std::string>& destinationPath);
    void followMove(const std::string& sourcePath, const std::string& destinationPath, EventNodePathIndex& index);
    void recogniseSavedFile(const std::string& path);

    // The common roads of the mutations. Each ends in announce(), which writes the response, the event and what changed
    // in the listings.
    void moveWorkspaceItem(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                           WorkspaceBrowserMutationKind kind, const std::string& itemPath,
                           const std::string& destinationPath);
    void copyWorkspaceItem(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                           WorkspaceBrowserMutationKind kind, const std::string& itemPath,
                           const std::string& destinationPath);
    void announceCreated(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                         WorkspaceBrowserMutationKind kind, const std::string& path);
    void announceRemoved(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                         WorkspaceBrowserMutationKind kind, const std::string& itemPath);
    void announce(const EditorDocumentDaemonRequest& request, const std::string& rootPath,
                  WorkspaceBrowserMutationKind kind, const WorkspaceItemIdentity& identity,
                  const std::optional<std::string>& sourcePath, const std::optional<std::string>& destinationPath,
                  const std::vector<std::string>& touchedPaths);
    WorkspaceItemIdentity workspaceMutationIdentity(const std::optional<std::string>& sourcePath,
                                                    const std::optional<std::string>& destinationPath);
    WorkspaceItemIdentity cachedIdentity(const std::string& path) const;

    // Watching. What is watched is brought in line with the open workspaces and documents, at no cost when it is.
    void refreshWatchRoots();
    void cancelWatching();
    WorkspaceWatchStream& presentWatchStream();
    void takeWatchEvents();

    // Watch events.
    void replayPendingWatchEvents(ManagedWorkspace& workspace);
    void tellWatchEvents(const std::vector<WorkspaceWatchEvent>& events, WatchEventEffects effects);
    void handleWatchEvent(const WorkspaceWatchEvent& event, WatchEventEffects& effects);
    void handleWorkspaceEvent(const WorkspaceWatchEvent& event, ManagedWorkspace& workspace,
                              WatchEventEffects& effects);
    void followOutsideRename(const std::string& sourcePath, const std::string& destinationPath);
    void checkNearbyDocument(const std::string& documentID);
    void checkDocumentAgain(const std::string& documentID);
    std::optional<WorkspaceBrowserMutationPayload> workspaceMutation(const WorkspaceWatchEvent& event,
                                                                     ManagedWorkspace& workspace,
                                                                     WatchEventEffects& effects);
    WorkspaceBrowserMutationPayload creation(const WorkspaceWatchEvent& event, ManagedWorkspace& workspace,
                                             WatchEventEffects& effects);
    WorkspaceBrowserMutationPayload renameOrMove(const WorkspaceWatchEvent& event, const std::string& sourcePath,
                                                 const std::string& destinationPath, ManagedWorkspace& workspace);
    std::optional<WorkspaceBrowserMutationPayload> unpairedRename(const WorkspaceWatchEvent& event,
                                                                  ManagedWorkspace& workspace);
    WorkspaceBrowserMutationPayload removal(const WorkspaceWatchEvent& event, ManagedWorkspace& workspace);
    std::optional<std::string> nodeIDOfEvent(const WorkspaceWatchEvent& event,
                                             const std::optional<std::string>& sourcePath,
                                             const std::optional<std::string>& destinationPath);

    // What the client has been told is no longer sure to be what it ought to know. All of it is told anew, now or,
    // where that fails as well, again and again until it succeeds.
    void tellEverythingAnewSoon();
    void tellEverythingAnew();
    void tellListingsAnew(const std::string& rootPath);

    // Listings that are done again.
    void emitWorkspaceRefreshes(const std::string& rootPath, const std::vector<std::string>& changedPaths);
    void emitWorkspaceDirectoryUpdates(const std::set<WorkspaceDirectoryRefreshKey>& keys,
                                       EmitMutationEvents emitMutationEvents,
                                       WorkspaceMutationsByRootPath seedExternalMutations,
                                       const std::set<std::string>& toldDocumentIDs);
    void emitWorkspaceDirectoryUpdates(DirectoryRefreshPass pass, EmitMutationEvents emitMutationEvents);
    void refreshWorkspaceDirectory(const std::string& directoryPath, EmitMutationEvents emitMutationEvents,
                                   DirectoryRefreshPass& pass, ManagedWorkspace& workspace);
    void giveUpOrLookAgain(const std::string& directoryPath, const PlatformError& error, ManagedWorkspace& workspace);
    void lookAgain(const std::string& rootPath, const std::string& directoryPath);
    void dropUnavailableWorkspace(const std::string& rootPath, std::optional<std::string> message);
    void dropUnlistableRoot(const std::string& rootPath, const PlatformError& error);
    void emitRefreshedState(DirectoryRefreshPass pass, EmitMutationEvents emitMutationEvents);
    void followListedRename(const WorkspacePathRemap& remap, const std::set<std::string>& toldDocumentIDs);
    void emitMutations(DirectoryRefreshPass& pass);

    const DaemonPlatform platform;
    GatheredOutput output;
    Queue* const queue;
    Queue* const workspaceIndexingQueue;
    FileManager& fileManager;
    const TextCoding& textCoding;
    const Collation& collation;
    std::map<std::string, ManagedDocument> documentsByID;
    std::map<std::string, std::string> documentIDByPath;
    std::map<std::string, ManagedWorkspace> workspacesByRootPath;
    StableNodeIDTable stableNodeIDs;
    std::shared_ptr<WorkspaceWatchStream> watchStream; // null until it is first used
    const std::shared_ptr<WatchEventMailbox> watchEventMailbox = std::make_shared<WatchEventMailbox>();
    bool mustTellEverythingAnew = false;
    bool isTellingAnewSubmitted = false;
    std::chrono::nanoseconds delayOfTellingAnew{};
};
