#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/watch/KernelRecord.h"
#include "platform/linux/watch/WatchSystem.h"

// A disk in memory that writes down, for every operation, what inotify would tell. It gives the number of a file that
// is gone to the next one at once, as some file systems do.
class FakeDisk final : public WatchSystem {
public:
    FakeDisk();

    // Operations. Each appends its records to the block that takeBlock() hands over.
    void makeDirectory(const std::string& path);
    void createFile(const std::string& path);
    void writeFile(const std::string& path);
    void closeFile(const std::string& path);
    void changeAttributes(const std::string& path);
    void link(const std::string& path, const std::string& newPath);
    void move(const std::string& path, const std::string& newPath);
    void exchange(const std::string& path, const std::string& otherPath);
    void remove(const std::string& path); // with all below it
    void arrive(const std::string& path); // a complete file from where nobody watches
    void leave(const std::string& path);
    void mount(const std::string& path); // another, empty file system over a directory
    void unmount(const std::string& path);

    std::string takeBlock();
    // What was not taken is lost, as in a full queue of the kernel.
    void loseBlock();

    ItemIdentity peek(const std::string& path) const; // what is there, which is no call of the watcher
    bool exists(const std::string& path) const { return items.contains(path); }
    // A file that somebody has begun to write and not closed.
    bool isHalfWritten(const std::string& path) const;
    std::set<std::string> paths() const;
    dev_t deviceOf(const std::string& path) const { return items.at(path).device; }
    bool isMountPoint(const std::string& path) const { return mounts.contains(path); }
    std::vector<std::string> mountsWithin(const std::string& path) const;
    // Tells contents of a file from others; empty where there is none.
    std::string stateOf(const std::string& path) const;

    WatchTime time{std::chrono::hours(1)};
    bool hasInotify = true;
    std::size_t watchLimit = 1'000'000;
    std::size_t pathLimit = 4096;
    EventCoverage coverage = EventCoverage::complete;
    std::set<std::string> brokenPaths{}; // of folders that can be seen, and not be opened
    // What is done before the next watch is added, to come between two steps of the watcher.
    std::function<void()> beforeNextWatch{};
    std::function<void()> beforeEachCall{}; // of the watcher

    WatchTime now() const override { return time; }
    bool canWatch() const override { return hasInotify; }
    OpenedFolder openFolder(const std::string& path, FollowLinks links, OpenFor purpose) override;
    std::optional<FileIdentity> directoryAt(const std::string& path) override;
    std::string realPath(const std::string& path) override { return path; }
    ItemIdentity itemAt(const std::string& path) override;
    AddedWatch watchFolder(const std::string& path, FollowLinks links) override;
    AddedWatch watchAncestor(const std::string& path) override;
    std::size_t longestPath() const override { return pathLimit; }
    void unwatch(int watch) override;
    std::vector<MountPoint> mountPoints() override;

    std::size_t watchCount() const { return watchByInode.size(); }
    bool isWatched(const std::string& path) const;
    bool isDirectory(const std::string& path) const {
        const auto item = items.find(path);
        return item != items.end() && item->second.type == ItemType::directory;
    }
    std::size_t listings = 0;       // how many times a folder was listed
    std::size_t openingsByPath = 0; // and how many times one was opened from the top

private:
    friend class FakeFolder;

    struct Item {
        std::uint64_t inode{};
        ItemType type{};
        dev_t device = 1;
        std::uint64_t serial{}; // never used again
        WatchTime changed{};    // the entries of a directory, by a clock that ticks seldom
    };
    using Items = std::map<std::string, Item>;
    struct Mount {
        int number{};
        Items covered{};
    };
    // An item, and those among which it is: all that paths lead to, or what lies below a mount.
    struct Place {
        const Items* items{};
        std::string path{};
    };
    struct File {
        int links = 1;
        std::uint64_t version = 0;
        bool isBeingWritten = false;
    };

    void act();
    OpenedFolder opened(const Items& among, const std::string& path);
    AddedWatch watched(const Items& among, const std::string& path);
    Place placeOf(std::uint64_t serial) const;
    static ItemIdentity identityIn(const Items& among, const std::string& path);
    static Items takeFrom(Items& among, const std::string& path);
    static void relocate(Items& among, const std::string& path, const std::string& newPath);
    void endWatch(const std::string& path);
    std::uint64_t newInode();
    void put(const std::string& path, ItemType type);
    WatchTime clock() const;
    void erase(const std::string& path);
    void forget(const Item& item);
    void relocate(const std::string& path, const std::string& newPath);
    void tell(const std::string& path, std::uint32_t mask, std::uint32_t cookie = 0);
    void tellItself(const std::string& path, std::uint32_t mask);
    void record(int watch, std::uint32_t mask, std::uint32_t cookie, const std::string& name);

    Items items{};
    std::map<std::uint64_t, File> files{};
    std::map<std::uint64_t, int> watchByInode{};
    std::map<std::string, Mount> mounts{};
    std::vector<std::uint64_t> freeInodes{};
    std::uint64_t lastInode = 100;
    std::uint64_t lastSerial = 1;
    int lastMount = 0;
    int lastWatch = 0;
    std::uint32_t lastCookie = 0;
    std::string block{};
};
