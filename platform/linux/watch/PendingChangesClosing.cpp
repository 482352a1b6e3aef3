#include <algorithm>
#include <utility>

#include "platform/linux/watch/PendingChanges.h"

namespace {

constexpr std::chrono::seconds temporaryAge{10};

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
    const KeySet carried = carriedKeys(targetsBySource(), now);
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
    const std::vector<Found> all = lookAtAll(lookUp, now);
    Report report = reportOf(all, paths, now);

    EventStreamBatch batch;
    for (const std::string& root : changedRoots) batch.push_back({.path = root, .flags = EventStreamFlag::rootChanged});
    tellDepartures(report, batch, paths, now);
    tellCreations(report, batch, paths, now);
    std::ranges::stable_sort(report.modifications, {}, &ReportedItem::order);
    for (const auto& [key, item, order, flag] : report.modifications)
        batch.push_back(notification(reportedPath(*key), flag, item));
    for (const std::string& path : notices) batch.push_back({.path = path});

    settle(all, now);
    return batch;
}

PendingChanges::Report PendingChanges::reportOf(const std::vector<Found>& all, const ReportingPaths& paths,
                                                WatchTime now) {
    ItemByName present;
    for (const Found& found : all) {
        if (mayMatterToOthers(found)) present.emplace(*found.key, found.is);
    }
    KnownFolders knownFolders(present);
    Report report;
    KeySet renamedAway;
    std::vector<NetEffect> effects;
    for (const Found& found : all) {
        effects.push_back(netEffect(historyOf(found, present, knownFolders, paths, now)));
        if (!effects.back().isRenamedHere) continue;
        renamedAway.insert(found.change->cameFrom);
        report.departures.push_back({found.change->cameFrom, *found.key, found.is, found.change->order, {}});
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto& [key, change, was, is] = all[i];
        const NetEffect& effect = effects[i];
        const ReportedItem item{key, is, change->order, 0};
        if (effect.isRemoved && !renamedAway.contains(*key) && knownFolders.wasKnown(key->folder))
            report.departures.push_back({*key, {}, was, change->order, {}});
        if (effect.isCreated && is.isDirectory()) expectNews(*key);
        if (!knownFolders.willBeKnown(key->folder)) continue;
        if (effect.isCreated) report.creations.push_back(item);
        if (effect.isModified) report.addModification(item, EventStreamFlag::itemModified);
        if (effect.hasNewAttributes) report.addModification(item, EventStreamFlag::itemInodeMetaMod);
        // Attributes alone do not make anybody look again.
        const bool isAsItWas = effect == NetEffect{.hasNewAttributes = effect.hasNewAttributes};
        if (isAsItWas && change->hasBeenAnother) noticeStaleLooks(*key, paths, now);
    }
    return report;
}

// Whoever looked there meanwhile, or at what is below, may have seen what is no longer true, and nothing else would
// tell him.
void PendingChanges::noticeStaleLooks(const NameKey& key, const ReportingPaths& paths, WatchTime now) {
    if (paths.folders.empty()) return;
    for (const std::string& folderPath : {reportedPath(key.folder), currentPath(key.folder)}) {
        if (paths.folders.contains(folderPath)) notices.insert(folderPath);
        noticeFoldersOfInterest(joinedPath(folderPath, key.name), paths, now);
    }
}

void PendingChanges::tellDepartures(Report& report, EventStreamBatch& batch, const ReportingPaths& paths,
                                    WatchTime now) {
    std::unordered_map<NameKey, FolderNode*, NameKeyHash> movedBySource;
    for (FolderNode* folder : tree.displacedFolders()) {
        if (folder->reportedPlace) movedBySource.emplace(*folder->reportedPlace, folder);
    }
    report.departures = orderedDepartures(std::move(report.departures));
    for (const Departure& departure : report.departures) {
        std::string oldPath = reportedPath(departure.source);
        // From now on everybody knows the folder under its new name, or not at all until it is told as created.
        const auto moved = movedBySource.find(departure.source);
        if (moved != movedBySource.end()) moved->second->reportedPlace.reset();
        const ItemIdentity item = departure.item;
        if (departure.target) {
            batch.push_back(notification(std::move(oldPath), EventStreamFlag::itemRenamed, item));
            // Whatever else moves has arrived by now, or is told as created where it is.
            std::string newPath = currentPath(*departure.target);
            if (item.isDirectory()) noticeFoldersOfInterest(newPath, paths, now); // somebody has been faster
            batch.push_back(notification(std::move(newPath), EventStreamFlag::itemRenamed, item));
            continue;
        }
        if (item.isDirectory()) noticeFoldersOfInterest(oldPath, paths, now);
        batch.push_back({.path = std::move(oldPath), .flags = EventStreamFlag::itemRemoved | typeFlag(item.type)});
        if (departure.recreated) report.creations.push_back({&*departure.recreated, item, departure.order, 0});
    }
    tree.forgetReportedPlaces(); // those left are told as created, now or when they are found
}

// Parents come first.
void PendingChanges::tellCreations(Report& report, EventStreamBatch& batch, const ReportingPaths& paths,
                                   WatchTime now) {
    std::ranges::stable_sort(report.creations, {}, &ReportedItem::order);
    std::vector<std::pair<std::ptrdiff_t, EventStreamNotification>> byDepth;
    byDepth.reserve(report.creations.size());
    std::unordered_map<const FolderNode*, std::string> folderPaths; // many files may come to one folder
    for (const auto& [key, item, order, flag] : report.creations) {
        const auto [folderPath, isFirst] = folderPaths.try_emplace(key->folder);
        if (isFirst) folderPath->second = reportedPath(key->folder);
        std::string path = joinedPath(folderPath->second, key->name);
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

NameHistory PendingChanges::historyOf(const Found& found, const ItemByName& present, KnownFolders& knownFolders,
                                      const ReportingPaths& paths, WatchTime now) const {
    const auto& [key, change, was, is] = found;
    NameHistory history{.was = was,
                        .is = is,
                        .origin = change->occupant == Occupant::unchanged && !change->isForgotten
                                      ? ItemOrigin::sameName
                                      : ItemOrigin::newcomer,
                        .isWritten = change->isWritten,
                        .hasNewAttributes = change->hasNewAttributes};
    if (change->occupant != Occupant::mover) return history;
    const NameKey& source = change->cameFrom;
    if (!isRenameOf(source, found, present, knownFolders)) return history;
    if (paths.roots.size() > 1 && rootOf(reportedPath(source), paths.roots) != rootOf(currentPath(*key), paths.roots))
        return history;
    history.origin = ItemOrigin::movedFromFree;
    history.isNewSave = change->isNewSave;
    const bool isOpenDocument = paths.documents.contains(reportedPath(source));
    history.isFreshTemporary = !isOpenDocument && isFreshTemporary(source, is, now);
    return history;
}

// What becomes of another name, or of what is in a folder, can depend on what has gone from this one and on folders. A
// file that stands where no folder was decides nothing but its own fate.
bool PendingChanges::mayMatterToOthers(const Found& found) {
    return !found.is || found.is.isDirectory() || found.was.isDirectory();
}

// Whether the item that was last reported at the source is what stands at the name now.
bool PendingChanges::isRenameOf(const NameKey& source, const Found& found, const ItemByName& present,
                                KnownFolders& knownFolders) const {
    const auto atSource = present.find(source);
    if (atSource == present.end() || atSource->second) return false;
    const ItemIdentity was = source.folder->snapshot.find(source.name);
    if (was != found.is && !(found.change->isNewSave && was.type == found.is.type)) return false;
    if (!knownFolders.wasKnown(source.folder) || !knownFolders.willBeKnown(found.key->folder)) return false;
    if (!found.is.isDirectory()) return true;
    // What is known of its contents must be its own.
    const FolderNode* folder = tree.child(found.key->folder, found.key->name);
    return folder && folder->isListed && folder->identity.inode == found.is.inode && folder->reportedPlace &&
           *folder->reportedPlace == source;
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

// Whoever hears of a folder looks into it at once. What is found there later is news to him.
void PendingChanges::expectNews(const NameKey& key) {
    FolderNode* const folder = tree.child(key.folder, key.name);
    if (!folder) return;
    FolderTree::forSubtree(folder, [](FolderNode* each) {
        if (!each->isListed) each->firstListing = FirstListing::news;
    });
}

bool PendingChanges::isFreshTemporary(const NameKey& key, ItemIdentity item, WatchTime now) const {
    const auto [begin, end] = birthByInode.equal_range(item.inode);
    return std::any_of(begin, end, [&](const auto& entry) {
        return entry.second->name == key.name && now - entry.second->time < temporaryAge;
    });
}
