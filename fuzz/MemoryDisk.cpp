#include "fuzz/MemoryDisk.h"

#include <cerrno>

#include "platform/PlatformError.h"
#include "workspace/PathComponents.h"

namespace {

constexpr std::size_t nameLimit = 255;
constexpr std::size_t pathLimit = 4095;
constexpr int linkLimit = 40;

[[noreturn]] void fail(int error, const std::string& path) {
    throw posixError(error, "use", path);
}

} // namespace

MemoryDisk::MemoryDisk() {
    put("/", FileType::directory);
}

std::string MemoryDisk::resolved(const std::string& path, FollowLinks links) const {
    if (path.find('\0') != std::string::npos || !path.starts_with('/')) fail(ENOENT, path);
    std::string way = "/";
    std::string rest = path;
    for (int followed = 0; !rest.empty();) {
        if (rest.size() > pathLimit) fail(ENAMETOOLONG, path);
        const std::size_t slash = rest.find('/');
        const std::string name = rest.substr(0, slash);
        rest = slash == std::string::npos ? "" : rest.substr(slash + 1);
        if (name.empty() || name == ".") continue;
        if (name.size() > nameLimit) fail(ENAMETOOLONG, path);
        const auto above = items.find(way);
        if (above == items.end()) fail(ENOENT, path);
        if (above->second.type != FileType::directory) fail(ENOTDIR, path);
        if (name == "..") {
            way = parentPath(way);
            continue;
        }
        const std::string next = appendingPathComponent(way, name);
        const auto item = items.find(next);
        const bool isLink = item != items.end() && item->second.type == FileType::symbolicLink;
        if (!isLink || (rest.empty() && links == FollowLinks::no)) {
            way = next;
            continue;
        }
        if (++followed > linkLimit) fail(ELOOP, path);
        if (item->second.bytes.starts_with('/')) way = "/";
        rest = item->second.bytes + "/" + rest;
    }
    return way;
}

const MemoryDisk::Item* MemoryDisk::find(const std::string& path, FollowLinks links) const {
    try {
        const auto item = items.find(resolved(path, links));
        return item == items.end() ? nullptr : &item->second;
    } catch (const PlatformError&) {
        return nullptr;
    }
}

const MemoryDisk::Item& MemoryDisk::get(const std::string& path, FollowLinks links) const {
    const auto item = items.find(resolved(path, links));
    if (item == items.end()) fail(ENOENT, path);
    return item->second;
}

std::set<std::string> MemoryDisk::names(const std::string& directoryPath) const {
    std::set<std::string> result;
    for (const auto& [path, item] : items) {
        if (path != "/" && parentPath(path) == directoryPath) result.insert(lastPathComponent(path));
    }
    return result;
}

void MemoryDisk::put(const std::string& path, FileType type, std::string bytes) {
    erase(path);
    items[path] = {type, std::move(bytes), ++lastFileNumber, ++time};
}

void MemoryDisk::move(const std::string& path, const std::string& newPath) {
    const auto moved = below(path);
    erase(path);
    erase(newPath);
    for (const auto& [each, item] : moved) items[newPath + each.substr(path.size())] = item;
}

void MemoryDisk::copy(const std::string& path, const std::string& newPath) {
    for (const auto& [each, item] : below(path)) put(newPath + each.substr(path.size()), item.type, item.bytes);
}

void MemoryDisk::erase(const std::string& path) {
    if (path != "/") std::erase_if(items, [&](const auto& entry) { return isAtOrWithin(entry.first, path); });
}

std::map<std::string, MemoryDisk::Item> MemoryDisk::below(const std::string& path) const {
    std::map<std::string, Item> result;
    for (const auto& [each, item] : items) {
        if (isAtOrWithin(each, path)) result.emplace(each, item);
    }
    return result;
}

FileAttributes attributesOf(const MemoryDisk::Item& item) {
    return {.type = item.type,
            .size = item.bytes.size(),
            .modificationDate = std::chrono::seconds(item.modified),
            .fileSystemNumber = 1,
            .fileNumber = item.fileNumber};
}

bool MemoryFileManager::isDirectory(const std::string& path) const {
    const auto* item = disk.find(path, FollowLinks::yes);
    return item && item->type == FileType::directory;
}

FileAttributes MemoryFileManager::attributesOfItem(const std::string& path, FollowLinks links) const {
    return attributesOf(disk.get(path, links));
}

FileContents MemoryFileManager::contentsOfFile(const std::string& path, std::uint64_t sizeLimit) const {
    const MemoryDisk::Item& item = disk.get(path, FollowLinks::yes);
    const bool isRead = item.type == FileType::regular && item.bytes.size() <= sizeLimit;
    return {isRead ? item.bytes : "", attributesOf(item)};
}

std::vector<DirectoryEntry> MemoryFileManager::contentsOfDirectory(const std::string& path) const {
    const std::string directoryPath = disk.resolved(path, FollowLinks::yes);
    if (disk.get(path, FollowLinks::yes).type != FileType::directory) fail(ENOTDIR, path);
    std::vector<DirectoryEntry> entries;
    for (const std::string& name : disk.names(directoryPath)) {
        const auto& item = disk.get(appendingPathComponent(directoryPath, name), FollowLinks::no);
        entries.push_back({name, item.type, item.fileNumber});
    }
    return entries;
}

std::optional<std::string> MemoryFileManager::homeDirectoryPath(std::string_view userName) const {
    return userName.empty() ? std::optional<std::string>("/home") : std::nullopt;
}

std::optional<std::string> MemoryFileManager::realPath(const std::string& path) const {
    return fileExists(path) ? std::optional(disk.resolved(path, FollowLinks::yes)) : std::nullopt;
}

std::vector<std::string> MemoryFileManager::createDirectory(const std::string& path) {
    if (isDirectory(path)) return {};
    if (itemExists(path)) fail(EEXIST, path);
    std::vector<std::string> made;
    if (parentPath(path) != path) made = createDirectory(parentPath(path));
    try {
        disk.put(disk.resolved(path, FollowLinks::no), FileType::directory);
    } catch (const PlatformError&) {
        removeEmptyDirectories(made);
        throw;
    }
    made.push_back(path);
    return made;
}

void MemoryFileManager::removeEmptyDirectories(const std::vector<std::string>& paths) {
    for (auto path = paths.rbegin(); path != paths.rend(); ++path) {
        const std::string found = disk.resolved(*path, FollowLinks::no);
        if (disk.names(found).empty()) disk.erase(found);
    }
}

void MemoryFileManager::createFile(const std::string& path) {
    disk.put(freePath(path), FileType::regular);
}

std::unique_ptr<FileReplacement> MemoryFileManager::prepareReplacement(const std::string& path, std::string_view data) {
    class Replacement final : public FileReplacement {
    public:
        Replacement(MemoryDisk& usedDisk, std::string replacedPath, std::string_view data)
            : disk(usedDisk), path(std::move(replacedPath)) {
            static std::uint64_t fileCount = 1'000'000;
            item = {FileType::regular, std::string(data), ++fileCount, 1};
        }
        FileAttributes attributes() const override { return attributesOf(item); }
        FileAttributes commit() override {
            disk.put(path, FileType::regular, item.bytes);
            return attributesOf(disk.get(path, FollowLinks::no));
        }

    private:
        MemoryDisk& disk;
        std::string path;
        MemoryDisk::Item item;
    };
    const std::string target = disk.resolved(path, FollowLinks::yes);
    if (!isDirectory(parentPath(target))) fail(ENOENT, path);
    if (const auto* old = disk.find(target, FollowLinks::no); old && old->type != FileType::regular) fail(EISDIR, path);
    return std::make_unique<Replacement>(disk, target, data);
}

void MemoryFileManager::moveItem(const std::string& sourcePath, const std::string& destinationPath) {
    const auto [source, destination] = moveEnds(sourcePath, destinationPath);
    disk.move(source, destination);
}

void MemoryFileManager::copyItem(const std::string& sourcePath, const std::string& destinationPath) {
    const auto [source, destination] = moveEnds(sourcePath, destinationPath);
    disk.copy(source, destination);
}

void MemoryFileManager::removeItem(const std::string& path) {
    disk.get(path, FollowLinks::no);
    const std::string item = disk.resolved(path, FollowLinks::no);
    if (item == "/") fail(EBUSY, path);
    disk.erase(item);
}

std::string MemoryFileManager::freePath(const std::string& path) const {
    const std::string place = disk.resolved(path, FollowLinks::no);
    if (disk.find(place, FollowLinks::no)) fail(EEXIST, path);
    if (!isDirectory(parentPath(place))) fail(ENOENT, path);
    return place;
}

std::pair<std::string, std::string> MemoryFileManager::moveEnds(const std::string& sourcePath,
                                                                const std::string& destinationPath) {
    disk.get(sourcePath, FollowLinks::no);
    const std::string source = disk.resolved(sourcePath, FollowLinks::no);
    if (isAtOrWithin(disk.resolved(destinationPath, FollowLinks::no), source)) fail(EINVAL, destinationPath);
    return {source, freePath(destinationPath)};
}

std::optional<FileIdentifier> MemoryFileIdentification::fileResourceIdentifier(const std::string& path) const {
    const auto* item = disk.find(path, FollowLinks::no);
    return item ? std::optional<FileIdentifier>(item->fileNumber) : std::nullopt;
}

void MemoryFileIdentification::forEachIdentifiedEntry(const std::string& directoryPath,
                                                      const std::function<void(const IdentifiedEntry&)>& visit) const {
    const std::string found = disk.resolved(directoryPath, FollowLinks::yes);
    if (disk.get(found, FollowLinks::no).type != FileType::directory) fail(ENOTDIR, directoryPath);
    for (const std::string& name : disk.names(found)) {
        const auto& item = disk.get(appendingPathComponent(found, name), FollowLinks::no);
        visit({name, item.type, 1, item.fileNumber, FileIdentifier(item.fileNumber)});
    }
}

std::unique_ptr<DirectoryWalk> MemoryDirectoryWalking::walk(const std::string& directoryPath, FollowLinks links) const {
    class Walk final : public DirectoryWalk {
    public:
        Walk(const MemoryDisk& walkedDisk, std::string top) : disk(walkedDisk), path(std::move(top)) {}
        void forEachEntry(const std::function<void(const WalkedEntry&)>& visit) override {
            for (const std::string& name : disk.names(path)) {
                const auto& item = disk.get(appendingPathComponent(path, name), FollowLinks::no);
                visit({name, item.type, item.fileNumber});
            }
        }
        bool enter(const std::string& name) override {
            path = appendingPathComponent(path, name);
            return true;
        }
        void leave() override { path = parentPath(path); }

    private:
        const MemoryDisk& disk;
        std::string path;
    };
    const auto* item = disk.find(directoryPath, links);
    if (!item || item->type != FileType::directory) return nullptr;
    return std::make_unique<Walk>(disk, disk.resolved(directoryPath, links));
}
