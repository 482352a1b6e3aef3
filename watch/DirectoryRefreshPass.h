#pragma once

#include <chrono>
#include <compare>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/FileManager.h"
#include "shared/WorkspaceBrowserDirectoryPayload.h"
#include "shared/WorkspaceBrowserMutationPayload.h"
#include "workspace/DirectoryListing.h"
#include "workspace/ManagedWorkspace.h"

// One pass over the loaded listings of one workspace after something changed on disk. The pass compares with the state
// at its start: an item that moved into a directory which is listed early is not new evidence for one listed late.

// An item that was seen under a new path.
struct WorkspacePathRemap {
    std::string sourcePath{};
    std::string destinationPath{};

    auto operator<=>(const WorkspacePathRemap&) const = default;
};

// A deletion that is held back until the pass is over, because the item may turn up elsewhere.
struct WorkspacePendingRemovalMutation {
    std::string nodeID{};
    WorkspaceBrowserMutationPayload payload{};
};

// By workspaceMutationKey: of several mutations with one key the last is told.
using WorkspaceMutationsByKey = std::map<std::string, WorkspaceBrowserMutationPayload>;
using WorkspaceMutationsByRootPath = std::map<std::string, WorkspaceMutationsByKey>;
using WorkspaceNodesByID = std::unordered_map<std::string, WorkspaceBrowserNodePayload>;

std::string workspaceMutationKey(const WorkspaceBrowserMutationPayload& payload);

// Depth below the root first, then plain string order.
bool ascendingWorkspaceDirectoryPathSort(const std::string& left, const std::string& right,
                                         const std::string& rootPath);

// The same order for paths that are all at or within one root.
struct AscendingWorkspaceDirectoryPaths {
    bool operator()(const std::string& left, const std::string& right) const {
        return ascendingWorkspaceDirectoryPathSort(left, right, "/");
    }
};
using WorkspaceDirectoryPaths = std::set<std::string, AscendingWorkspaceDirectoryPaths>;

struct DirectoryRefreshPass {
    std::string rootPath{};
    WorkspaceDirectoryPaths pendingPaths{}; // with each of them, all loaded directories above it
    std::set<std::string> processedPaths{};
    WorkspaceMutationsByKey external{};
    std::unordered_set<std::string> listedKeys{}; // of those that listings alone have shown, and no event
    std::vector<WorkspacePendingRemovalMutation> pendingRemovals{};
    std::unordered_set<std::string> renamedOrMovedNodeIDs{};
    std::set<WorkspacePathRemap> remaps{};
    std::vector<WorkspaceBrowserDirectoryPayload> changedPayloads{};
    WorkspaceNodesByID nodesBeforePass{};                           // those that the pass has since overwritten
    std::unordered_map<std::string, std::string> pathsBeforePass{}; // by node ID, of those below a renamed directory
    std::set<std::string> toldDocumentIDs{};      // documents about which there are events of their own
    std::set<std::string> directoryPathsToTell{}; // whether their listings have changed or not
};

// Turns the first pending path that is not yet processed into a processed one. Absent when the pass is over.
std::optional<std::string> nextWorkspaceDirectoryPathToRefresh(DirectoryRefreshPass& pass);

// The children that the directory had before the pass.
WorkspaceNodesByID previousChildNodes(const std::string& directoryPath, const DirectoryRefreshPass& pass,
                                      const ManagedWorkspace& workspace);

// Whether the listing has nothing to say that the client does not know, and that the pass has not seen otherwise.
bool isNoNews(const WorkspaceBrowserDirectoryPayload& payload, const DirectoryRefreshPass& pass,
              const ManagedWorkspace& workspace);

// Infers mutations from a directory's old and new listing: creations, renames and moves at once, removals held back.
void collectWorkspaceExternalMutations(const WorkspaceNodesByID& previousChildNodesByID,
                                       const WorkspaceBrowserDirectoryPayload& payload, DirectoryRefreshPass& pass,
                                       const FileManager& fileManager);

// Lets the loaded directories below every directory that the listing shows under a new path go along with it, and puts
// them down to be listed again.
void remapMovedNodes(const WorkspaceBrowserDirectoryPayload& payload, DirectoryRefreshPass& pass,
                     ManagedWorkspace& workspace);

// Remembers the listing, and whether the client has to be told of it.
void cacheRefreshedListing(WorkspaceDirectoryListing listing, DirectoryRefreshPass& pass, ManagedWorkspace& workspace);

// Enters what a listing has shown.
void enterListedMutation(WorkspaceBrowserMutationPayload mutation, DirectoryRefreshPass& pass);

// A listing often shows a change before the event comes that tells of it. The event is then no news.
void rememberMutationsFromListings(const DirectoryRefreshPass& pass, std::chrono::nanoseconds now,
                                   ManagedWorkspace& workspace);
bool takeMutationFromListing(const std::string& mutationKey, std::chrono::nanoseconds now, ManagedWorkspace& workspace);
