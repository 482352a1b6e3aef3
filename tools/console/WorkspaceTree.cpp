#include "tools/console/WorkspaceTree.h"

#include <algorithm>

#include "workspace/PathComponents.h"

void WorkspaceTree::apply(const EditorDocumentDaemonEnvelope& envelope) {
    if (envelope.event == EditorDocumentEventKind::workspaceRootUnavailable && envelope.workspaceRootPath == root)
        return listings.clear();
    if (!envelope.workspaceDirectory) return;
    if (root.empty()) root = envelope.workspaceDirectory->rootPath;
    if (envelope.workspaceDirectory->rootPath == root) replace(*envelope.workspaceDirectory);
}

void WorkspaceTree::collapse(const std::string& directoryPath) {
    collapsedPaths.insert(directoryPath);
}

std::vector<TreeRow> WorkspaceTree::rows() const {
    std::vector<TreeRow> result;
    if (!listings.contains(root)) return result;
    result.push_back({.name = root, .path = root, .isDirectory = true, .isExpanded = true});
    appendRows(result, root, 1);
    return result;
}

bool WorkspaceTree::isDirectory(const std::string& path) const {
    if (path == root) return true;
    const auto siblings = children(parentPath(path));
    const auto found = std::ranges::find(siblings, path, &TreeRow::path);
    return found != siblings.end() && found->isDirectory;
}

std::vector<TreeRow> WorkspaceTree::children(const std::string& directoryPath) const {
    std::vector<TreeRow> result;
    const auto listing = listings.find(directoryPath);
    if (listing == listings.end()) return result;
    for (const WorkspaceBrowserNodePayload& node : listing->second) {
        result.push_back({.name = node.name,
                          .path = node.path,
                          .isDirectory = node.isDirectory,
                          .isExpanded = listings.contains(node.path) && !collapsedPaths.contains(node.path)});
    }
    return result;
}

void WorkspaceTree::replace(const WorkspaceBrowserDirectoryPayload& directory) {
    if (!listings.contains(directory.directoryPath)) collapsedPaths.erase(directory.directoryPath);
    listings[directory.directoryPath] = directory.nodes;
    forgetUnlisted();
}

// A listing is good for as long as the listing above it shows its folder. The upper ones come first in the map.
void WorkspaceTree::forgetUnlisted() {
    std::erase_if(listings, [&](const auto& listing) { return listing.first != root && !isDirectory(listing.first); });
    std::erase_if(collapsedPaths, [&](const std::string& path) { return !listings.contains(path); });
}

void WorkspaceTree::appendRows(std::vector<TreeRow>& result, const std::string& directoryPath, int depth) const {
    for (TreeRow row : children(directoryPath)) {
        row.depth = depth;
        result.push_back(row);
        if (row.isExpanded) appendRows(result, row.path, depth + 1);
    }
}

std::string treeLine(const TreeRow& row) {
    const char* mark = !row.isDirectory ? "  " : row.isExpanded ? "- " : "+ ";
    return std::string(static_cast<std::size_t>(row.depth) * 2, ' ') + mark + row.name +
           (row.isDirectory && row.name != "/" ? "/" : "");
}
