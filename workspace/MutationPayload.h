#pragma once

#include <string>
#include <vector>

#include "platform/Collation.h"
#include "platform/FileManager.h"
#include "shared/WorkspaceBrowserMutationPayload.h"

// Completes a mutation, in which all else is filled in, by the directories that it affects.
WorkspaceBrowserMutationPayload workspaceMutationPayload(WorkspaceBrowserMutationPayload mutation,
                                                         const std::vector<std::string>& touchedPaths,
                                                         const FileManager& fileManager);

// A touched path that now is a directory stands for itself, any other for its parent. Each once, only at or within the
// root, sorted ascending.
std::vector<std::string> affectedDirectoryPaths(const std::vector<std::string>& touchedPaths,
                                                const std::string& rootPath, const FileManager& fileManager);

// The mutations as they are told: in the order of the names that a person sees, by the destination, else by the source.
// At one path a deletion comes before what took the item's place.
std::vector<WorkspaceBrowserMutationPayload> workspaceMutationSort(
    std::vector<WorkspaceBrowserMutationPayload> mutations, const Collation& collation);
