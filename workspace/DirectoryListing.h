#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "identity/StableNodeIDTable.h"
#include "platform/Collation.h"
#include "platform/FileIdentification.h"
#include "platform/FileManager.h"
#include "shared/WorkspaceBrowserDirectoryPayload.h"

// The product's own bookkeeping directories. They are neither listed nor watched.
inline constexpr std::array<std::string_view, 3> ignoredWorkspaceDirectoryNames = {".marblefern", ".marblefernlogs",
                                                                                   ".logs"};

// Whether a component of the path below the root is one of those names. False for the root itself and outside it.
bool shouldIgnoreWorkspacePath(std::string_view path, std::string_view rootPath);

// A listing, and the file numbers of its nodes in the same order, as far as the system told them.
struct WorkspaceDirectoryListing {
    WorkspaceBrowserDirectoryPayload payload{};
    std::vector<std::optional<std::uint64_t>> fileNumbers{};
};

// What a listing asks of the system, and the table that gives its nodes their IDs.
struct WorkspaceListingSources {
    const FileManager& fileManager;
    const FileIdentification& fileIdentification;
    const Collation& collation;
    StableNodeIDTable& stableNodeIDs;
};

// The children of a directory at or within the root: directories first, then in the order of a file browser. Children
// that vanish meanwhile are left out. Links are listed as what they are, and followed only for the directory itself.
// Throws 2200, 2001, or the system's error.
WorkspaceDirectoryListing loadWorkspaceDirectory(const std::string& rootPath, const std::string& directoryPath,
                                                 const WorkspaceListingSources& sources);
