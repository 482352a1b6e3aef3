#include "workspace/DirectoryListing.h"

#include <algorithm>
#include <cerrno>

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

// The entries of a directory as they are found. Their names and IDs lie in one string, for there may be many; the nodes
// are made when the order is known, so that what is looked at in a row lies in a row.
class FoundEntries {
public:
    void add(std::string_view name, std::string_view nodeID, bool isDirectory,
             std::optional<std::uint64_t> fileNumber) {
        const std::size_t begin = texts.size();
        (texts += name) += nodeID;
        entries.push_back({begin, name.size(), nodeID.size(), isDirectory, fileNumber});
    }

    WorkspaceDirectoryListing listing(const std::string& rootPath, const std::string& directoryPath,
                                      const Collation& collation) const {
        WorkspaceDirectoryListing listing{.payload = {.rootPath = rootPath, .directoryPath = directoryPath}};
        listing.payload.nodes.reserve(entries.size());
        listing.fileNumbers.reserve(entries.size());
        for (const std::size_t position : orderForBrowsing(collation)) {
            const Entry& entry = entries[position];
            listing.payload.nodes.push_back({
                .nodeID = texts.substr(entry.begin + entry.nameSize, entry.nodeIDSize),
                .path = appendingPathComponent(directoryPath, name(entry)),
                .parentPath = directoryPath,
                .name = std::string(name(entry)),
                .isDirectory = entry.isDirectory,
            });
            listing.fileNumbers.push_back(entry.fileNumber);
        }
        return listing;
    }

private:
    struct Entry {
        std::size_t begin{}; // of the name, which the ID follows
        std::size_t nameSize{};
        std::size_t nodeIDSize{};
        bool isDirectory{};
        std::optional<std::uint64_t> fileNumber{};
    };

    std::string_view name(const Entry& entry) const {
        return std::string_view(texts).substr(entry.begin, entry.nameSize);
    }

    std::vector<std::size_t> orderForBrowsing(const Collation& collation) const {
        std::vector<std::string_view> names;
        names.reserve(entries.size());
        for (const Entry& entry : entries) names.push_back(name(entry));
        std::vector<std::size_t> order = sortedOrder(collation, names);
        std::stable_partition(order.begin(), order.end(),
                              [&](std::size_t position) { return entries[position].isDirectory; });
        return order;
    }

    std::string texts{};
    std::vector<Entry> entries{};
};

// Between the question for it and its turn.
bool hasGone(const PlatformError& error) {
    return error.domain == posixErrorDomain && (error.code == ENOENT || error.code == ENOTDIR);
}

FoundEntries entriesOf(const std::string& directoryPath, const WorkspaceListingSources& sources) {
    FoundEntries found;
    std::string path = appendingPathComponent(directoryPath, "");
    const std::size_t nameBegin = path.size();
    sources.fileIdentification.forEachIdentifiedEntry(directoryPath, [&](const IdentifiedEntry& entry) {
        if (isHiddenFromListings(entry.name)) return;
        path.resize(nameBegin);
        path += entry.name;
        found.add(entry.name, stableNodeID(path, entry, sources.stableNodeIDs, sources.fileManager),
                  entry.type == FileType::directory, entry.fileNumber);
    });
    return found;
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
    try {
        return entriesOf(directoryPath, sources).listing(rootPath, directoryPath, sources.collation);
    } catch (const PlatformError& error) {
        if (hasGone(error)) throw workspaceDirectoryUnavailableError();
        throw;
    }
}
