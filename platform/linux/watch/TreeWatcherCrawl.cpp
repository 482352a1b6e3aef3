#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

#include "platform/linux/TemporaryName.h"
#include "platform/linux/watch/TreeWatcher.h"

namespace {

constexpr std::size_t documentRootLimit = 1000; // folders
constexpr std::size_t openAncestorLimit = 16;
constexpr std::uint8_t patience = 3;     // closings that an event may take that explains what was found
constexpr std::size_t longestName = 256; // with the slash before it

bool isWantOfWatches(int error) {
    return error == ENOSPC || error == ENOMEM;
}

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
    if (!hasWork()) openAncestors.clear();
}

void TreeWatcher::take(std::deque<CrawlStep>& queue) {
    const CrawlStep step = queue.front();
    queue.pop_front();
    FolderNode* folder = tree.node(step.folderNumber);
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
    OpenedFolder opened = open(folder, path);
    if (!opened.folder) {
        handleRefusal(folder, opened.error);
        return;
    }
    const FolderStatus status = opened.folder->status();
    if (status.coverage == EventCoverage::pointless && folder->parent) return;
    // Where its parent is thought to be, another folder may be by now, with one of the same name.
    const Standing found = folder->parent ? standing(folder, status.identity) : Standing::listed;
    if (found == Standing::elsewhere) return retryLater(folder);
    folder->identity = status.identity;
    folder->isRemote = status.coverage == EventCoverage::ownChangesOnly;
    const int refusal = watch(folder, path, *opened.folder);
    if (refusal != 0 && !folder->isOfInterest && folder->parent) return;
    // The watch may have gone to another folder that came here in this moment.
    if (isAbsence(refusal) || (!isDistant(path) && system.directoryAt(path) != folder->identity)) {
        disown(folder);
        if (folder->parent) retryLater(folder);
        return;
    }
    correct(folder, found);
    folder->failures = 0;
    folder->settledStamp = status.isSettled && !folder->isRemote ? status.stamp : 0;
    folder->isListed = true;
    list(folder, *opened.folder, queueForChildren);
    keepOpen(folder, path, std::move(opened.folder));
    if (!paths.folders.contains(path)) return;
    // Somebody may have looked before it was watched.
    folder->isOfInterest = true;
    pending.notice(path, system.now());
}

// The kernel takes no path that is too long, and to go there from the top, step by step, takes the longer the farther
// down it is. As a rule the parent was entered just before.
OpenedFolder TreeWatcher::open(const FolderNode* folder, const std::string& path) {
    if (isDistant(path)) {
        const auto parent = std::ranges::find(openAncestors, folder->parent, &OpenAncestor::folder);
        if (parent != openAncestors.end()) return parent->contents->openFolder(folder->name);
    }
    return system.openFolder(path, linksAt(folder), OpenFor::listing);
}

// Only until the next event or change of the tree, so that a folder and what is kept open of it are the same.
void TreeWatcher::keepOpen(const FolderNode* folder, const std::string& path, std::unique_ptr<OpenFolder> contents) {
    if (!folder->firstChild || path.size() + longestName < system.longestPath()) return;
    std::erase_if(openAncestors, [&](const OpenAncestor& each) { return each.folder == folder; });
    if (openAncestors.size() == openAncestorLimit) openAncestors.erase(openAncestors.begin());
    openAncestors.push_back({folder, std::move(contents)});
}

// By its path, which costs less, or else by the open folder.
AddedWatch TreeWatcher::addWatch(const FolderNode* folder, const std::string& path, const OpenFolder& contents) {
    return isDistant(path) ? contents.watch() : system.watchFolder(path, linksAt(folder));
}

// Returns the error, or 0.
int TreeWatcher::watch(FolderNode* folder, const std::string& path, const OpenFolder& contents) {
    if (!system.canWatch()) return EOPNOTSUPP;
    AddedWatch added = addWatch(folder, path, contents);
    if (added.watch < 0 && isWantOfWatches(added.error)) {
        isOutOfWatches = true;
        if ((folder->isOfInterest || !folder->parent) && takeBackWatch()) added = addWatch(folder, path, contents);
    }
    if (added.watch < 0) {
        if (isWantOfWatches(added.error)) watchOnceThereIsOne(folder);
        return added.error;
    }
    own(folder, added.watch);
    return 0;
}

void TreeWatcher::watchOnceThereIsOne(FolderNode* folder) {
    if (folder->timesQueued == 0) enqueue(background, folder, true);
}

// The kernel has one watch for each folder, however many paths lead to it, and however many folders of the tree are
// thought to be there: of one that was found at a new place before the event about its move was read, there are two for
// a while.
void TreeWatcher::own(FolderNode* folder, int watch) {
    if (folder->watch == watch) return;
    disown(folder);
    folder->watch = watch;
    folder->hasGone = false;
    foldersByWatch.enter(folder);
}

void TreeWatcher::disown(FolderNode* folder) {
    if (folder->watch < 0) return;
    foldersByWatch.remove(folder);
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
        if (item.isDirectory() && !tree.child(folder, name))
            enqueue(queueForChildren, addFolder(folder, name, folder->firstListing), false);
    });
    folder->snapshot.finishAppending();
}

// One that may not be read is tried again when its attributes change, or those of a folder above it.
void TreeWatcher::handleRefusal(FolderNode* folder, int error) {
    if (error != EACCES) return retryLater(folder);
    hasBeenRefused = true;
}

// It is not where it should be. Either an event on its way tells why, or what is known of its parent is wrong.
void TreeWatcher::retryLater(FolderNode* folder) {
    compareAtNextClosing(folder);
    if (folder->failures < patience) {
        ++folder->failures;
        pending.touchWindow(system.now());
    } else if (folder->parent) {
        doubt(folder->parent); // and once more with every check of the roots
    }
}

void TreeWatcher::compareAtNextClosing(FolderNode* folder) {
    waitingForClosing.push_back(folder);
    ++folder->timesQueued;
}

// Has the folder compared with the disk.
void TreeWatcher::doubt(FolderNode* folder) {
    if (folder->isDead) return;
    folder->settledStamp = 0;
    enqueue(urgent, folder, true);
}

void TreeWatcher::compareAll(FolderNode* top) {
    if (top->isDead) return;
    top->mustCompareBelow = true;
    enqueue(urgent, top, true);
}

// Brings the picture of a folder up to date without any event to go by.
void TreeWatcher::compare(FolderNode* folder) {
    const std::string path = currentPath(folder);
    OpenedFolder opened = open(folder, path);
    const bool isHere = opened.folder && opened.folder->status().identity == folder->identity;
    if (!isHere && !folder->parent) {
        // What the check of the roots finds there may look like the one that is lost.
        if (opened.folder || isAbsence(opened.error)) folder->hasGone = true;
        pending.touchWindow(system.now());
        return;
    }
    if (!isHere) {
        if (!opened.folder) return handleRefusal(folder, opened.error);
        const Standing found = standing(folder, opened.folder->status().identity);
        // No event tells of what is mounted over it, and a listing may not tell what was unmounted from what is there.
        const bool isAnother =
            found == Standing::mounted || (found != Standing::elsewhere && folder->failures == patience);
        return isAnother ? replace(folder) : retryLater(folder);
    }
    if (!keepWatch(folder, path, *opened.folder)) return;
    folder->failures = 0;
    const bool goesOn = folder->mustCompareBelow;
    folder->mustCompareBelow = false;
    const FolderStatus status = opened.folder->status();
    if (folder->settledStamp == 0 || folder->settledStamp != status.stamp) {
        compareEntries(folder, *opened.folder);
        folder->settledStamp = status.isSettled && !folder->isRemote ? status.stamp : 0;
    }
    keepOpen(folder, path, std::move(opened.folder));
    if (!goesOn) return;
    for (FolderNode* child = folder->firstChild; child; child = child->nextSibling) {
        child->mustCompareBelow = true;
        enqueue(urgent, child, true);
    }
}

// Makes sure that the folder is watched. False when it turns out to be a new one that got the number of the old.
bool TreeWatcher::keepWatch(FolderNode* folder, const std::string& path, const OpenFolder& contents) {
    const bool wasWatched = folder->watch >= 0 || folder->hasGone;
    const int former = folder->watch;
    const int refusal = watch(folder, path, contents);
    if (isWantOfWatches(refusal)) disown(folder); // what needs a new watch has none
    const bool isSame = folder->watch >= 0 ? folder->watch == former : !isWantOfWatches(refusal);
    if (wasWatched && !isSame) {
        replace(folder);
        return false;
    }
    // What came and went while nobody told of it may have been seen.
    if (refusal == 0 && !wasWatched && paths.folders.contains(path)) pending.notice(path, system.now());
    return true;
}

void TreeWatcher::compareEntries(FolderNode* folder, const OpenFolder& contents) {
    std::map<std::string, ItemIdentity> present;
    const bool isComplete = contents.forEachEntry([&](std::string_view name, ItemIdentity item) {
        if (!isTemporarySaveName(name)) present.emplace(name, item);
    });
    if (!isComplete) return;
    compareMissing(folder, present);
    for (const auto& [name, item] : present) comparePresent({folder, name}, item, contents);
}

void TreeWatcher::compareMissing(FolderNode* folder, const std::map<std::string, ItemIdentity>& present) {
    const WatchTime now = system.now();
    std::vector<std::string> gone;
    folder->snapshot.forEach([&](std::string_view name, ItemIdentity) {
        if (!present.contains(std::string(name))) gone.emplace_back(name);
    });
    for (const std::string& name : gone) {
        if (!pending.isTouched({folder, name})) pending.vanished({folder, name}, now);
    }
    std::vector<FolderNode*> goneFolders;
    for (FolderNode* child = folder->firstChild; child; child = child->nextSibling) {
        const auto found = present.find(child->name);
        if (found == present.end() || !found->second.isDirectory()) goneFolders.push_back(child);
    }
    for (FolderNode* child : goneFolders) kill(child);
}

void TreeWatcher::comparePresent(const NameKey& key, ItemIdentity listed, const OpenFolder& contents) {
    const bool isTouched = pending.isTouched(key);
    const ItemIdentity known = key.folder->snapshot.find(key.name);
    if (!listed.isDirectory()) {
        if (!isTouched && known != listed) pending.created(key, PendingChanges::IsBeingWritten::no, system.now());
        return;
    }
    FolderNode* const child = tree.child(key.folder, key.name);
    const auto isRight = [&](ItemIdentity item) {
        return (isTouched || known == item) && (!child->isListed || child->identity.inode == item.inode);
    };
    // Of a mounted folder the listing shows another number.
    if (child && (isRight(listed) || isRight(contents.item(key.name)))) return;
    if (child) kill(child);
    pending.created(key, PendingChanges::IsBeingWritten::no, system.now());
    enqueue(urgent, addFolder(key.folder, key.name, FirstListing::news), false);
}

// Another folder is where this one was.
void TreeWatcher::replace(FolderNode* folder) {
    if (!folder->isAttached) return retryLater(folder); // it has left, and nobody knows yet where it is
    const WatchTime now = system.now();
    if (!folder->parent) {
        folder->hasGone = true; // as the check of the roots will find
        pending.touchWindow(now);
        return;
    }
    const NameKey key{folder->parent, folder->name};
    kill(folder);
    pending.created(key, PendingChanges::IsBeingWritten::no, now);
    enqueue(urgent, addFolder(key.folder, key.name, FirstListing::news), false);
}

// What was reported in it, and is not found elsewhere, has to be told as gone.
void TreeWatcher::kill(FolderNode* folder) {
    if (folder->isDead) return;
    const WatchTime now = system.now();
    const auto forget = [&](const NameKey& place) {
        if (place.folder && !place.folder->isDead) pending.forgotten(place, now);
    };
    forget(reportedKey(folder));
    FolderTree::forSubtree(folder, [&](const FolderNode* each) {
        if (each->reportedPlace) forget(*each->reportedPlace);
    });
    discard(folder);
}

void TreeWatcher::discard(FolderNode* folder) {
    openAncestors.clear();
    if (folder->parent) folder->parent->settledStamp = 0; // a comparison has to look whether that was right
    tree.kill(folder, [&](FolderNode* each) {
        disown(each);
        polledFolders.erase(each);
        for (Root& root : roots) {
            if (root.node != each) continue;
            root.node = nullptr;
            root.isAbsenceUntold = true;
        }
    });
}

FolderNode* TreeWatcher::addFolder(FolderNode* parent, std::string_view name, FirstListing listing) {
    FolderNode* folder = tree.addChild(parent, name);
    folder->firstListing = listing;
    return folder;
}

void TreeWatcher::enqueue(std::deque<CrawlStep>& queue, FolderNode* folder, bool isComparison) {
    constexpr std::uint32_t allBits = 0x7FFFFFFF; // there is no room for as many folders
    queue.push_back({.folderNumber = folder->number & allBits, .isComparison = isComparison});
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
    tree.forEachAttached([&](FolderNode* folder) {
        if (folder->watch < 0 || !folder->parent || folder->isOfInterest) return;
        if (!last || folder->watch > last->watch) last = folder;
    });
    if (!last) return false;
    for (FolderNode* folder : foldersByWatch.all(last->watch)) {
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
