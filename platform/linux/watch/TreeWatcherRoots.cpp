#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "platform/linux/watch/TreeWatcher.h"

namespace {

// The names that lead from the directory down to the path, which must be at or below it.
std::vector<std::string_view> namesBetween(const std::string& directoryPath, std::string_view path) {
    std::vector<std::string_view> names;
    path.remove_prefix(directoryPath.size());
    while (!path.empty()) {
        path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
        if (path.empty()) break;
        names.push_back(path.substr(0, path.find('/')));
        path.remove_prefix(names.back().size());
    }
    return names;
}

} // namespace

void TreeWatcher::setRoots(const std::vector<std::string>& rootPaths) {
    openAncestors.clear();
    paths.roots = rootPaths;
    const std::set<std::string> wanted(rootPaths.begin(), rootPaths.end());
    if (roots.empty()) nextCheck = nextPoll = system.now() + pollInterval();
    // First what is new, so that it can take over what is watched already.
    for (const std::string& path : wanted) {
        const auto place = std::ranges::lower_bound(roots, path, {}, &Root::path);
        if (place != roots.end() && place->path == path) {
            noticeAbsence(*place);
            continue;
        }
        Root& root = *roots.insert(place, Root{.path = path});
        attach(root);
        if (root.node) continue;
        root.isAbsenceUntold = true; // whoever wants it watched has seen it
        pending.touchWindow(system.now());
    }
    for (Root& root : roots) {
        if (!wanted.contains(root.path)) detach(root);
    }
    std::erase_if(roots, [&](const Root& root) { return !wanted.contains(root.path); });
    limitDocumentRoots();
    for (const std::string& path : paths.folders) addInterest(path);
    watchAncestors();
}

// It may be back before it is missed, and whoever wants it watched has not seen what it knows.
void TreeWatcher::noticeAbsence(const Root& root) {
    if (!root.node || system.directoryAt(root.path) == root.node->identity) return;
    const WatchTime now = system.now();
    pending.rootChanged(root.path, now);
    pending.noticeFoldersOfInterest(root.path, paths, now);
}

void TreeWatcher::setInterest(const EventStreamInterest& newInterest) {
    interest = newInterest;
    paths.documents = {interest.documentPaths.begin(), interest.documentPaths.end()};
    const auto former = std::exchange(paths.folders, {interest.directoryPaths.begin(), interest.directoryPaths.end()});
    for (const std::string& path : paths.documents) paths.folders.emplace(folderPathAbove(path));
    limitDocumentRoots();
    for (const std::string& path : paths.folders) {
        if (former.contains(path)) continue;
        addInterest(path);
        // Whoever is interested has seen it, and it may have gone before it could be watched.
        if (!find(path)) pending.notice(path, system.now());
    }
    for (const std::string& path : former) {
        FolderNode* folder = paths.folders.contains(path) ? nullptr : find(path);
        if (!folder) continue;
        folder->isOfInterest = std::ranges::any_of(roots, [&](const Root& root) { return root.node == folder; });
        polledFolders.erase(folder);
    }
}

void TreeWatcher::limitDocumentRoots() {
    const std::unordered_set<std::string_view> documentRoots(interest.documentRootPaths.begin(),
                                                             interest.documentRootPaths.end());
    for (Root& root : roots) {
        const bool wasLimited = std::exchange(root.isDocumentRoot, documentRoots.contains(root.path));
        if (wasLimited && !root.isDocumentRoot && root.node) crawlUnlisted(root.node);
    }
}

void TreeWatcher::addInterest(const std::string& folderPath) {
    const FolderNode* known = find(folderPath);
    const bool wasListed = known && known->isListed;
    FolderNode* folder = findListed(folderPath);
    if (!folder) return;
    if (!wasListed) pending.notice(folderPath, system.now());
    if (folder->watch < 0 && system.canWatch() && folder->isListed) enqueue(urgent, folder, true);
    if (folder->isListed && needsPolling(folder) && !polledFolders.contains(folder)) poll(folder);
}

// There may be a root for each of many documents, and a look-up for each of them, so it goes up the path instead of
// through all roots.
FolderNode* TreeWatcher::topAbove(std::string_view path) const {
    for (std::string_view directoryPath = path;; directoryPath = folderPathAbove(directoryPath)) {
        const auto root = std::ranges::lower_bound(roots, directoryPath, {}, &Root::path);
        const bool isRoot = root != roots.end() && root->path == directoryPath;
        if (isRoot && root->node && !root->node->parent) return root->node;
        if (directoryPath == "/") return nullptr;
    }
}

FolderNode* TreeWatcher::find(std::string_view path) const {
    FolderNode* top = topAbove(path);
    return top ? descend(top, path) : nullptr;
}

FolderNode* TreeWatcher::descend(FolderNode* top, std::string_view path) const {
    FolderNode* folder = top;
    for (const std::string_view name : namesBetween(top->name, path)) {
        folder = tree.child(folder, name);
        if (!folder) return nullptr;
    }
    return folder;
}

// Also brings the way there under watch.
FolderNode* TreeWatcher::findListed(std::string_view path) {
    FolderNode* folder = topAbove(path);
    if (!folder) return nullptr;
    for (const std::string_view name : namesBetween(folder->name, path)) {
        folder = tree.child(folder, name);
        if (!folder) return nullptr;
        folder->isOfInterest = true;
        if (!folder->isListed) enter(folder, background);
    }
    return folder;
}

void TreeWatcher::attach(Root& root) {
    const auto identity = system.directoryAt(root.path);
    if (!identity) return;
    FolderNode* inner = findListed(root.path);
    if (inner && inner->isListed && inner->identity == *identity) {
        root.node = inner;
        crawlUnlisted(inner); // what the limit of a root around it may have left out
        return;
    }
    FolderNode* top = tree.addTop(root.path);
    top->isOfInterest = true;
    enter(top, background);
    if (!top->isListed) {
        kill(top);
        root.isAbsenceUntold = true; // should it have gone
        return;
    }
    root.node = top;
    if (paths.folders.contains(root.path)) pending.notice(root.path, system.now());
    adoptTopsWithin(top);
}

// Trees that were watched by themselves become part of the one around them.
void TreeWatcher::adoptTopsWithin(FolderNode* top) {
    for (const Root& root : roots) {
        if (!root.node || root.node->parent || !isBelow(root.path, top->name)) continue;
        FolderNode* parent = findListed(folderPathAbove(root.path));
        const std::string name = root.path.substr(root.path.rfind('/') + 1);
        FolderNode* unknown = parent ? tree.child(parent, name) : nullptr;
        // Where a link leads there, the tree stays by itself.
        if (!unknown || unknown->isListed || !root.node->isListed || isLost(root)) continue;
        discard(unknown);
        tree.adopt(root.node, parent, name);
        correct(root.node, standing(root.node, root.node->identity));
    }
}

void TreeWatcher::detach(Root& root) {
    FolderNode* node = std::exchange(root.node, nullptr);
    if (node && node->parent) return; // it is watched for the sake of a root above it
    // What was seen in it may be looked at still.
    if (std::ranges::any_of(paths.roots, [&](const std::string& path) { return isBelow(root.path, path); }))
        pending.noticeFoldersOfInterest(root.path, paths, system.now());
    if (!node) return;
    for (Root& other : roots) {
        if (!isBelow(other.path, root.path) || (other.node && !isWithin(other.node, node))) continue;
        if (other.node && currentPath(other.node) == other.path) {
            leave(other.node);
            tree.promote(other.node);
            if (other.node->mustCompareBelow) compareAll(other.node);
            continue;
        }
        // It may have been seen, and what would have been told of it is not told any more.
        other.isAbsenceUntold = true;
        pending.touchWindow(system.now());
    }
    abandon(node);
}

// Nothing is to be told of the tree any more.
void TreeWatcher::abandon(FolderNode* top) {
    for (FolderNode* folder : pending.forgetWithin(top)) kill(folder);
    kill(top);
    pending.forgetWithin(top);
}

bool TreeWatcher::isLost(const Root& root) {
    const auto identity = system.directoryAt(root.path);
    if (!root.node) return identity || root.isAbsenceUntold;
    if (root.node->hasGone || identity != root.node->identity) return true;
    return root.node->parent && currentPath(root.node) != root.path;
}

void TreeWatcher::checkRoots(WatchTime now) {
    for (Root& root : roots) {
        if (isLost(root)) loseRoot(root, now);
    }
    if (std::exchange(mustWatchAncestors, false)) watchAncestors();
}

// Nothing can be said about what was in the root but that it is to be looked at.
void TreeWatcher::loseRoot(Root& root, WatchTime now) {
    pending.rootChanged(root.path, now);
    FolderNode* node = std::exchange(root.node, nullptr);
    if (node && !node->parent) abandon(node);
    pending.noticeFoldersOfInterest(root.path, paths, now);
    root.watchedFolders = 0;
    root.isAbsenceUntold = false;
    attach(root);
    mustWatchAncestors = true;
    for (const std::string& path : paths.folders) {
        if (isPathWithin(path, root.path)) addInterest(path);
    }
}

void TreeWatcher::watchAncestors() {
    std::unordered_map<std::string, int> former = std::exchange(watchByAncestor, {});
    for (const Root& root : roots) {
        for (std::string path = root.path; path != "/";) {
            path = std::string(folderPathAbove(path));
            if (watchByAncestor.contains(path)) break;
            const AddedWatch added = system.watchAncestor(path);
            if (added.watch >= 0) watchByAncestor.emplace(path, added.watch);
        }
    }
    std::unordered_set<int> needed;
    for (const auto& [path, watch] : watchByAncestor) needed.insert(watch);
    for (const auto& [path, watch] : former) {
        if (!needed.contains(watch) && !foldersByWatch.contains(watch)) system.unwatch(watch);
    }
}
