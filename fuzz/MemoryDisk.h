#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/DirectoryWalking.h"
#include "platform/FileIdentification.h"
#include "platform/FileManager.h"

// A disk that is nothing but a map, on which a fuzzer may delete what it likes. It has folders, files and symbolic
// links, names of at most 255 bytes and paths of at most 4,095.
class MemoryDisk {
public:
    struct Item {
        FileType type{};
        std::string bytes{}; // of a link, where it leads
        std::uint64_t fileNumber{};
        std::int64_t modified{};

        bool operator==(const Item&) const = default;
    };

    MemoryDisk();

    // The path with links followed, also at its end where told so. Throws ENOENT, ENOTDIR, ELOOP and ENAMETOOLONG for
    // the way; the last component need not exist.
    std::string resolved(const std::string& path, FollowLinks links) const;
    const Item* find(const std::string& path, FollowLinks links) const; // null when nothing is there or leads there
    const Item& get(const std::string& path, FollowLinks links) const;  // throws

    // The names in a directory.
    std::set<std::string> names(const std::string& directoryPath) const;

    // These take resolved paths, and make or replace whatever is there.
    void put(const std::string& path, FileType type, std::string bytes = {});
    void move(const std::string& path, const std::string& newPath);
    void copy(const std::string& path, const std::string& newPath);
    void erase(const std::string& path);

    const std::map<std::string, Item>& allItems() const { return items; }

private:
    std::map<std::string, Item> below(const std::string& path) const;

    std::map<std::string, Item> items{};
    std::uint64_t lastFileNumber = 1;
    std::int64_t time = 1;
};

FileAttributes attributesOf(const MemoryDisk::Item& item);

class MemoryFileManager final : public FileManager {
public:
    explicit MemoryFileManager(MemoryDisk& usedDisk) : disk(usedDisk) {}

    bool fileExists(const std::string& path) const override { return disk.find(path, FollowLinks::yes); }
    bool itemExists(const std::string& path) const override { return disk.find(path, FollowLinks::no); }
    bool isDirectory(const std::string& path) const override;
    bool isReadableFile(const std::string& path) const override { return fileExists(path); }
    FileAttributes attributesOfItem(const std::string& path, FollowLinks links) const override;
    FileContents contentsOfFile(const std::string& path, std::uint64_t sizeLimit) const override;
    std::vector<DirectoryEntry> contentsOfDirectory(const std::string& path) const override;
    std::optional<std::string> homeDirectoryPath(std::string_view userName) const override;
    std::optional<std::string> realPath(const std::string& path) const override;
    std::string currentDirectoryPath() const override { return "/w"; }
    std::vector<std::string> createDirectory(const std::string& path) override;
    void removeEmptyDirectories(const std::vector<std::string>& paths) override;
    void createFile(const std::string& path) override;
    std::unique_ptr<FileReplacement> prepareReplacement(const std::string& path, std::string_view data) override;
    void moveItem(const std::string& sourcePath, const std::string& destinationPath) override;
    void copyItem(const std::string& sourcePath, const std::string& destinationPath) override;
    void trashItem(const std::string& path) override { removeItem(path); }
    void removeItem(const std::string& path) override;

private:
    std::string freePath(const std::string& path) const;
    std::pair<std::string, std::string> moveEnds(const std::string& sourcePath, const std::string& destinationPath);

    MemoryDisk& disk;
};

class MemoryFileIdentification final : public FileIdentification {
public:
    explicit MemoryFileIdentification(const MemoryDisk& usedDisk) : disk(usedDisk) {}

    std::optional<FileIdentifier> fileResourceIdentifier(const std::string& path) const override;
    void forEachIdentifiedEntry(const std::string& directoryPath,
                                const std::function<void(const IdentifiedEntry&)>& visit) const override;

private:
    const MemoryDisk& disk;
};

class MemoryDirectoryWalking final : public DirectoryWalking {
public:
    explicit MemoryDirectoryWalking(const MemoryDisk& usedDisk) : disk(usedDisk) {}

    std::unique_ptr<DirectoryWalk> walk(const std::string& directoryPath, FollowLinks links) const override;

private:
    const MemoryDisk& disk;
};
