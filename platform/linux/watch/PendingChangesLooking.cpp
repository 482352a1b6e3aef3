#include <algorithm>
#include <utility>

#include "platform/linux/watch/PendingChanges.h"

namespace {

bool isGone(const FolderNode* folder) {
    while (folder && !folder->isDead) folder = folder->parent;
    return folder != nullptr;
}

bool isWithinAny(const FolderNode* folder, const std::unordered_set<const FolderNode*>& folders) {
    while (folder && !folders.contains(folder)) folder = folder->parent;
    return folder != nullptr;
}

std::size_t depthOf(const FolderNode* folder) {
    std::size_t depth = 0;
    for (; folder->parent; folder = folder->parent) ++depth;
    return depth;
}

} // namespace

PendingChanges::TargetBySource PendingChanges::targetsBySource() const {
    TargetBySource targets;
    for (const auto& [key, change] : changes) {
        if (change.occupant == Occupant::mover) targets.emplace(change.cameFrom, key);
    }
    return targets;
}

// What is not settled yet, unless its folder is gone: there it cannot come back. Only files are carried, so that what
// is told of folders is complete at every time and their paths are the same for everybody.
PendingChanges::KeySet PendingChanges::carriedKeys(const TargetBySource& targets, WatchTime now) const {
    KeySet carried;
    if (unsettled.empty() || now - *unsettled.rbegin() >= policy.hold) return carried;
    for (const auto& [key, change] : changes) {
        if (change.unsettledSince && now - *change.unsettledSince < policy.hold && !carried.contains(key))
            addWithRenames(key, targets, carried);
    }
    return carried;
}

// Adds the name and those that renames link to it, as a rename is told whole or not at all. False when that cannot be
// waited for.
bool PendingChanges::addWithRenames(const NameKey& key, const TargetBySource& targets, KeySet& keys) const {
    if (targets.empty()) {
        if (isGone(key.folder) || concernsFolder(key)) return false;
        keys.insert(key);
        return true;
    }
    KeySet linked{key};
    std::vector<NameKey> waiting{key};
    while (!waiting.empty()) {
        const NameKey each = std::move(waiting.back());
        waiting.pop_back();
        if (isGone(each.folder) || concernsFolder(each)) return false;
        const auto reach = [&](const NameKey& other) {
            if (linked.insert(other).second) waiting.push_back(other);
        };
        if (const auto target = targets.find(each); target != targets.end()) reach(target->second);
        if (const auto change = changes.find(each);
            change != changes.end() && change->second.occupant == Occupant::mover)
            reach(change->second.cameFrom);
    }
    keys.merge(linked);
    return true;
}

bool PendingChanges::concernsFolder(const NameKey& key) const {
    return key.folder->snapshot.find(key.name).isDirectory() || tree.child(key.folder, key.name);
}

// Asks the disk about all names but the carried ones. Those in folders that cannot be found now have to wait: the event
// that tells where they are is on its way.
std::vector<PendingChanges::Found> PendingChanges::lookAtAll(const LookUp& lookUp, WatchTime now) {
    const TargetBySource targets = targetsBySource();
    std::unordered_set<const FolderNode*> unreachable;
    std::vector<Found> all;
    KeySet waiting;
    for (Look& look : looks(carriedKeys(targets, now))) {
        if (lookAt(look, lookUp, unreachable)) {
            all.insert(all.end(), look.founds.begin(), look.founds.end());
            continue;
        }
        for (const Found& found : look.founds) addWithRenames(*found.key, targets, waiting);
        last = now;
    }
    if (!waiting.empty()) std::erase_if(all, [&](const Found& found) { return waiting.contains(*found.key); });
    std::ranges::sort(all, {}, [](const Found& found) { return found.change->order; });
    return all;
}

// Upper folders come first: what is found in a folder counts only if the folder was still there.
std::vector<PendingChanges::Look> PendingChanges::looks(const KeySet& carried) {
    std::unordered_map<FolderNode*, std::size_t> places;
    std::vector<Look> result;
    for (auto& [key, change] : changes) {
        if (carried.contains(key)) continue;
        const auto [place, isNew] = places.emplace(key.folder, result.size());
        if (isNew) result.push_back({.folder = key.folder, .depth = depthOf(key.folder)});
        result[place->second].founds.push_back({&key, &change, key.folder->snapshot.find(key.name), {}});
    }
    std::ranges::sort(result, {}, &Look::depth);
    return result;
}

// False when the folder is elsewhere, which is then true of all below it.
bool PendingChanges::lookAt(Look& look, const LookUp& lookUp, std::unordered_set<const FolderNode*>& unreachable) {
    FolderNode* const folder = look.folder;
    if (isGone(folder)) {
        misplaced.erase(folder);
        return true;
    }
    std::vector<std::string> names;
    names.reserve(look.founds.size());
    for (const Found& found : look.founds) names.push_back(found.key->name);
    const bool isWithinUnreachable = !unreachable.empty() && isWithinAny(folder, unreachable);
    const auto items = isWithinUnreachable ? std::nullopt : lookUp(*folder, names);
    if (!items) {
        ++misplaced[folder];
        unreachable.insert(folder);
        return false;
    }
    misplaced.erase(folder);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const ItemIdentity item = look.founds[i].is = (*items)[i];
        const FolderNode* child = tree.child(folder, names[i]);
        const bool isRight = child ? item.isDirectory() && (!child->isListed || child->identity.inode == item.inode)
                                   : !item.isDirectory();
        if (isRight) continue;
        doubtful.insert(folder);
        if (child) unreachable.insert(child);
    }
    return true;
}
