#include "workspace/DirectoryListing.h"

#include <algorithm>

#include "identity/StableNodeID.h"
#include "workspace/PathComponents.h"
#include "workspace/WorkspaceErrors.h"
#include "workspace/WorkspacePathRules.h"

namespace {

bool isIgnoredName(std::string_view name) {
    return std::find(ignoredWorkspaceDirectoryNames.begin(), ignoredWorkspaceDirectoryNames.end(), name) !=
           ignoredWorkspaceDirectoryNames.end();
}

bool isHiddenFromListings(std::string_view name) {
    return name == ".DS_Store" || isIgnoredName(name);
}

WorkspaceDirectoryListing listChildren(const std::string& rootPath, const std::string& directoryPath,
                                       const WorkspaceListingSources& sources) {
    WorkspaceDirectoryListing listing{.payload = {.rootPath = rootPath, .directoryPath = directoryPath}};
    sources.fileIdentification.forEachIdentifiedEntry(directoryPath, [&](const IdentifiedEntry& entry) {
        if (isHiddenFromListings(entry.name)) return;
        std::string path = appendingPathComponent(directoryPath, entry.name);
        std::string nodeID = stableNodeID(path, entry, sources.stableNodeIDs, sources.fileManager);
        listing.payload.nodes.push_back({
            .nodeID = std::move(nodeID),
            .path = std::move(path),
            .parentPath = directoryPath,
            .name = std::string(entry.name),
            .isDirectory = entry.type == FileType::directory,
        });
        listing.fileNumbers.push_back(entry.fileNumber);
    });
    return listing;
}

void sortForBrowsing(WorkspaceDirectoryListing& listing, const Collation& collation) {
    std::vector<WorkspaceBrowserNodePayload>& nodes = listing.payload.nodes;
    std::vector<std::string_view> names;
    for (const WorkspaceBrowserNodePayload& node : nodes) names.push_back(node.name);
    std::vector<std::size_t> order = sortedOrder(collation, names);
    std::stable_partition(order.begin(), order.end(),
                          [&](std::size_t position) { return nodes[position].isDirectory; });

    WorkspaceDirectoryListing sorted{
        .payload = {.rootPath = listing.payload.rootPath, .directoryPath = listing.payload.directoryPath}};
    sorted.payload.nodes.reserve(order.size());
    sorted.fileNumbers.reserve(order.size());
    for (const std::size_t position : order) {
        sorted.payload.nodes.push_back(std::move(nodes[position]));
        sorted.fileNumbers.push_back(listing.fileNumbers[position]);
    }
    listing = std::move(sorted);
}

} // namespace

bool shouldIgnoreWorkspacePath(std::string_view path, std::string_view rootPath) {
    if (path == rootPath || !isAtOrWithin(path, rootPath)) return false;
    std::string_view rest = path.substr(rootPath == "/" ? 1 : rootPath.size() + 1);
    while (!rest.empty()) {
        const std::size_t slash = std::min(rest.find('/'), rest.size());
        if (isIgnoredName(rest.substr(0, slash))) return true;
        rest.remove_prefix(std::min(slash + 1, rest.size()));
    }
    return false;
}

WorkspaceDirectoryListing loadWorkspaceDirectory(const std::string& rootPath, const std::string& directoryPath,
                                                 const WorkspaceListingSources& sources) {
    requirePath(directoryPath, rootPath);
    if (!sources.fileManager.isDirectory(directoryPath)) throw workspaceDirectoryUnavailableError();
    WorkspaceDirectoryListing listing = listChildren(rootPath, directoryPath, sources);
    sortForBrowsing(listing, sources.collation);
    return listing;
}
