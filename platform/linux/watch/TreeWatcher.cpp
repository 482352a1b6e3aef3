#include "platform/linux/watch/TreeWatcher.h"

#include <sys/inotify.h>

#include <algorithm>
#include <cerrno>
#include <unordered_set>
#include <utility>

#include "platform/linux/TemporaryName.h"

namespace {

constexpr std::chrono::seconds checkInterval{5};

} // namespace

TreeWatcher::TreeWatcher(WatchSystem& watchSystem, DeliveryPolicy deliveryPolicy)
    : system(watchSystem), policy(deliveryPolicy), pending(tree, deliveryPolicy), mounts(watchSystem.mountPoints()) {}

void TreeWatcher::handleBlock(std::string_view block, WatchTime readAt) {
    for (const KernelRecord& record : kernelRecords(block)) handleRecord(record, readAt);
}

std::optional<WatchTime> TreeWatcher::nextDeadline() const {
    if (roots.empty()) return std::nullopt;
    WatchTime deadline = std::min(nextCheck, nextPoll);
    if (const auto closing = pending.closing()) deadline = std::min(deadline, *closing);
    return deadline;
}

bool TreeWatcher::isOverdue() const {
    const auto deadline = nextDeadline();
    return deadline && system.now() >= *deadline + policy.cap;
}

EventStreamBatch TreeWatcher::advance() {
    const WatchTime now = system.now();
    if (now >= nextPoll) {
        pollFoldersOfInterest();
        nextPoll = now + pollInterval();
    }
    if (now >= nextCheck) {
        nextCheck = now + checkInterval;
        isOutOfWatches = false; // some may have come free
        if (std::ranges::any_of(roots, [&](const Root& root) { return isLost(root); })) pending.touchWindow(now);
        if (!waitingForClosing.empty()) pending.touchWindow(now);
        if (std::exchange(mustLookAtAll, false)) {
            for (const std::string& path : paths.folders) pending.notice(path, now);
        } else if (looksForMounts == 0) {
            recentMounts.clear();
        }
    }
    if (!isClosingDue(now)) return {};
    pending.findFilesBeingWritten([&](const NameKey& key) { return system.itemAt(currentPath(key)); });
    if (!isClosingDue(now)) return {};
    // Whoever is told of a new folder looks through it at once. By then it should be under watch with all below it.
    if (!urgent.empty() && now < *pending.closing() + policy.cap) return {};
    return closeWindow(now);
}

bool TreeWatcher::isClosingDue(WatchTime now) const {
    const auto closing = pending.closing();
    return closing && now >= *closing;
}

TreeWatcher::Statistics TreeWatcher::statistics() const {
    Statistics result{.folders = tree.size(),
                      .watches = foldersByWatch.size(),
                      .waiting = urgent.size() + background.size(),
                      .pendingNames = pending.size()};
    tree.forEachAttached([&](const FolderNode* folder) { result.snapshotBytes += folder->snapshot.memoryUse(); });
    return result;
}

void TreeWatcher::handleRecord(const KernelRecord& record, WatchTime now) {
    openAncestors.clear();
    if (record.mask & IN_Q_OVERFLOW) {
        handleOverflow(now);
        return;
    }
    constexpr std::uint32_t aboutItself = IN_MOVE_SELF | IN_DELETE_SELF | IN_IGNORED | IN_UNMOUNT;
    const auto isAncestor = [&](const auto& entry) { return entry.second == record.watch; };
    if ((record.mask & aboutItself) && std::ranges::any_of(watchByAncestor, isAncestor)) {
        mustWatchAncestors = true;
        pending.touchWindow(now);
        for (const std::string& path : paths.folders) pending.notice(path, now);
    }
    for (FolderNode* folder : foldersByWatch.all(record.watch)) {
        if (record.name.empty())
            handleFolderRecord(folder, record, now);
        else
            handleNameRecord(folder, record, now);
    }
}

void TreeWatcher::handleFolderRecord(FolderNode* folder, const KernelRecord& record, WatchTime now) {
    const bool isRoot = std::ranges::any_of(roots, [&](const Root& root) { return root.node == folder; });
    if (isRoot && (record.mask & (IN_MOVE_SELF | IN_DELETE_SELF | IN_IGNORED))) {
        pending.touchWindow(now);
        // It may come back at once, and whoever looked meanwhile has seen something else.
        pending.noticeFoldersOfInterest(currentPath(folder), paths, now);
    }
    if (isRoot && (record.mask & IN_ATTRIB)) handleNewRights(folder, now);
    if (record.mask & IN_UNMOUNT) pending.touchWindow(now);
    if (record.mask & IN_IGNORED) {
        foldersByWatch.remove(folder);
        folder->watch = -1;
        folder->hasGone = true;
        // As a rule the parent tells next that the folder is gone. If not, it has to be watched again.
        if (!folder->isDead) retryLater(folder);
    }
}

void TreeWatcher::handleNameRecord(FolderNode* folder, const KernelRecord& record, WatchTime now) {
    if (folder->isDead || isTemporarySaveName(record.name)) return;
    const NameKey key{folder, std::string(record.name)};
    if (record.mask & IN_ATTRIB) {
        pending.attributesChanged(key, now);
        FolderNode* child = record.isDirectory() ? tree.child(folder, key.name) : nullptr;
        if (child) handleNewRights(child, now);
    }
    if (record.mask & IN_MODIFY) pending.modified(key, now);
    if (record.mask & IN_CLOSE_WRITE) pending.closedAfterWriting(key, now);
    if (record.mask & IN_CREATE) handleCreation(key, record, now);
    if (record.mask & IN_DELETE) {
        if (FolderNode* child = record.isDirectory() ? tree.child(folder, key.name) : nullptr) kill(child);
        pending.vanished(key, now);
    }
    if (record.mask & IN_MOVED_FROM) {
        FolderNode* child = record.isDirectory() ? tree.child(folder, key.name) : nullptr;
        if (child) leave(child);
        pending.movedAway(key, record.cookie, child, now);
    }
    if (record.mask & IN_MOVED_TO) handleArrival(key, record, now);
}

// It may have become readable, and what is below it with it.
void TreeWatcher::handleNewRights(FolderNode* folder, WatchTime now) {
    if (hasBeenRefused)
        compareAll(folder);
    else if (!folder->isListed && folder->timesQueued == 0)
        enqueue(urgent, folder, false);
    pending.noticeFoldersOfInterest(currentPath(folder), paths, now);
}

void TreeWatcher::handleCreation(const NameKey& key, const KernelRecord& record, WatchTime now) {
    using IsBeingWritten = PendingChanges::IsBeingWritten;
    // Whether somebody has a new file open, nobody tells; as a rule it is closed before the disk would have to be
    // asked.
    pending.created(key, record.isDirectory() ? IsBeingWritten::no : IsBeingWritten::ifFile, now);
    if (!record.isDirectory()) return;
    if (!tree.child(key.folder, key.name)) enter(addFolder(key.folder, key.name, FirstListing::news), urgent);
}

// What was to be compared with a folder above, which may not even be found, is so still.
void TreeWatcher::leave(FolderNode* folder) {
    for (const FolderNode* above = folder->parent; above; above = above->parent)
        folder->mustCompareBelow |= above->mustCompareBelow;
    tree.detach(folder);
}

void TreeWatcher::handleArrival(const NameKey& key, const KernelRecord& record, WatchTime now) {
    if (FolderNode* replaced = tree.child(key.folder, key.name)) kill(replaced);
    FolderNode* const arrival = pending.movedHere(key, record.cookie, now);
    if (!record.isDirectory()) return;
    if (!arrival || arrival->isDead) {
        // Whoever hears of a folder that arrives as a whole looks into it anyway, so it must be told as one.
        pending.forgotten(key, now);
        enter(addFolder(key.folder, key.name, FirstListing::known), urgent);
        return;
    }
    if (isWithin(key.folder, arrival)) {
        // Events about other moves have been lost, and what is where will be found out.
        FolderNode* const top = topOf(arrival);
        kill(arrival);
        compareAll(top);
        return;
    }
    tree.place(arrival, key.folder, key.name);
    arrival->failures = 0;
    lookForRecentMountsSoon(now);
    // It may come from where a comparison has not been to where it has.
    if (isComparingAll || arrival->mustCompareBelow) compareAll(arrival);
    // It, or what is in it, may have moved on before it could be watched.
    crawlUnlisted(arrival);
}

// The kernel has dropped events. Whatever differs from the snapshots is looked for, in all folders.
void TreeWatcher::handleOverflow(WatchTime now) {
    for (FolderNode* folder : pending.forgetMoves()) kill(folder);
    pending.touchWindow(now);
    mustWatchAncestors = true;
    for (const std::string& path : paths.folders) pending.notice(path, now);
    if (isComparingAll) {
        mustCompareAllAgain = true;
        return;
    }
    for (const Root& root : roots) {
        if (root.node && !root.node->parent) compareAll(root.node);
    }
    isComparingAll = !urgent.empty(); // without a root nothing would ever end it
}

EventStreamBatch TreeWatcher::closeWindow(WatchTime now) {
    openAncestors.clear();
    for (FolderNode* folder : pending.takeDeparted(now)) kill(folder);
    checkRoots(now);
    lookForRecentMounts(now);
    std::unordered_set<const FolderNode*> compared; // once, though a poll may have come to it as well
    for (FolderNode* folder : std::exchange(waitingForClosing, {})) {
        --folder->timesQueued;
        if (!folder->isDead && compared.insert(folder).second) enqueue(urgent, folder, true);
    }
    const auto lookUp = [&](const FolderNode& folder, const std::vector<std::string>& names) {
        return itemsIn(folder, names);
    };
    EventStreamBatch batch = pending.close(now, lookUp, paths);
    for (FolderNode* folder : pending.takeMisplaced()) doubt(folder->parent ? folder->parent : folder);
    // As a rule the event that explains it comes before the next closing.
    for (FolderNode* folder : pending.takeDoubtful()) {
        folder->settledStamp = 0;
        compareAtNextClosing(folder);
        pending.touchWindow(now);
    }
    tree.release(pending.foldersInUse());
    return batch;
}

std::optional<std::vector<ItemIdentity>> TreeWatcher::itemsIn(const FolderNode& folder,
                                                              const std::vector<std::string>& names) {
    std::vector<ItemIdentity> items;
    items.reserve(names.size());
    const OpenedFolder opened = system.openFolder(currentPath(&folder), linksAt(&folder), OpenFor::looking);
    if (opened.folder) {
        if (opened.folder->status().identity != folder.identity) return std::nullopt;
        for (const std::string& name : names) items.push_back(opened.folder->item(name));
        return items;
    }
    if (isAbsence(opened.error)) return std::nullopt;
    // Nobody may look into the folder now, so nothing can be said about it.
    hasBeenRefused = true;
    for (const std::string& name : names) items.push_back(folder.snapshot.find(name));
    return items;
}
