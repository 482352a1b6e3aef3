#include "platform/linux/watch/PendingChanges.h"

#include <algorithm>
#include <utility>

void PendingChanges::attributesChanged(const NameKey& key, WatchTime now) {
    touch(key, now).hasNewAttributes = true;
}

void PendingChanges::modified(const NameKey& key, WatchTime now) {
    Change& change = touch(key, now);
    change.isWritten = true;
    if (!change.unsettledSince) setUnsettled(change, change.isWrittenIfFile ? change.born : now);
}

void PendingChanges::closedAfterWriting(const NameKey& key, WatchTime now) {
    Change& change = touch(key, now);
    // Closing alone counts, since writing through a mapping of the file leaves no other trace.
    change.isWritten = true;
    if (change.occupant != Occupant::nobody) setUnsettled(change, std::nullopt);
}

void PendingChanges::created(const NameKey& key, IsBeingWritten isBeingWritten, WatchTime now) {
    Change& change = touch(key, now);
    change.born = now;
    setOccupant(key, change, Occupant::newcomer, now);
    if (isBeingWritten == IsBeingWritten::no) return;
    change.isWrittenIfFile = true;
    ++writtenIfFile;
}

void PendingChanges::vanished(const NameKey& key, WatchTime now) {
    setOccupant(key, touch(key, now), Occupant::nobody, now);
}

void PendingChanges::movedAway(const NameKey& key, std::uint32_t cookie, FolderNode* folder, WatchTime now) {
    Change& change = touch(key, now);
    MovingItem item{.left = key, .occupant = change.occupant, .born = change.born, .folder = folder};
    if (change.occupant == Occupant::mover) {
        item.cameFrom = change.cameFrom;
        item.isNewSave = change.isNewSave;
    }
    const ItemIdentity was = key.folder->snapshot.find(key.name);
    // A file that was saved stays the same one, though the save gave it another number.
    const bool isNewSave = change.occupant == Occupant::newcomer && was && !was.isDirectory() && !folder;
    if ((change.occupant == Occupant::unchanged && was) || isNewSave) {
        item.occupant = Occupant::mover;
        item.cameFrom = key;
        item.isNewSave = isNewSave;
    }
    moving[cookie].push_back(std::move(item));
    setOccupant(key, change, Occupant::nobody, now);
}

FolderNode* PendingChanges::movedHere(const NameKey& key, std::uint32_t cookie, WatchTime now) {
    Change& change = touch(key, now);
    const auto found = moving.find(cookie);
    const auto isOfThisTree = [&](const MovingItem& item) { return topOf(item.left.folder) == topOf(key.folder); };
    const auto item =
        found == moving.end() ? std::vector<MovingItem>::iterator{} : std::ranges::find_if(found->second, isOfThisTree);
    if (found == moving.end() || item == found->second.end()) {
        change.born = {};
        setOccupant(key, change, Occupant::newcomer, now);
        return nullptr;
    }
    FolderNode* const arrival = item->folder;
    change.born = item->born;
    if (item->occupant != Occupant::mover) {
        setOccupant(key, change, Occupant::newcomer, now);
    } else if (item->cameFrom == key) {
        setOccupant(key, change, item->isNewSave ? Occupant::newcomer : Occupant::unchanged, now);
    } else {
        change.cameFrom = std::move(item->cameFrom);
        change.isNewSave = item->isNewSave;
        setOccupant(key, change, Occupant::mover, now);
    }
    found->second.erase(item);
    if (found->second.empty()) moving.erase(found);
    return arrival;
}

std::vector<FolderNode*> PendingChanges::forgetMoves() {
    std::vector<FolderNode*> folders;
    for (const auto& [cookie, items] : moving) {
        for (const MovingItem& item : items) {
            if (item.folder) folders.push_back(item.folder);
        }
    }
    moving.clear();
    return folders;
}

void PendingChanges::forgotten(const NameKey& key, WatchTime now) {
    touch(key, now).isForgotten = true;
}

void PendingChanges::rootChanged(const std::string& path, WatchTime now) {
    openWindow(now);
    if (std::ranges::find(changedRoots, path) == changedRoots.end()) changedRoots.push_back(path);
}

void PendingChanges::notice(const std::string& path, WatchTime now) {
    openWindow(now);
    notices.insert(path);
}

void PendingChanges::noticeFoldersOfInterest(const std::string& path, const ReportingPaths& paths, WatchTime now) {
    if (paths.folders.contains(path)) notice(path, now);
    const std::string below = joinedPath(path, "");
    for (auto each = paths.folders.lower_bound(below); each != paths.folders.end() && each->starts_with(below); ++each)
        notice(*each, now);
}

std::vector<FolderNode*> PendingChanges::forgetWithin(const FolderNode* folder) {
    for (auto& [key, change] : changes) {
        if (isWithin(key.folder, folder)) setUnsettled(change, std::nullopt);
    }
    std::erase_if(changes, [&](const auto& entry) { return isWithin(entry.first.folder, folder); });
    std::vector<FolderNode*> departed;
    for (auto& [cookie, items] : moving) {
        std::erase_if(items, [&](const MovingItem& item) {
            if (!isWithin(item.left.folder, folder)) return false;
            if (item.folder) departed.push_back(item.folder);
            return true;
        });
    }
    std::erase_if(moving, [](const auto& entry) { return entry.second.empty(); });
    std::erase_if(misplaced, [&](const auto& entry) { return isWithin(entry.first, folder); });
    for (auto& [key, change] : changes) {
        if (change.occupant == Occupant::mover && isWithin(change.cameFrom.folder, folder))
            change.occupant = Occupant::newcomer;
    }
    return departed;
}

void PendingChanges::touchWindow(WatchTime now) {
    openWindow(now);
}

std::optional<WatchTime> PendingChanges::closing() const {
    if (!first) return std::nullopt;
    DeliveryWindow window{.first = *first, .last = last};
    if (!unsettled.empty()) window.youngestUnsettled = *unsettled.rbegin();
    return window.closing(policy);
}

void PendingChanges::findFilesBeingWritten(const std::function<ItemIdentity(const NameKey&)>& lookUp) {
    if (writtenIfFile == 0) return;
    for (auto& [key, change] : changes) {
        if (!change.isWrittenIfFile) continue;
        const ItemIdentity item = lookUp(key);
        if (!item) continue; // it, or its folder, has gone on, and the event about that is to come
        setUnsettled(change, item.type == ItemType::file ? std::optional(change.born) : std::nullopt);
    }
}

std::vector<FolderNode*> PendingChanges::takeMisplaced() {
    constexpr int patience = 3;
    std::vector<FolderNode*> folders;
    for (auto each = misplaced.begin(); each != misplaced.end();) {
        if (each->second < patience) {
            ++each;
            continue;
        }
        folders.push_back(each->first);
        each = misplaced.erase(each);
    }
    return folders;
}

std::unordered_set<const FolderNode*> PendingChanges::foldersInUse() const {
    std::unordered_set<const FolderNode*> result;
    std::vector<const FolderNode*> waiting;
    for (const auto& [key, change] : changes) {
        waiting.push_back(key.folder);
        if (change.occupant == Occupant::mover) waiting.push_back(change.cameFrom.folder);
    }
    for (const auto& [cookie, items] : moving) {
        for (const MovingItem& item : items) {
            waiting.push_back(item.left.folder);
            if (item.occupant == Occupant::mover) waiting.push_back(item.cameFrom.folder);
            if (item.folder) waiting.push_back(item.folder);
        }
    }
    for (const auto& [folder, count] : misplaced) waiting.push_back(folder);
    for (const FolderNode* folder : doubtful) waiting.push_back(folder);
    while (!waiting.empty()) {
        const FolderNode* folder = waiting.back();
        waiting.pop_back();
        if (!folder || !result.insert(folder).second) continue;
        waiting.push_back(folder->parent);
    }
    return result;
}

PendingChanges::Change& PendingChanges::touch(const NameKey& key, WatchTime now) {
    openWindow(now);
    const auto [entry, isNew] = changes.try_emplace(key);
    if (isNew) entry->second.order = nextOrder++;
    return entry->second;
}

void PendingChanges::setOccupant(const NameKey& key, Change& change, Occupant occupant, WatchTime now) {
    change.occupant = occupant;
    change.hasBeenAnother = true;
    std::optional<WatchTime> since;
    if (occupant == Occupant::nobody) {
        const ItemIdentity was = key.folder->snapshot.find(key.name);
        // No program saves a folder, so there is no use in waiting for one to come back.
        if (was && !was.isDirectory()) since = now;
    }
    setUnsettled(change, since);
}

void PendingChanges::setUnsettled(Change& change, std::optional<WatchTime> since) {
    if (change.unsettledSince) unsettled.erase(unsettled.find(*change.unsettledSince));
    if (std::exchange(change.isWrittenIfFile, false)) --writtenIfFile;
    change.unsettledSince = since;
    if (since) unsettled.insert(*since);
}

void PendingChanges::openWindow(WatchTime now) {
    // An event may have been read before something else, found by a look at the disk since, was put down.
    last = first ? std::max(last, now) : now;
    if (!first) first = now;
}
