#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "documents/ManagedDocument.h"
#include "watch/WorkspaceWatchEvent.h"

// What watch events mean for the workspaces and documents near them.

// The event as the workspace with this root sees it: whatever root the event was told for, since a workspace may lie
// within another, or have been opened only since. Of a rename of which one end is not shown in the workspace there
// remains a removal or a creation; absent when nothing of the event is shown.
std::optional<WorkspaceWatchEvent> eventInWorkspace(const WorkspaceWatchEvent& event, const std::string& rootPath);

// Whether the workspace sees the event just as it is, which spares a copy.
bool isSeenUnchanged(const WorkspaceWatchEvent& event, const std::string& rootPath);

// The documents that any of the events may have changed: those in the directory of which something changed at any
// depth, and those at any depth below what changed; be that by their paths or by those of their files behind links. The
// cost goes with the events and the documents, not their product.
std::set<std::string> affectedDocumentIDs(const std::vector<WorkspaceWatchEvent>& events,
                                          const std::map<std::string, ManagedDocument>& documentsByID);

// Those among them of which the events say themselves that their files have changed or left their paths.
std::set<std::string> toldDocumentIDs(const std::vector<WorkspaceWatchEvent>& events,
                                      const std::map<std::string, ManagedDocument>& documentsByID);
