#include "platform/linux/watch/FolderTree.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace {

std::size_t mixedHash(const void* folder, std::string_view name) {
    return std::hash<std::string_view>{}(name) ^ (std::hash<const void*>{}(folder) >> 4) * 0x9E3779B97F4A7C15;
}

// Names from the folder up to the top, in the places that placeOf gives.
template <class PlaceOf>
std::string pathFromTop(const FolderNode* folder, const PlaceOf& placeOf) {
    std::vector<std::string_view> names;
    const FolderNode* each = folder;
    std::size_t size = 0;
    while (true) {
        const auto [parent, name] = placeOf(each);
        names.push_back(name);
        size += name.size() + 1;
        if (!parent) break;
        each = parent;
    }
    std::string path;
    path.reserve(size);
    path = names.back();
    for (auto name = names.rbegin() + 1; name != names.rend(); ++name) {
        if (!path.ends_with('/')) path += '/';
        path += *name;
    }
    return path;
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

std::size_t FolderTree::ChildHash::operator()(const ChildView& view) const {
    return mixedHash(view.parent, view.name);
}

FolderTree::~FolderTree() {
    for (FolderNode* folder : dead) destroy(folder);
    for (FolderNode* folder : children) destroy(folder);
}

FolderNode* FolderTree::addTop(const std::string& path) {
    auto* top = new FolderNode;
    top->name = path;
    children.insert(top);
    return top;
}

FolderNode* FolderTree::addChild(FolderNode* parent, std::string_view name) {
    auto* folder = new FolderNode;
    attach(folder, parent, name);
    return folder;
}

FolderNode* FolderTree::child(const FolderNode* parent, std::string_view name) const {
    const auto found = children.find(ChildView{parent, name});
    return found == children.end() ? nullptr : *found;
}

void FolderTree::detach(FolderNode* folder) {
    if (children.erase(folder) == 0) return; // it is detached already
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
    children.insert(folder);
}

void FolderTree::adopt(FolderNode* top, FolderNode* parent, std::string_view name) {
    detach(top);
    attach(top, parent, name);
}

void FolderTree::release(const std::unordered_set<const FolderNode*>& inUse) {
    const auto firstFree = std::partition(dead.begin(), dead.end(), [&](const FolderNode* folder) {
        return folder->timesQueued > 0 || inUse.contains(folder);
    });
    std::for_each(firstFree, dead.end(), destroy);
    dead.erase(firstFree, dead.end());
}

void FolderTree::attach(FolderNode* folder, FolderNode* parent, std::string_view name) {
    folder->parent = parent;
    folder->name = name;
    folder->nextSibling = parent->firstChild;
    if (parent->firstChild) parent->firstChild->previousSibling = folder;
    parent->firstChild = folder;
    children.insert(folder);
}

void FolderTree::destroy(FolderNode* folder) {
    delete folder;
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
    return directoryPath += name;
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
