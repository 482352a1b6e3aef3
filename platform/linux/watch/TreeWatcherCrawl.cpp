#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

#include "platform/linux/TemporaryName.h"
#include "platform/linux/watch/TreeWatcher.h"

namespace {

constexpr std::size_t documentRootLimit = 1000; // folders

} // namespace

void TreeWatcher::crawl(std::chrono::nanoseconds budget) {
    const WatchTime end = system.now() + budget;
    while (hasWork() && system.now() < end) {
        take(urgent.empty() ? background : urgent);
        if (isComparingAll && urgent.empty()) {
            isComparingAll = false;
            if (std::exchange(mustCompareAllAgain, false)) handleOverflow(system.now());
        }
    }
}

void TreeWatcher::take(std::deque<CrawlStep>& queue) {
    const CrawlStep step = queue.front();
    queue.pop_front();
    FolderNode* folder = step.folder;
    --folder->timesQueued;
    if (folder->isDead) return;
    if (folder->isListed) {
        if (step.isComparison || (folder->watch < 0 && system.canWatch())) compare(folder);
        return;
    }
    Root* limit = limitingRoot(folder);
    if (limit && ++limit->watchedFolders > documentRootLimit) return;
    enter(folder, queue);
}

// Watch, then list: what happens in between is told by both, and the net effect knows it once.
void TreeWatcher::enter(FolderNode* folder, std::deque<CrawlStep>& queueForChildren) {
    const std::string path = currentPath(folder);
    const OpenedFolder opened = system.openFolder(path, linksAt(folder), OpenFor::listing);
    if (!opened.folder) {
        if (opened.error != ENOENT) return;
        retries.push_back(folder);
        ++folder->timesQueued;
        return;
    }
    const FolderStatus status = opened.folder->status();
    if (status.coverage == EventCoverage::pointless && folder->parent) return;
    folder->identity = status.identity;
    folder->isRemote = status.coverage == EventCoverage::ownChangesOnly;
    if (FolderNode* parent = folder->parent; parent && parent->identity.device != status.identity.device) {
        // A listing tells the number of the folder that lies below the mounted one.
        if (parent->snapshot.find(folder->name))
            parent->snapshot.set(folder->name, {status.identity.inode, ItemType::directory});
    }
    if (!watch(folder, path) && !folder->isOfInterest && folder->parent) {
        if (isOutOfWatches) enqueue(background, folder, false);
        return;
    }
    folder->settledStamp = status.isSettled && !folder->isRemote ? status.stamp : 0;
    folder->isListed = true;
    list(folder, *opened.folder, queueForChildren);
}

bool TreeWatcher::watch(FolderNode* folder, const std::string& path) {
    if (!system.canWatch()) return false;
    AddedWatch added = system.watchFolder(path, linksAt(folder));
    if (added.watch < 0 && (added.error == ENOSPC || added.error == ENOMEM)) {
        isOutOfWatches = true;
        if ((folder->isOfInterest || !folder->parent) && takeBackWatch())
            added = system.watchFolder(path, linksAt(folder));
    }
    if (added.watch < 0) return false;
    own(folder, added.watch);
    return true;
}

// The kernel has one watch for each folder, however many paths lead to it. If a folder is found at another place than
// it had, it has been away and come back.
void TreeWatcher::own(FolderNode* folder, int watch) {
    std::vector<FolderNode*> stale;
    const auto [begin, end] = foldersByWatch.equal_range(watch);
    for (auto each = begin; each != end; ++each) {
        if (each->second != folder && system.directoryAt(currentPath(each->second)) != folder->identity)
            stale.push_back(each->second);
    }
    disown(folder);
    folder->watch = watch;
    folder->hasLostWatch = false;
    foldersByWatch.emplace(watch, folder);
    for (FolderNode* other : stale) disown(other);
}

void TreeWatcher::disown(FolderNode* folder) {
    if (folder->watch < 0) return;
    const auto [begin, end] = foldersByWatch.equal_range(folder->watch);
    const auto own = std::find_if(begin, end, [&](const auto& entry) { return entry.second == folder; });
    if (own != end) foldersByWatch.erase(own);
    const int watch = std::exchange(folder->watch, -1);
    const bool isAncestor =
        std::ranges::any_of(watchByAncestor, [&](const auto& entry) { return entry.second == watch; });
    if (!foldersByWatch.contains(watch) && !isAncestor) system.unwatch(watch);
}

void TreeWatcher::list(FolderNode* folder, const OpenFolder& contents, std::deque<CrawlStep>& queueForChildren) {
    const WatchTime now = system.now();
    const bool isNews = folder->firstListing == FirstListing::news;
    contents.forEachEntry([&](std::string_view name, ItemIdentity item) {
        if (isTemporarySaveName(name)) return;
        if (isNews)
            pending.created({folder, std::string(name)}, PendingChanges::IsBeingWritten::no, now);
        else
            folder->snapshot.append(name, item);
        if (item.isDirectory()) enqueue(queueForChildren, addFolder(folder, name, folder->firstListing), false);
    });
    folder->snapshot.finishAppending();
}

// Brings the picture of a folder up to date without any event to go by.
void TreeWatcher::compare(FolderNode* folder) {
    const std::string path = currentPath(folder);
    const OpenedFolder opened = system.openFolder(path, linksAt(folder), OpenFor::listing);
    if (!opened.folder) {
        if (!folder->parent) pending.touchWindow(system.now()); // the check of the roots will find it lost
        return;                                                 // else the parent shows what became of it
    }
    const FolderStatus status = opened.folder->status();
    if (status.identity != folder->identity) {
        replace(folder);
        return;
    }
    if (folder->watch < 0) watch(folder, path);
    if (folder->settledStamp != 0 && folder->settledStamp == status.stamp) {
        if (isComparingAll) {
            for (FolderNode* child = folder->firstChild; child; child = child->nextSibling)
                enqueue(urgent, child, true);
        }
        return;
    }
    compareEntries(folder, *opened.folder);
    folder->settledStamp = status.isSettled && !folder->isRemote ? status.stamp : 0;
}

void TreeWatcher::compareEntries(FolderNode* folder, const OpenFolder& contents) {
    const WatchTime now = system.now();
    std::map<std::string, ItemIdentity> present;
    const bool isComplete = contents.forEachEntry([&](std::string_view name, ItemIdentity item) {
        if (!isTemporarySaveName(name)) present.emplace(name, item);
    });
    if (!isComplete) return;

    std::vector<std::string> gone;
    folder->snapshot.forEach([&](std::string_view name, ItemIdentity) {
        if (!present.contains(std::string(name))) gone.emplace_back(name);
    });
    for (const std::string& name : gone) pending.vanished({folder, name}, now);
    std::vector<FolderNode*> goneFolders;
    for (FolderNode* child = folder->firstChild; child; child = child->nextSibling) {
        const auto found = present.find(child->name);
        if (found == present.end() || !found->second.isDirectory()) goneFolders.push_back(child);
    }
    for (FolderNode* child : goneFolders) kill(child);

    for (const auto& [name, item] : present) {
        const NameKey key{folder, name};
        FolderNode* child = item.isDirectory() ? tree.child(folder, name) : nullptr;
        // A mounted folder has another number than the listing shows. Whether it is the same is seen when it is opened.
        const bool isSame = folder->snapshot.find(name) == item ||
                            (child && child->isListed && child->identity.device != folder->identity.device);
        if (!isSame || pending.isTouched(key)) pending.created(key, PendingChanges::IsBeingWritten::no, now);
        if (!item.isDirectory()) continue;
        if (child && !isSame) kill(child);
        if (!child || !isSame)
            enqueue(urgent, addFolder(folder, name, FirstListing::news), false);
        else if (isComparingAll)
            enqueue(urgent, child, true);
    }
}

// Another folder is where this one was.
void TreeWatcher::replace(FolderNode* folder) {
    const WatchTime now = system.now();
    if (!folder->parent) {
        pending.touchWindow(now);
        return;
    }
    const NameKey key{folder->parent, folder->name};
    kill(folder);
    pending.created(key, PendingChanges::IsBeingWritten::no, now);
    enqueue(urgent, addFolder(key.folder, key.name, FirstListing::news), false);
}

void TreeWatcher::kill(FolderNode* folder) {
    tree.kill(folder, [&](FolderNode* each) {
        disown(each);
        stampsByFolder.erase(each);
    });
}

FolderNode* TreeWatcher::addFolder(FolderNode* parent, std::string_view name, FirstListing listing) {
    FolderNode* folder = tree.addChild(parent, name);
    folder->firstListing = listing;
    return folder;
}

void TreeWatcher::enqueue(std::deque<CrawlStep>& queue, FolderNode* folder, bool isComparison) {
    queue.push_back({folder, isComparison});
    ++folder->timesQueued;
}

void TreeWatcher::crawlUnlisted(FolderNode* folder) {
    FolderTree::forSubtree(folder, [&](FolderNode* each) {
        if (!each->isListed && each->timesQueued == 0) enqueue(urgent, each, false);
    });
}

// Gives up the watch that was taken last for a folder that nobody looks at.
bool TreeWatcher::takeBackWatch() {
    FolderNode* last = nullptr;
    for (const auto& [watch, folder] : foldersByWatch) {
        if (folder->parent && !folder->isOfInterest && (!last || watch > last->watch)) last = folder;
    }
    if (!last) return false;
    const int watch = last->watch;
    const auto [begin, end] = foldersByWatch.equal_range(watch);
    std::vector<FolderNode*> folders;
    for (auto each = begin; each != end; ++each) folders.push_back(each->second);
    for (FolderNode* folder : folders) {
        disown(folder);
        enqueue(background, folder, true);
    }
    return true;
}

// The root that is there only for its documents and limits what is watched below it.
TreeWatcher::Root* TreeWatcher::limitingRoot(FolderNode* folder) {
    if (folder->isOfInterest || std::ranges::none_of(roots, &Root::isDocumentRoot)) return nullptr;
    Root* limit = nullptr;
    for (Root& root : roots) {
        if (!root.node || !isWithin(folder, root.node)) continue;
        if (!root.isDocumentRoot) return nullptr;
        limit = &root;
    }
    return limit;
}
