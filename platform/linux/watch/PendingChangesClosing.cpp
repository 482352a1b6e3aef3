#include <algorithm>
#include <utility>

#include "platform/linux/watch/PendingChanges.h"

namespace {

constexpr std::chrono::seconds temporaryAge{10};

bool isGone(const FolderNode* folder) {
    while (folder && !folder->isDead) folder = folder->parent;
    return folder != nullptr;
}

std::uint32_t typeFlag(ItemType type) {
    switch (type) {
        case ItemType::directory:
            return EventStreamFlag::itemIsDir;
        case ItemType::symbolicLink:
            return EventStreamFlag::itemIsSymlink;
        default:
            return EventStreamFlag::itemIsFile;
    }
}

// The root to which whoever reads the notifications will count the path.
const std::string* rootOf(const std::string& path, const std::vector<std::string>& roots) {
    const std::string* best = nullptr;
    for (const std::string& root : roots) {
        const bool contains = path == root || path.starts_with(joinedPath(root, ""));
        if (contains && (!best || root.size() > best->size())) best = &root;
    }
    return best;
}

EventStreamNotification notification(std::string path, std::uint32_t flag, ItemIdentity item) {
    return {.path = std::move(path), .flags = flag | typeFlag(item.type), .fileID = item.inode};
}

} // namespace

std::vector<FolderNode*> PendingChanges::takeDeparted(WatchTime now) {
    std::vector<FolderNode*> folders;
    if (moving.empty()) return folders;
    const KeySet carried = carriedKeys(now);
    for (auto& [cookie, items] : moving) {
        std::erase_if(items, [&](const MovingItem& item) {
            if (carried.contains(item.left)) return false;
            if (item.folder) folders.push_back(item.folder);
            return true;
        });
    }
    std::erase_if(moving, [](const auto& entry) { return entry.second.empty(); });
    return folders;
}

EventStreamBatch PendingChanges::close(WatchTime now, const LookUp& lookUp, const ReportingPaths& paths) {
    forgetOldBirths(now);
    KeySet carried = carriedKeys(now);
    const std::vector<Found> all = lookAtAll(carried, lookUp, now);
    Report report = reportOf(all, paths, now);

    EventStreamBatch batch;
    for (const std::string& root : changedRoots) batch.push_back({.path = root, .flags = EventStreamFlag::rootChanged});
    tellDepartures(report, batch, paths, now);
    tellCreations(report, batch, paths, now);
    std::ranges::stable_sort(report.modifications, {}, &ReportedItem::order);
    for (const auto& [key, item, order, flag] : report.modifications)
        batch.push_back(notification(reportedPath(key), flag, item));
    for (const std::string& path : notices) batch.push_back({.path = path});

    settle(all, now);
    return batch;
}

PendingChanges::Report PendingChanges::reportOf(const std::vector<Found>& all, const ReportingPaths& paths,
                                                WatchTime now) {
    IdentityByKey present;
    for (const Found& found : all) present.emplace(*found.key, found.is);
    Report report;
    KeySet renamedAway;
    std::vector<NetEffect> effects;
    for (const Found& found : all) {
        effects.push_back(netEffect(historyOf(found, present, paths, now)));
        if (!effects.back().isRenamedHere) continue;
        renamedAway.insert(found.change->cameFrom);
        report.departures.push_back({found.change->cameFrom, *found.key, found.is, found.change->order, {}});
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto& [key, change, is] = all[i];
        const NetEffect& effect = effects[i];
        const ReportedItem item{*key, is, change->order, 0};
        if (effect.isRemoved && !renamedAway.contains(*key))
            report.departures.push_back({*key, {}, key->folder->snapshot.find(key->name), change->order, {}});
        if (effect.isCreated) report.creations.push_back(item);
        if (effect.isModified) report.addModification(item, EventStreamFlag::itemModified);
        if (effect.hasNewAttributes) report.addModification(item, EventStreamFlag::itemInodeMetaMod);
        if (effect == NetEffect{} && change->hasBeenAnother) noticeStaleListing(key->folder, paths);
        FolderNode* folder = tree.child(key->folder, key->name);
        if (folder && folder->reportedPlace) report.movedFolders.push_back(folder);
    }
    return report;
}

// Whoever listed the folder meanwhile may have seen what is no longer true, and nothing else would tell him.
void PendingChanges::noticeStaleListing(const FolderNode* folder, const ReportingPaths& paths) {
    if (paths.folders.empty()) return;
    std::string path = reportedPath(folder);
    if (paths.folders.contains(path)) notices.insert(std::move(path));
}

void PendingChanges::tellDepartures(Report& report, EventStreamBatch& batch, const ReportingPaths& paths,
                                    WatchTime now) {
    std::unordered_map<NameKey, FolderNode*, NameKeyHash> movedBySource;
    for (FolderNode* folder : report.movedFolders) movedBySource.emplace(*folder->reportedPlace, folder);
    for (Departure& departure : orderedDepartures(std::move(report.departures))) {
        std::string oldPath = reportedPath(departure.source);
        // From now on everybody knows the folder under its new name, or not at all until it is told as created.
        const auto moved = movedBySource.find(departure.source);
        if (moved != movedBySource.end()) moved->second->reportedPlace.reset();
        const ItemIdentity item = departure.item;
        if (departure.target) {
            batch.push_back(notification(std::move(oldPath), EventStreamFlag::itemRenamed, item));
            batch.push_back(notification(reportedPath(*departure.target), EventStreamFlag::itemRenamed, item));
            continue;
        }
        if (item.isDirectory()) noticeFoldersOfInterest(oldPath, paths, now);
        batch.push_back({.path = std::move(oldPath), .flags = EventStreamFlag::itemRemoved | typeFlag(item.type)});
        if (departure.recreated) report.creations.push_back({*departure.recreated, item, departure.order, 0});
    }
    for (FolderNode* folder : report.movedFolders) folder->reportedPlace.reset(); // those left are told as created
}

// Parents come first.
void PendingChanges::tellCreations(Report& report, EventStreamBatch& batch, const ReportingPaths& paths,
                                   WatchTime now) {
    std::ranges::stable_sort(report.creations, {}, &ReportedItem::order);
    std::vector<std::pair<std::ptrdiff_t, EventStreamNotification>> byDepth;
    for (const auto& [key, item, order, flag] : report.creations) {
        std::string path = reportedPath(key);
        if (item.isDirectory()) noticeFoldersOfInterest(path, paths, now);
        const auto depth = std::ranges::count(path, '/');
        byDepth.emplace_back(depth, notification(std::move(path), EventStreamFlag::itemCreated, item));
    }
    std::ranges::stable_sort(byDepth, {}, [](const auto& entry) { return entry.first; });
    for (auto& [depth, created] : byDepth) batch.push_back(std::move(created));
}

void PendingChanges::forgetOldBirths(WatchTime now) {
    while (!births.empty() && now - births.front().time >= temporaryAge) {
        const auto [begin, end] = birthByInode.equal_range(births.front().inode);
        birthByInode.erase(
            std::find_if(begin, end, [&](const auto& entry) { return entry.second == &births.front(); }));
        births.pop_front();
    }
}

// What is not settled yet, unless its folder is gone: there it cannot come back.
PendingChanges::KeySet PendingChanges::carriedKeys(WatchTime now) const {
    KeySet carried;
    if (unsettled.empty() || now - *unsettled.rbegin() >= policy.hold) return carried;
    KeySet hopeless;
    for (const auto& [key, change] : changes) {
        if (isGone(key.folder))
            hopeless.insert(key);
        else if (change.unsettledSince && now - *change.unsettledSince < policy.hold)
            carried.insert(key);
    }
    closeOverLinks(hopeless);
    closeOverLinks(carried);
    std::erase_if(carried, [&](const NameKey& key) { return hopeless.contains(key); });
    carryWithFolders(carried);
    return carried;
}

// A rename is told whole or not at all.
void PendingChanges::closeOverLinks(KeySet& keys) const {
    if (keys.empty()) return;
    std::unordered_map<NameKey, const NameKey*, NameKeyHash> targetBySource;
    for (const auto& [key, change] : changes) {
        if (change.occupant == Occupant::mover) targetBySource.emplace(change.cameFrom, &key);
    }
    if (targetBySource.empty()) return;
    std::vector<NameKey> waiting(keys.begin(), keys.end());
    while (!waiting.empty()) {
        const NameKey key = std::move(waiting.back());
        waiting.pop_back();
        const auto reach = [&](const NameKey& linked) {
            if (keys.insert(linked).second) waiting.push_back(linked);
        };
        if (const auto target = targetBySource.find(key); target != targetBySource.end()) reach(*target->second);
        if (const auto change = changes.find(key);
            change != changes.end() && change->second.occupant == Occupant::mover)
            reach(change->second.cameFrom);
    }
}

// What happens in a folder whose own rename is not told yet cannot be told either, as nobody knows the folder's path.
void PendingChanges::carryWithFolders(KeySet& carried) const {
    const auto isInCarriedFolder = [&](const NameKey& key) {
        for (const FolderNode* folder = key.folder; folder && folder->parent; folder = folder->parent) {
            if (folder->reportedPlace && carried.contains({folder->parent, folder->name})) return true;
        }
        return false;
    };
    const bool carriesFolder = std::ranges::any_of(carried, [&](const NameKey& key) {
        const FolderNode* folder = tree.child(key.folder, key.name);
        return folder && folder->reportedPlace;
    });
    if (!carriesFolder) return;
    for (std::size_t size = 0; size != carried.size();) {
        size = carried.size();
        for (const auto& [key, change] : changes) {
            if (isInCarriedFolder(key)) carried.insert(key);
        }
        closeOverLinks(carried);
    }
}

// Asks the disk about all names but the carried ones; those in folders that cannot be found join the carried.
std::vector<PendingChanges::Found> PendingChanges::lookAtAll(KeySet& carried, const LookUp& lookUp, WatchTime now) {
    std::unordered_map<FolderNode*, std::vector<Found>> byFolder;
    for (auto& [key, change] : changes) {
        if (!carried.contains(key)) byFolder[key.folder].push_back({&key, &change, {}});
    }
    KeySet unreachable;
    std::vector<Found> all;
    for (auto& [folder, founds] : byFolder) {
        if (!isGone(folder)) {
            std::vector<std::string> names;
            names.reserve(founds.size());
            for (const Found& found : founds) names.push_back(found.key->name);
            const auto items = lookUp(*folder, names);
            if (!items) {
                ++misplaced[folder];
                for (const Found& found : founds) unreachable.insert(*found.key);
                continue;
            }
            for (std::size_t i = 0; i < founds.size(); ++i) founds[i].is = (*items)[i];
        }
        misplaced.erase(folder);
        all.insert(all.end(), founds.begin(), founds.end());
    }
    if (!unreachable.empty()) {
        closeOverLinks(unreachable);
        carryWithFolders(unreachable);
        std::erase_if(all, [&](const Found& found) { return unreachable.contains(*found.key); });
        last = now;
    }
    std::ranges::sort(all, {}, [](const Found& found) { return found.change->order; });
    return all;
}

NameHistory PendingChanges::historyOf(const Found& found, const IdentityByKey& present, const ReportingPaths& paths,
                                      WatchTime now) const {
    const auto& [key, change, is] = found;
    NameHistory history{.was = key->folder->snapshot.find(key->name),
                        .is = is,
                        .origin = change->occupant == Occupant::unchanged ? ItemOrigin::sameName : ItemOrigin::newcomer,
                        .isWritten = change->isWritten,
                        .hasNewAttributes = change->hasNewAttributes};
    if (change->occupant != Occupant::mover) return history;
    const NameKey& source = change->cameFrom;
    const auto atSource = present.find(source);
    if (atSource == present.end() || atSource->second || source.folder->snapshot.find(source.name) != is)
        return history;
    if (paths.roots.size() > 1 && rootOf(reportedPath(source), paths.roots) != rootOf(currentPath(*key), paths.roots))
        return history;
    history.origin = ItemOrigin::movedFromFree;
    const bool isOpenDocument = paths.documents.contains(reportedPath(source));
    history.isFreshTemporary = !isOpenDocument && isFreshTemporary(source, is, now);
    return history;
}

// What has been looked at is now known to everybody.
void PendingChanges::settle(const std::vector<Found>& all, WatchTime now) {
    for (const Found& found : all) {
        const NameKey key = *found.key;
        Change& change = *found.change;
        const bool isNewFile = change.occupant == Occupant::newcomer && found.is.type == ItemType::file;
        if (isNewFile && change.born != WatchTime{} && now - change.born < temporaryAge) {
            births.push_back({found.is.inode, key.name, change.born});
            birthByInode.emplace(found.is.inode, &births.back());
        }
        if (FolderNode* folder = tree.child(key.folder, key.name)) folder->reportedPlace.reset();
        key.folder->snapshot.set(key.name, found.is);
        setUnsettled(change, std::nullopt);
        changes.erase(key);
    }
    changedRoots.clear();
    notices.clear();
    if (changes.empty())
        first.reset();
    else
        first = now;
}

bool PendingChanges::isFreshTemporary(const NameKey& key, ItemIdentity item, WatchTime now) const {
    const auto [begin, end] = birthByInode.equal_range(item.inode);
    return std::any_of(begin, end, [&](const auto& entry) {
        return entry.second->name == key.name && now - entry.second->time < temporaryAge;
    });
}
