#include "tests/platform/watch/FakeDisk.h"

#include <sys/inotify.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

bool isAtOrBelow(const std::string& path, const std::string& directory) {
    return path == directory || path.starts_with(directory + "/");
}

} // namespace

class FakeFolder final : public OpenFolder {
public:
    FakeFolder(FakeDisk& fakeDisk, const FakeDisk::Item& item)
        : disk(fakeDisk),
          knownStatus{.identity = {item.device, item.inode},
                      .stamp = item.changed.time_since_epoch().count(),
                      .isSettled = disk.time - item.changed > std::chrono::seconds(2),
                      .coverage = disk.coverage},
          serial(item.serial) {}

    FolderStatus status() const override { return knownStatus; }
    ItemIdentity item(const std::string& name) const override {
        disk.act();
        const auto [among, path] = disk.placeOf(serial);
        return among ? FakeDisk::identityIn(*among, path + "/" + name) : ItemIdentity{};
    }
    std::optional<FileStamp> fileStamp(const std::string& name) const override {
        const ItemIdentity found = item(name);
        if (!found || found.isDirectory()) return std::nullopt;
        return FileStamp{found.inode, 0, static_cast<std::int64_t>(disk.files.at(found.inode).version)};
    }
    // Of a mount it tells the number that lies below.
    bool forEachEntry(const std::function<void(std::string_view, ItemIdentity)>& visit) const override {
        disk.act();
        ++disk.listings;
        const auto [among, path] = disk.placeOf(serial);
        if (!among) return true;
        for (const auto& [each, item] : FakeDisk::Items(*among)) {
            if (each == path || parentOf(each) != path) continue;
            const auto mount = disk.mounts.find(each);
            const bool isCovered = among == &disk.items && mount != disk.mounts.end();
            visit(nameOf(each), FakeDisk::identityIn(isCovered ? mount->second.covered : *among, each));
        }
        return true;
    }
    OpenedFolder openFolder(const std::string& name) const override {
        disk.act();
        const auto [among, path] = disk.placeOf(serial);
        return among ? disk.opened(*among, path + "/" + name) : OpenedFolder{.error = ENOENT};
    }
    AddedWatch watch() const override {
        disk.act();
        const auto [among, path] = disk.placeOf(serial);
        return among ? disk.watched(*among, path) : AddedWatch{.error = ENOENT};
    }

private:
    FakeDisk& disk;
    FolderStatus knownStatus;
    std::uint64_t serial;
};

FakeDisk::FakeDisk() {
    items["/"] = {.inode = 2, .type = ItemType::directory, .serial = 1};
}

void FakeDisk::makeDirectory(const std::string& path) {
    put(path, ItemType::directory);
    tell(path, IN_CREATE | IN_ISDIR);
}

void FakeDisk::createFile(const std::string& path) {
    put(path, ItemType::file);
    files[items.at(path).inode].isBeingWritten = true;
    tell(path, IN_CREATE);
}

void FakeDisk::writeFile(const std::string& path) {
    File& file = files.at(items.at(path).inode);
    ++file.version;
    file.isBeingWritten = true;
    tell(path, IN_MODIFY);
}

void FakeDisk::closeFile(const std::string& path) {
    if (exists(path)) files.at(items.at(path).inode).isBeingWritten = false;
    tell(path, IN_CLOSE_WRITE);
}

void FakeDisk::changeAttributes(const std::string& path) {
    tell(path, items.at(path).type == ItemType::directory ? IN_ATTRIB | IN_ISDIR : IN_ATTRIB);
}

void FakeDisk::link(const std::string& path, const std::string& newPath) {
    items[newPath] = items.at(path);
    ++files.at(items.at(path).inode).links;
    tell(newPath, IN_CREATE);
}

void FakeDisk::move(const std::string& path, const std::string& newPath) {
    const std::uint32_t kind = items.at(path).type == ItemType::directory ? IN_ISDIR : 0;
    const std::uint32_t cookie = ++lastCookie;
    tell(path, IN_MOVED_FROM | kind, cookie);
    if (exists(newPath)) endWatch(newPath);
    erase(newPath);
    relocate(path, newPath);
    tell(newPath, IN_MOVED_TO | kind, cookie);
    if (kind) tellItself(newPath, IN_MOVE_SELF);
}

void FakeDisk::exchange(const std::string& path, const std::string& otherPath) {
    const std::string aside = path + ".exchanged";
    relocate(path, aside);
    relocate(otherPath, path);
    relocate(aside, otherPath);
    const std::uint32_t kind = items.at(path).type == ItemType::directory ? IN_ISDIR : 0;
    const std::uint32_t otherKind = items.at(otherPath).type == ItemType::directory ? IN_ISDIR : 0;
    tell(path, IN_MOVED_FROM | otherKind, ++lastCookie);
    tell(otherPath, IN_MOVED_TO | otherKind, lastCookie);
    tell(otherPath, IN_MOVED_FROM | kind, ++lastCookie);
    tell(path, IN_MOVED_TO | kind, lastCookie);
}

void FakeDisk::remove(const std::string& path) {
    while (true) {
        const auto last = std::prev(items.lower_bound(path + "0")); // "0" follows "/"
        const std::string each = last->first;
        if (!isAtOrBelow(each, path)) return;
        const bool isDirectory = last->second.type == ItemType::directory;
        if (isDirectory) endWatch(each);
        erase(each);
        tell(each, isDirectory ? IN_DELETE | IN_ISDIR : IN_DELETE);
    }
}

void FakeDisk::arrive(const std::string& path) {
    erase(path);
    put(path, ItemType::file);
    tell(path, IN_MOVED_TO, ++lastCookie);
}

void FakeDisk::leave(const std::string& path) {
    const std::uint32_t kind = items.at(path).type == ItemType::directory ? IN_ISDIR : 0;
    tell(path, IN_MOVED_FROM | kind, ++lastCookie);
    for (const auto& [each, item] : takeFrom(items, path)) forget(item);
}

// Numbers of file systems that are gone are given to new ones, numbers of mounts are not.
void FakeDisk::mount(const std::string& path) {
    mounts[path] = {.number = ++lastMount, .covered = takeFrom(items, path)};
    put(path, ItemType::directory);
    const auto isTaken = [this](dev_t device) {
        return std::ranges::any_of(items, [&](const auto& each) { return each.second.device == device; });
    };
    dev_t device = 2;
    while (isTaken(device)) ++device;
    items[path].device = device;
}

void FakeDisk::unmount(const std::string& path) {
    for (const auto& [each, item] : takeFrom(items, path)) {
        if (const auto watch = watchByInode.extract(item.inode)) {
            record(watch.mapped(), IN_UNMOUNT, 0, "");
            record(watch.mapped(), IN_IGNORED, 0, "");
        }
        forget(item);
    }
    items.merge(mounts.extract(path).mapped().covered);
}

std::vector<std::string> FakeDisk::mountsWithin(const std::string& path) const {
    std::vector<std::string> paths;
    for (const auto& [each, mount] : mounts) {
        if (isAtOrBelow(each, path)) paths.push_back(each);
    }
    return paths;
}

std::vector<MountPoint> FakeDisk::mountPoints() {
    std::vector<MountPoint> points;
    for (const auto& [path, mount] : mounts) points.push_back({path, mount.number});
    return points;
}

std::string FakeDisk::takeBlock() {
    return std::exchange(block, {});
}

void FakeDisk::loseBlock() {
    block = overflowBlock();
}

bool FakeDisk::isHalfWritten(const std::string& path) const {
    const auto item = items.find(path);
    return item != items.end() && files.at(item->second.inode).isBeingWritten;
}

std::set<std::string> FakeDisk::paths() const {
    std::set<std::string> result;
    for (const auto& [path, item] : items) result.insert(path);
    return result;
}

std::string FakeDisk::stateOf(const std::string& path) const {
    const ItemIdentity item = peek(path);
    if (!item || item.isDirectory()) return {};
    return std::to_string(item.inode) + '.' + std::to_string(files.at(item.inode).version);
}

OpenedFolder FakeDisk::openFolder(const std::string& path, FollowLinks, OpenFor) {
    act();
    ++openingsByPath;
    return opened(items, path);
}

OpenedFolder FakeDisk::opened(const Items& among, const std::string& path) {
    const auto item = among.find(path);
    if (item == among.end()) return {.error = ENOENT};
    if (item->second.type != ItemType::directory) return {.error = ENOTDIR};
    if (brokenPaths.contains(path)) return {.error = EIO};
    return {.folder = std::make_unique<FakeFolder>(*this, item->second)};
}

std::optional<FileIdentity> FakeDisk::directoryAt(const std::string& path) {
    act();
    const auto item = items.find(path);
    if (item == items.end() || item->second.type != ItemType::directory) return std::nullopt;
    return FileIdentity{item->second.device, item->second.inode};
}

ItemIdentity FakeDisk::itemAt(const std::string& path) {
    act();
    return peek(path);
}

ItemIdentity FakeDisk::peek(const std::string& path) const {
    return identityIn(items, path);
}

ItemIdentity FakeDisk::identityIn(const Items& among, const std::string& path) {
    const auto item = among.find(path);
    if (item == among.end()) return {};
    return {item->second.inode, item->second.type};
}

AddedWatch FakeDisk::watchFolder(const std::string& path, FollowLinks) {
    act();
    if (const auto once = std::exchange(beforeNextWatch, nullptr)) once();
    return watched(items, path);
}

AddedWatch FakeDisk::watched(const Items& among, const std::string& path) {
    const auto item = among.find(path);
    if (item == among.end()) return {.error = ENOENT};
    if (const auto known = watchByInode.find(item->second.inode); known != watchByInode.end())
        return {.watch = known->second};
    if (watchByInode.size() >= watchLimit) return {.error = ENOSPC};
    watchByInode[item->second.inode] = ++lastWatch;
    return {.watch = lastWatch};
}

AddedWatch FakeDisk::watchAncestor(const std::string&) {
    return {.error = EACCES};
}

void FakeDisk::unwatch(int watch) {
    if (std::erase_if(watchByInode, [&](const auto& entry) { return entry.second == watch; }) > 0)
        record(watch, IN_IGNORED, 0, "");
}

bool FakeDisk::isWatched(const std::string& path) const {
    return watchByInode.contains(items.at(path).inode);
}

void FakeDisk::act() {
    if (beforeEachCall) beforeEachCall();
}

std::uint64_t FakeDisk::newInode() {
    if (freeInodes.empty()) return ++lastInode;
    const std::uint64_t inode = freeInodes.back();
    freeInodes.pop_back();
    return inode;
}

void FakeDisk::put(const std::string& path, ItemType type) {
    const std::uint64_t inode = newInode();
    const auto folder = items.find(parentOf(path));
    const dev_t device = folder == items.end() ? 1 : folder->second.device;
    items[path] = {.inode = inode, .type = type, .device = device, .serial = ++lastSerial, .changed = clock()};
    files[inode] = {};
}

WatchTime FakeDisk::clock() const {
    return std::chrono::floor<std::chrono::duration<int, std::ratio<1, 250>>>(time);
}

void FakeDisk::erase(const std::string& path) {
    const auto item = items.extract(path);
    if (item) forget(item.mapped());
}

void FakeDisk::forget(const Item& item) {
    if (--files.at(item.inode).links == 0) freeInodes.push_back(item.inode);
}

void FakeDisk::relocate(const std::string& path, const std::string& newPath) {
    relocate(items, path, newPath);
    for (const std::string& each : mountsWithin(path)) {
        auto mount = mounts.extract(each);
        mount.key() = newPath + each.substr(path.size());
        relocate(mount.mapped().covered, each, mount.key());
        mounts.insert(std::move(mount));
    }
}

void FakeDisk::relocate(Items& among, const std::string& path, const std::string& newPath) {
    for (const auto& [each, item] : takeFrom(among, path)) among[newPath + each.substr(path.size())] = item;
}

FakeDisk::Items FakeDisk::takeFrom(Items& among, const std::string& path) {
    Items taken;
    for (const auto& [each, item] : among) {
        if (isAtOrBelow(each, path)) taken.insert({each, item});
    }
    for (const auto& [each, item] : taken) among.erase(each);
    return taken;
}

// Nowhere when it is gone.
FakeDisk::Place FakeDisk::placeOf(std::uint64_t serial) const {
    const auto find = [&](const Items& among) {
        const auto found = std::ranges::find(among, serial, [](const auto& each) { return each.second.serial; });
        return found == among.end() ? Place{} : Place{&among, found->first};
    };
    Place place = find(items);
    for (auto each = mounts.begin(); !place.items && each != mounts.end(); ++each) place = find(each->second.covered);
    return place;
}

void FakeDisk::tell(const std::string& path, std::uint32_t mask, std::uint32_t cookie) {
    Item& folder = items.at(parentOf(path));
    if (mask & (IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO)) folder.changed = clock();
    const auto watch = watchByInode.find(folder.inode);
    if (watch != watchByInode.end()) record(watch->second, mask, cookie, nameOf(path));
}

void FakeDisk::endWatch(const std::string& path) {
    tellItself(path, IN_DELETE_SELF);
    tellItself(path, IN_IGNORED);
    watchByInode.erase(items.at(path).inode);
}

void FakeDisk::tellItself(const std::string& path, std::uint32_t mask) {
    const auto watch = watchByInode.find(items.at(path).inode);
    if (watch != watchByInode.end()) record(watch->second, mask, 0, "");
}

void FakeDisk::record(int watch, std::uint32_t mask, std::uint32_t cookie, const std::string& name) {
    inotify_event event{};
    event.wd = watch;
    event.mask = mask;
    event.cookie = cookie;
    std::string padded = name;
    if (!name.empty()) padded.resize((name.size() / 16 + 1) * 16);
    event.len = static_cast<std::uint32_t>(padded.size());
    block.append(reinterpret_cast<const char*>(&event), sizeof event);
    block += padded;
}
