#include "tests/platform/watch/FakeDisk.h"

#include <sys/inotify.h>

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
        : disk(fakeDisk), identity{item.device, item.inode}, serial(item.serial) {}

    FolderStatus status() const override { return {.identity = identity, .coverage = disk.coverage}; }
    ItemIdentity item(const std::string& name) const override {
        disk.act();
        const std::string path = currentPath();
        return path.empty() ? ItemIdentity{} : disk.peek(path + "/" + name);
    }
    std::optional<FileStamp> fileStamp(const std::string& name) const override {
        const ItemIdentity found = item(name);
        if (!found || found.isDirectory()) return std::nullopt;
        return FileStamp{found.inode, 0, static_cast<std::int64_t>(disk.files.at(found.inode).version)};
    }
    bool forEachEntry(const std::function<void(std::string_view, ItemIdentity)>& visit) const override {
        disk.act();
        ++disk.listings;
        const std::string path = currentPath();
        if (path.empty()) return true;
        for (const auto& [each, item] : std::map(disk.items)) {
            if (each != path && parentOf(each) == path) visit(nameOf(each), {item.inode, item.type});
        }
        return true;
    }
    OpenedFolder openFolder(const std::string& name) const override {
        disk.act();
        const std::string path = currentPath();
        return path.empty() ? OpenedFolder{.error = ENOENT} : disk.opened(path + "/" + name);
    }
    AddedWatch watch() const override {
        disk.act();
        return disk.watched(currentPath());
    }

private:
    // Empty when the folder is gone.
    std::string currentPath() const {
        for (const auto& [path, item] : disk.items) {
            if (item.serial == serial) return path;
        }
        return {};
    }

    FakeDisk& disk;
    FileIdentity identity;
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
    std::vector<std::string> gone;
    for (const auto& [each, item] : items) {
        if (isAtOrBelow(each, path)) gone.push_back(each);
    }
    for (const std::string& each : gone) erase(each);
}

void FakeDisk::mount(const std::string& path) {
    items[path].inode = 2;
    items[path].device = ++lastDevice;
    items[path].serial = ++lastSerial;
    mounts.push_back({path, static_cast<int>(lastDevice)});
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
    return opened(path);
}

OpenedFolder FakeDisk::opened(const std::string& path) {
    const auto item = items.find(path);
    if (item == items.end()) return {.error = ENOENT};
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
    const auto item = items.find(path);
    if (item == items.end()) return {};
    return {item->second.inode, item->second.type};
}

AddedWatch FakeDisk::watchFolder(const std::string& path, FollowLinks) {
    act();
    if (const auto once = std::exchange(beforeNextWatch, nullptr)) once();
    return watched(path);
}

AddedWatch FakeDisk::watched(const std::string& path) {
    const auto item = items.find(path);
    if (item == items.end()) return {.error = ENOENT};
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
    items[path] = {.inode = inode, .type = type, .serial = ++lastSerial};
    files[inode] = {};
}

void FakeDisk::erase(const std::string& path) {
    const auto item = items.find(path);
    if (item == items.end()) return;
    const std::uint64_t inode = item->second.inode;
    if (--files.at(inode).links == 0) freeInodes.push_back(inode);
    items.erase(item);
}

void FakeDisk::relocate(const std::string& path, const std::string& newPath) {
    std::map<std::string, Item> moved;
    for (const auto& [each, item] : items) {
        if (isAtOrBelow(each, path)) moved[each] = item;
    }
    for (const auto& [each, item] : moved) {
        items.erase(each);
        items[newPath + each.substr(path.size())] = item;
    }
}

void FakeDisk::tell(const std::string& path, std::uint32_t mask, std::uint32_t cookie) {
    const auto watch = watchByInode.find(items.at(parentOf(path)).inode);
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
