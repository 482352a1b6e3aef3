#include "platform/linux/watch/FolderTree.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace {

std::size_t mixedHash(const void* folder, std::string_view name) {
    return std::hash<std::string_view>{}(name) ^ (std::hash<const void*>{}(folder) >> 4) * 0x9E3779B97F4A7C15;
}

// Whoever has no parent is told apart by the name, a whole path.
std::uint64_t hashOf(const FolderNode* parent, std::string_view name) {
    std::uint64_t mixed = std::hash<std::string_view>{}(name) + (parent ? parent->number + 1 : 0) * 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ mixed >> 32) * 0xD6E8FEB86659FD93U;
    return mixed ^ mixed >> 32;
}

std::uint64_t hashOf(const FolderNode* folder) {
    return hashOf(folder->parent, folder->name);
}

// In the places that placeOf gives. The path of a top may be the root's, which ends with the slash that others need.
template <class PlaceOf>
std::string pathFromTop(const FolderNode* folder, const PlaceOf& placeOf) {
    const auto slashesBelow = [&](const FolderNode* above) {
        const auto place = placeOf(above);
        return std::size_t{place.first || !place.second.ends_with('/')};
    };
    std::size_t size = 0;
    for (auto place = placeOf(folder);; place = placeOf(place.first)) {
        size += place.second.size();
        if (!place.first) break;
        size += slashesBelow(place.first);
    }
    std::string path(size, '/');
    for (auto place = placeOf(folder);; place = placeOf(place.first)) {
        size -= place.second.size();
        place.second.copy(path.data() + size, place.second.size());
        if (!place.first) return path;
        size -= slashesBelow(place.first);
    }
}

using PlaceView = std::pair<const FolderNode*, std::string_view>;

PlaceView currentPlace(const FolderNode* folder) {
    return {folder->parent, folder->name};
}

PlaceView reportedPlace(const FolderNode* folder) {
    if (!folder->reportedPlace) return currentPlace(folder);
    return {folder->reportedPlace->folder, folder->reportedPlace->name};
}

// One of those around the folder that have a reported place, if that leads back to the folder.
FolderNode* displacedInReportedRing(const FolderNode* folder) {
    FolderNode* displaced = nullptr;
    for (FolderNode* each = folder->parent; each;
         each = each->reportedPlace ? each->reportedPlace->folder : each->parent) {
        if (each == folder) return displaced;
        if (each->reportedPlace) displaced = each;
    }
    return nullptr;
}

} // namespace

std::size_t NameKeyHash::operator()(const NameKey& key) const {
    return mixedHash(key.folder, key.name);
}

FolderNode* FolderTree::addTop(const std::string& path) {
    FolderNode* top = allocate();
    top->name = path;
    remember(top);
    return top;
}

FolderNode* FolderTree::addChild(FolderNode* parent, std::string_view name) {
    FolderNode* folder = allocate();
    attach(folder, parent, name);
    return folder;
}

FolderNode* FolderTree::child(const FolderNode* parent, std::string_view name) const {
    const auto found = nodesByName.find(hashOf(parent, name), [&](std::uint32_t number) {
        const FolderNode* each = node(number);
        return each->parent == parent && each->name == name;
    });
    return found ? node(*found) : nullptr;
}

void FolderTree::detach(FolderNode* folder) {
    if (!folder->isAttached) return;
    forget(folder);
    if (!folder->parent) return;
    if (folder->nextSibling) folder->nextSibling->previousSibling = folder->previousSibling;
    (folder->previousSibling ? folder->previousSibling->nextSibling : folder->parent->firstChild) = folder->nextSibling;
    folder->nextSibling = folder->previousSibling = nullptr;
}

void FolderTree::place(FolderNode* folder, FolderNode* parent, std::string_view name) {
    NameKey reported = reportedKey(folder);
    attach(folder, parent, name);
    // One that was seen here before its move was heard of is known here, and no longer where it was.
    const bool isKnownHere = parent->snapshot.find(name) == ItemIdentity{folder->identity.inode, ItemType::directory};
    const bool isElsewhere = !isKnownHere && (reported.folder != parent || reported.name != name);
    const bool wasReported = reported.folder && reported.folder->snapshot.find(reported.name).isDirectory();
    if (wasReported && isElsewhere) {
        folder->reportedPlace = std::make_unique<NameKey>(std::move(reported));
        displaced.push_back(folder);
        return;
    }
    folder->reportedPlace.reset();
    // What was reported in it, has left it and is now around it would be in a ring with it.
    while (FolderNode* moved = displacedInReportedRing(folder)) moved->reportedPlace.reset();
}

void FolderTree::forgetReportedPlaces() {
    for (FolderNode* folder : displaced) folder->reportedPlace.reset();
    displaced.clear();
}

void FolderTree::promote(FolderNode* folder) {
    std::string path = currentPath(folder);
    detach(folder);
    folder->parent = nullptr;
    folder->name = std::move(path);
    folder->reportedPlace.reset();
    remember(folder);
}

void FolderTree::adopt(FolderNode* top, FolderNode* parent, std::string_view name) {
    detach(top);
    attach(top, parent, name);
}

void FolderTree::release(const std::unordered_set<const FolderNode*>& inUse) {
    const auto firstUnused = std::partition(dead.begin(), dead.end(), [&](const FolderNode* folder) {
        return folder->timesQueued > 0 || inUse.contains(folder);
    });
    std::for_each(firstUnused, dead.end(), [this](FolderNode* folder) { free(folder); });
    dead.erase(firstUnused, dead.end());
}

FolderNode* FolderTree::allocate() {
    ++live;
    if (FolderNode* folder = firstFree) {
        firstFree = std::exchange(folder->nextSibling, nullptr);
        return folder;
    }
    if (allocated % nodesInBlock == 0) blocks.push_back(std::make_unique<FolderNode[]>(nodesInBlock));
    FolderNode* folder = node(allocated);
    folder->number = allocated++;
    return folder;
}

void FolderTree::free(FolderNode* folder) {
    *folder = FolderNode{.nextSibling = firstFree, .number = folder->number};
    firstFree = folder;
    if (--live > 0) return;
    firstFree = nullptr;
    allocated = 0;
    blocks.clear();
}

void FolderTree::attach(FolderNode* folder, FolderNode* parent, std::string_view name) {
    folder->parent = parent;
    folder->name = name;
    folder->nextSibling = parent->firstChild;
    if (parent->firstChild) parent->firstChild->previousSibling = folder;
    parent->firstChild = folder;
    remember(folder);
}

void FolderTree::remember(FolderNode* folder) {
    nodesByName.insert(hashOf(folder), folder->number, [this](std::uint32_t number) { return hashOf(node(number)); });
    folder->isAttached = true;
}

void FolderTree::forget(FolderNode* folder) {
    if (!folder->isAttached) return;
    nodesByName.erase(hashOf(folder), folder->number);
    folder->isAttached = false;
}

FolderNode* topOf(FolderNode* folder) {
    while (folder->parent) folder = folder->parent;
    return folder;
}

bool isWithin(const FolderNode* folder, const FolderNode* ancestor) {
    while (folder && folder != ancestor) folder = folder->parent;
    return folder != nullptr;
}

std::string joinedPath(std::string directoryPath, std::string_view name) {
    if (!directoryPath.ends_with('/')) directoryPath += '/';
    directoryPath += name;
    return directoryPath;
}

std::string_view folderPathAbove(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string_view::npos ? "/" : path.substr(0, slash);
}

bool isBelow(std::string_view path, std::string_view directoryPath) {
    if (path.size() <= directoryPath.size() || !path.starts_with(directoryPath)) return false;
    return directoryPath.ends_with('/') || path[directoryPath.size()] == '/';
}

bool isPathWithin(std::string_view path, std::string_view directoryPath) {
    return path == directoryPath || isBelow(path, directoryPath);
}

std::string currentPath(const FolderNode* folder) {
    return pathFromTop(folder, currentPlace);
}
std::string currentPath(const NameKey& key) {
    return joinedPath(currentPath(key.folder), key.name);
}

NameKey reportedKey(const FolderNode* folder) {
    if (folder->reportedPlace) return *folder->reportedPlace;
    return {folder->parent, folder->name};
}

std::string reportedPath(const FolderNode* folder) {
    return pathFromTop(folder, reportedPlace);
}
std::string reportedPath(const NameKey& key) {
    return joinedPath(reportedPath(key.folder), key.name);
}
