#include "watch/WatchEventRules.h"

#include <unordered_map>
#include <unordered_set>

#include "workspace/DirectoryListing.h"
#include "workspace/PathComponents.h"

namespace {

using Kind = WorkspaceWatchEventKind;

bool isShownIn(const std::string& rootPath, const std::string& path) {
    return isAtOrWithin(path, rootPath) && !shouldIgnoreWorkspacePath(path, rootPath);
}

WorkspaceWatchEvent withoutRelatedPath(WorkspaceWatchEvent event, Kind kind, std::string path) {
    event.kind = kind;
    event.path = std::move(path);
    event.relatedPath.reset();
    return event;
}

// Documents by their paths, and by the directories that hold them.
class DocumentsByPlace {
public:
    explicit DocumentsByPlace(const std::map<std::string, ManagedDocument>& documentsByID) {
        for (const auto& [documentID, document] : documentsByID) {
            enter(document.path, documentID);
            const bool isBehindLink = document.place.realPath != document.path;
            if (isBehindLink) enter(document.place.realPath, documentID);
            // Where a link on the way leads nowhere, nobody knows what it is to lead to.
            if (isBehindLink || document.metadata.isMissing) idsBehindLinks.insert(documentID);
        }
    }

    // A document that was found once need not be found again, and so every path on the way up is asked for only once.
    void takeAffected(const std::string& path, std::set<std::string>& documentIDs) {
        takeWithin(path, documentIDs);
        std::string directoryPath = path;
        while (seenPaths.insert(directoryPath).second) {
            if (const auto found = idsByDirectoryPath.find(directoryPath); found != idsByDirectoryPath.end()) {
                documentIDs.insert(found->second.begin(), found->second.end());
            }
            directoryPath = parentPath(directoryPath);
        }
    }

    // Any link, and any directory that one leads to, may be on the way to them.
    void takeBehindLinks(std::set<std::string>& documentIDs) {
        documentIDs.insert(idsBehindLinks.begin(), idsBehindLinks.end());
        idsBehindLinks.clear(); // all are taken, and the next event need not look at them
    }

    void takeWithin(const std::string& path, std::set<std::string>& documentIDs) {
        const auto [first, last] = idsByPath.equal_range(path);
        for (auto entry = first; entry != last; ++entry) documentIDs.insert(entry->second);
        const std::string prefix = path == "/" ? path : path + '/';
        for (auto entry = idsByPath.lower_bound(prefix);
             entry != idsByPath.end() && entry->first.starts_with(prefix);) {
            documentIDs.insert(entry->second);
            entry = idsByPath.erase(entry);
        }
    }

private:
    void enter(const std::string& path, const std::string& documentID) {
        idsByPath.emplace(path, documentID);
        idsByDirectoryPath[parentPath(path)].push_back(documentID);
    }

    std::multimap<std::string, std::string> idsByPath;
    std::unordered_map<std::string, std::vector<std::string>> idsByDirectoryPath;
    std::unordered_set<std::string> seenPaths;
    std::set<std::string> idsBehindLinks;
};

} // namespace

std::optional<WorkspaceWatchEvent> eventInWorkspace(const WorkspaceWatchEvent& event, const std::string& rootPath) {
    WorkspaceWatchEvent seen = event;
    seen.rootPath = rootPath;
    // The root of a workspace inside this one is a directory like any other.
    if (event.kind == Kind::rootChanged && event.rootPath != rootPath) seen.kind = Kind::changeInDirectory;

    const bool isShown = isShownIn(rootPath, event.path);
    if (!event.relatedPath) return isShown ? std::optional(seen) : std::nullopt;
    const bool isRelatedShown = isShownIn(rootPath, *event.relatedPath);
    if (isShown && isRelatedShown) return seen;
    if (isShown) return withoutRelatedPath(seen, Kind::itemRemoved, event.path);
    if (isRelatedShown) return withoutRelatedPath(seen, Kind::itemCreated, *event.relatedPath);
    return std::nullopt;
}

bool isSeenUnchanged(const WorkspaceWatchEvent& event, const std::string& rootPath) {
    return event.rootPath == rootPath && !event.relatedPath && isShownIn(rootPath, event.path);
}

std::set<std::string> affectedDocumentIDs(const std::vector<WorkspaceWatchEvent>& events,
                                          const std::map<std::string, ManagedDocument>& documentsByID) {
    std::set<std::string> documentIDs;
    if (documentsByID.empty()) return documentIDs;
    DocumentsByPlace documents(documentsByID);
    for (const WorkspaceWatchEvent& event : events) {
        documents.takeAffected(event.path, documentIDs);
        if (event.relatedPath) documents.takeAffected(*event.relatedPath, documentIDs);
        if (!event.isRegularFile) documents.takeBehindLinks(documentIDs);
    }
    return documentIDs;
}

std::set<std::string> toldDocumentIDs(const std::vector<WorkspaceWatchEvent>& events,
                                      const std::map<std::string, ManagedDocument>& documentsByID) {
    std::set<std::string> documentIDs;
    if (documentsByID.empty()) return documentIDs;
    DocumentsByPlace documents(documentsByID);
    for (const WorkspaceWatchEvent& event : events) {
        // The other half may have been anywhere.
        const bool isHalf = event.kind == Kind::itemRenamed && !event.relatedPath;
        if (isHalf) documents.takeAffected(event.path, documentIDs);
        if (event.kind != Kind::changeInDirectory) documents.takeWithin(event.path, documentIDs);
    }
    return documentIDs;
}
