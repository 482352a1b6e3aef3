#pragma once

#include <string>

#include "shared/WorkspaceBrowserDirectoryPayload.h"
#include "workspace/DirectoryListing.h"
#include "workspace/ManagedWorkspace.h"

// What a workspace remembers of the listings that the client has been shown. May be called on the queue that owns the
// workspace.

// Remembers a listing in place of the directory's earlier one. Nodes that only the earlier one had stay until the cache
// is pruned.
void cacheWorkspaceDirectoryPayload(WorkspaceDirectoryListing listing, ManagedWorkspace& workspace);

// What that does to the index, and all that it does for a listing that is remembered as it is.
void indexListing(const WorkspaceDirectoryListing& listing, EventNodePathIndex& index);
bool isCachedAsItIs(const WorkspaceBrowserDirectoryPayload& payload, const ManagedWorkspace& workspace);

// The listing as it was remembered last; empty for a directory that never was.
WorkspaceBrowserDirectoryPayload cachedWorkspaceDirectoryPayload(const std::string& rootPath,
                                                                 const std::string& directoryPath,
                                                                 const ManagedWorkspace& workspace);

// Whether the remembered listing of its parent has the directory.
bool isShownAsDirectory(const std::string& directoryPath, const ManagedWorkspace& workspace);

// Drops the nodes that no listing holds any more, then the directories whose nodes are gone. What this leaves without
// an owner goes the next time. Costs nothing where nothing can have gone.
void pruneWorkspaceCache(ManagedWorkspace& workspace);

// Forgets the directory and those below it, as directories that the client has loaded.
void removeLoadedWorkspaceDirectory(const std::string& atOrWithin, ManagedWorkspace& workspace);
