#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>

#include "tests/platform/watch/WatchedTree.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"

// The kernel's own events, for every kind of change.

namespace {

namespace fs = std::filesystem;

struct Case {
    const char* name;
    std::function<void(const std::string& top)> change;
    std::vector<std::string> told;
};

void checkEach(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        WatchedTree tree;
        makeTree(tree.path(), "w/a.txt w/b.txt w/d/e/n.txt out/t/u/q.txt");
        tree.watch({"w"});
        each.change(tree.path() + "/");
        EXPECT_TRUE(tree.tells(each.told)) << each.name;
    }
}

TEST(InotifyEvents, OfFiles) {
    checkEach({
        {"write over the same size", [](auto top) { fs::resize_file(top + "w/a.txt", 7); }, {"modified w/a.txt"}},
        {"attributes",
         [](auto top) { ::chmod((top + "w/a.txt").c_str(), 0600), writeFile(top + "w/z", ""); },
         {"created w/z"}},
        {"own temporary",
         [](auto top) {
             writeFile(top + "w/.a.txt.edsave-0123456789abcdef", "new");
             fs::rename(top + "w/.a.txt.edsave-0123456789abcdef", top + "w/a.txt");
         },
         {"modified w/a.txt"}},
        {"save and rename",
         [](auto top) {
             writeFile(top + "w/.a.txt.edsave-0123456789abcdef", "new");
             fs::rename(top + "w/.a.txt.edsave-0123456789abcdef", top + "w/a.txt");
             fs::rename(top + "w/a.txt", top + "w/z.txt");
         },
         {"renamed w/a.txt -> w/z.txt", "modified w/z.txt"}},
        {"move over",
         [](auto top) { fs::rename(top + "w/a.txt", top + "w/b.txt"); },
         {"renamed w/a.txt -> w/b.txt", "modified w/b.txt"}},
        {"hard link", [](auto top) { fs::create_hard_link(top + "w/a.txt", top + "w/h"); }, {"created w/h"}},
        {"symbolic link", [](auto top) { fs::create_symlink("a.txt", top + "w/s"); }, {"created link w/s"}},
        {"nothing stays",
         [](auto top) { writeFile(top + "w/t", ""), fs::remove(top + "w/t"), fs::remove(top + "w/b.txt"); },
         {"removed w/b.txt"}},
    });
}

TEST(InotifyEvents, OfDirectories) {
    checkEach({
        {"made with contents",
         [](auto top) { writeFile(top + "w/p/q/f", "x"); },
         {"created dir w/p", "created dir w/p/q", "created w/p/q/f"}},
        {"renamed, and written in under the new name",
         [](auto top) { fs::rename(top + "w/d", top + "w/r"), writeFile(top + "w/r/e/late.txt", "x"); },
         {"renamed dir w/d -> w/r", "created w/r/e/late.txt"}},
        {"deleted with contents",
         [](auto top) { fs::remove_all(top + "w/d"); },
         {"removed w/d/e/n.txt", "removed dir w/d/e", "removed dir w/d"}},
        {"replaced by a file",
         [](auto top) { fs::remove_all(top + "w/d"), writeFile(top + "w/d", "x"); },
         {"removed w/d/e/n.txt", "removed dir w/d/e", "removed dir w/d", "created w/d"}},
        {"swapped with one inside",
         [](auto top) {
             fs::rename(top + "w/d/e", top + "w/t"), fs::rename(top + "w/d", top + "w/t/d");
             fs::rename(top + "w/t", top + "w/d");
         },
         {"removed dir w/d/e", "removed dir w/d", "created dir w/d", "created dir w/d/d"}},
    });
}

TEST(InotifyEvents, ComeFromDirectoriesThatMovedIn) {
    WatchedTree tree;
    makeTree(tree.path(), "w/a.txt out/t/u/q.txt");
    tree.watch({"w"});
    fs::rename(tree.path("out/t"), tree.path("w/t"));
    ASSERT_TRUE(tree.tells({"created dir w/t"}));
    writeFile(tree.path("w/t/u/q.txt"), "x");
    ASSERT_TRUE(tree.tells({"modified w/t/u/q.txt"}));
    fs::rename(tree.path("w/t"), tree.path("out/t"));
    ASSERT_TRUE(tree.tells({"removed dir w/t"}));
    writeFile(tree.path("out/t/u/q.txt"), "outside");
    fs::rename(tree.path("out/t/u"), tree.path("w/u")); // a part of what has been away comes back
    ASSERT_TRUE(tree.tells({"created dir w/u"}));
    writeFile(tree.path("w/u/q.txt"), "inside");
    EXPECT_TRUE(tree.tells({"modified w/u/q.txt"}));
}

TEST(InotifyEvents, TellWhatBecameOfTheRoot) {
    const std::vector<Case> cases{
        {"deleted", [](auto top) { fs::remove_all(top + "w"); }, {}},
        {"renamed", [](auto top) { fs::rename(top + "w", top + "v"); }, {}},
        {"parent renamed", [](auto top) { fs::rename(top, top.substr(0, top.size() - 1) + "-moved"); }, {}},
        {"replaced by a file", [](auto top) { fs::remove_all(top + "w"), writeFile(top + "w", ""); }, {}},
        {"replaced by a directory",
         [](auto top) { fs::remove_all(top + "w"), writeFile(top + "w/new", ""); },
         {"created w/new2"}},
    };
    for (const Case& each : cases) {
        WatchedTree tree;
        writeFile(tree.path("p/w/a.txt"), "");
        tree.setInterest({.documentPaths = {tree.path("p/w/a.txt")}});
        tree.watch({"p/w"});
        ASSERT_TRUE(tree.tellsAmongOthers("look p/w"));
        each.change(tree.path("p/"));
        EXPECT_TRUE(tree.tellsAmongOthers("rootChanged p/w")) << each.name;
        EXPECT_TRUE(tree.tellsAmongOthers("look p/w")) << each.name;
        if (each.told.empty()) continue;
        writeFile(tree.path("p/w/new2"), "");
        EXPECT_TRUE(tree.tellsAmongOthers("created p/w/new2")) << each.name;
    }
}

TEST(InotifyEvents, GoOnWhenTheRootsChange) {
    WatchedTree tree;
    for (const char* name : {"w/a/f", "w/b/f", "v/f"}) writeFile(tree.path(name), "");
    tree.watch({"w/a"});
    fs::rename(tree.path("w/a/f"), tree.path("w/a/g")); // not told yet when the roots change
    tree.watch({"w"});
    ASSERT_TRUE(tree.tells({"renamed w/a/f -> w/a/g"}));
    writeFile(tree.path("w/b/f"), "x");
    ASSERT_TRUE(tree.tells({"modified w/b/f"}));
    tree.watch({"v", "w", "w/b"});
    EXPECT_EQ(tree.statistics().watches, 4U);
    fs::rename(tree.path("w/a/g"), tree.path("w/b/g")); // for the reader, from one root to another
    ASSERT_TRUE(tree.tells({"removed w/a/g", "created w/b/g"}));
    tree.watch({"v", "w/b"});
    EXPECT_EQ(tree.statistics().watches, 2U);
    writeFile(tree.path("w/a/unseen"), "x");
    writeFile(tree.path("w/b/g"), "x");
    EXPECT_TRUE(tree.tells({"modified w/b/g"}));
}

TEST(InotifyEvents, ReachEveryRootThatShowsTheDirectory) {
    WatchedTree tree;
    writeFile(tree.path("w/d/f"), "");
    fs::create_directory_symlink(tree.path("w/d"), tree.path("link"));
    tree.watch({"w", "link"});
    fs::rename(tree.path("w/d/f"), tree.path("w/d/g"));
    EXPECT_TRUE(tree.tellsInAnyOrder({"renamed link/f -> link/g", "renamed w/d/f -> w/d/g"}));
    tree.watch({"link"});
    writeFile(tree.path("w/d/g"), "x");
    EXPECT_TRUE(tree.tells({"modified link/g"}));
}

// The kernel's table of mounts knows nothing of the links that lead to a root.
TEST(InotifyEvents, ReachAMountBelowALinkedRoot) {
    WatchedTree tree;
    fs::create_directories(tree.path("w/d"));
    fs::create_directory_symlink(tree.path("w"), tree.path("link"));
    tree.setInterest({.directoryPaths = {tree.path("link"), tree.path("link/d")}});
    tree.watch({"link"});
    const MountedDisk disk(tree.path("w/d"));
    if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
    EXPECT_TRUE(tree.tellsAmongOthers("created dir link/d"));
    writeFile(tree.path("w/d/f"), "");
    EXPECT_TRUE(tree.tellsAmongOthers("created link/d/f"));
}

class WithoutWatches final : public LinuxWatchSystem {
public:
    bool canWatch() const override { return false; }
    // Waits until a further change would have another stamp.
    bool settles(const std::string& path) {
        const auto isSettled = [&] {
            const OpenedFolder opened = openFolder(path, FollowLinks::no, OpenFor::looking);
            return opened.folder && opened.folder->status().isSettled;
        };
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!isSettled() && std::chrono::steady_clock::now() < end) std::this_thread::yield();
        return isSettled();
    }
};

TEST(InotifyEvents, AreNotNeededToSeeAMountThatCameAndWent) {
    WatchedTree tree(std::make_unique<WithoutWatches>());
    for (const char* name : {"w/d", "w/e"}) fs::create_directories(tree.path(name));
    tree.setInterest({.directoryPaths = {tree.path("w/d"), tree.path("w/e")}});
    tree.watch({"w"});
    ASSERT_TRUE(WithoutWatches().settles(tree.path("w/d")));
    // By the second one the folder has been polled since then.
    for (const std::string name : {"w/e/1", "w/e/2"}) {
        writeFile(tree.path(name), "");
        ASSERT_TRUE(tree.tellsAmongOthers("created " + name));
    }
    ASSERT_TRUE(tree.tells({}));
    const std::string refusal = MountedDisk(tree.path("w/d")).reason;
    if (!refusal.empty()) GTEST_SKIP() << refusal;
    EXPECT_TRUE(tree.tellsAmongOthers("look w/d"));
}

TEST(InotifyEvents, AreNotMissedInAFolderWithADateToCome) {
    const TemporaryDirectory directory;
    fs::last_write_time(directory.path(), fs::file_time_type::clock::now() + std::chrono::hours(1));
    EXPECT_TRUE(WithoutWatches().settles(directory.path()));
}

// A kernel that gives out only so many watches.
class ShortOfWatches final : public LinuxWatchSystem {
public:
    explicit ShortOfWatches(std::size_t watchLimit) : limit(watchLimit) {}
    AddedWatch watchFolder(const std::string& path, FollowLinks links) override {
        if (given.size() >= limit && !isKnown(path)) return {.error = ENOSPC};
        const AddedWatch added = LinuxWatchSystem::watchFolder(path, links);
        if (added.watch >= 0) given[added.watch] = path;
        return added;
    }
    void unwatch(int watch) override {
        given.erase(watch);
        LinuxWatchSystem::unwatch(watch);
    }

private:
    bool isKnown(const std::string& path) const {
        return std::ranges::any_of(given, [&](const auto& entry) { return entry.second == path; });
    }
    const std::size_t limit;
    std::map<int, std::string> given;
};

TEST(InotifyEvents, AreReplacedByPollingWhereWatchesRunOut) {
    WatchedTree tree(std::make_unique<ShortOfWatches>(3));
    for (const char* name : {"w/a/f", "w/b/f", "w/c/f", "w/d/f"}) writeFile(tree.path(name), "");
    tree.watch({"w"});
    EXPECT_EQ(tree.statistics().watches, 3U);
    tree.setInterest({.directoryPaths = {tree.path("w/a"), tree.path("w/b"), tree.path("w/c"), tree.path("w/d")}});
    for (const char* name : {"w/a/f", "w/b/f", "w/c/f", "w/d/f"}) {
        writeFile(tree.path(name), "longer");
        EXPECT_TRUE(tree.tellsAmongOthers(std::string("modified ") + name));
    }
    fs::rename(tree.path("w/d/f"), tree.path("w/d/g"));
    EXPECT_TRUE(tree.tellsAmongOthers("created w/d/g"));
}

TEST(InotifyEvents, AreMadeUpForWhenTheyWereLost) {
    WatchedTree tree(std::make_unique<LinuxWatchSystem>(), 4096);
    for (const char* name : {"w/a/f", "w/gone/f", "w/same/f"}) writeFile(tree.path(name), "");
    tree.setInterest({.directoryPaths = {tree.path("w")}});
    tree.watch({"w"});
    ASSERT_TRUE(tree.tellsAmongOthers("look w"));
    tree.onQueue([&] { // while it is held up, more happens than the reader may keep
        fs::remove_all(tree.path("w/gone"));
        fs::rename(tree.path("w/a/f"), tree.path("w/a/g"));
        writeFile(tree.path("w/new/sub/f"), "");
        for (int i = 0; i < 400; ++i) {
            writeFile(tree.path("w/a/t" + std::to_string(i)), "");
            fs::remove(tree.path("w/a/t" + std::to_string(i)));
        }
    });
    for (const char* expected : {"removed w/a/f", "created w/new/sub/f"}) EXPECT_TRUE(tree.tellsAmongOthers(expected));
    writeFile(tree.path("w/new/sub/g"), ""); // what was found is under watch
    EXPECT_TRUE(tree.tellsAmongOthers("created w/new/sub/g"));
}

// There is no memory for the next look into a directory.
class ShortOfMemory final : public LinuxWatchSystem {
public:
    OpenedFolder openFolder(const std::string& path, FollowLinks links, OpenFor purpose) override {
        if (isShort.exchange(false)) throw std::bad_alloc();
        return LinuxWatchSystem::openFolder(path, links, purpose);
    }

    std::atomic<bool> isShort = false;
};

TEST(InotifyEvents, BeginAnewAfterWantOfMemory) {
    auto shortOfMemory = std::make_unique<ShortOfMemory>();
    auto& isShort = shortOfMemory->isShort;
    WatchedTree tree(std::move(shortOfMemory));
    writeFile(tree.path("w/d/f"), "");
    tree.setInterest({.directoryPaths = {tree.path("w/d")}});
    tree.watch({"w"});
    ASSERT_TRUE(tree.tellsAmongOthers("look w/d"));
    isShort = true;
    fs::rename(tree.path("w/d/f"), tree.path("w/d/g"));
    EXPECT_TRUE(tree.tellsAmongOthers("rootChanged w"));
    EXPECT_TRUE(tree.tellsAmongOthers("look w/d"));
    fs::rename(tree.path("w/d/g"), tree.path("w/d/h"));
    EXPECT_TRUE(tree.tellsAmongOthers("renamed w/d/g -> w/d/h"));
    tree.queue.isShort = true;
    fs::rename(tree.path("w/d/h"), tree.path("w/d/i"));
    EXPECT_TRUE(tree.tellsAmongOthers("rootChanged w"));
    for (const char* name : {"w/j", "w/k", "w/l", "w/m"}) { // a timer of before may help the first of them
        fs::create_directory(tree.path(name));
        ASSERT_TRUE(tree.tellsAmongOthers("created dir " + std::string(name)));
    }
}

TEST(InotifyEvents, OfADocumentRootStopAfterAThousandDirectories) {
    WatchedTree tree;
    for (int i = 0; i < 1100; ++i) fs::create_directories(tree.path("home/" + std::to_string(i)));
    tree.setInterest({.documentPaths = {tree.path("home/a.txt")}, .documentRootPaths = {tree.path("home")}});
    tree.watch({"home"});
    EXPECT_LE(tree.statistics().watches, 1001U);
    tree.setInterest({.directoryPaths = {tree.path("home")}}); // opened as a workspace
    EXPECT_TRUE(tree.watches(1101));
    writeFile(tree.path("home/1099/f"), "");
    writeFile(tree.path("home/0/f"), "");
    EXPECT_TRUE(tree.tellsInAnyOrder({"created home/0/f", "created home/1099/f"}));
}

TEST(InotifyEvents, AwaitedDirectoriesAreNoticed) {
    WatchedTree tree;
    std::mutex mutex;
    std::condition_variable changed;
    bool hasAppeared = false;
    tree.onQueue([&] {
        tree.source.awaitDirectories({tree.path("later")}, tree.queue, [&] {
            const std::lock_guard lock(mutex);
            hasAppeared = true;
            changed.notify_all();
        });
    });
    fs::create_directory(tree.path("later"));
    std::unique_lock lock(mutex);
    EXPECT_TRUE(changed.wait_for(lock, std::chrono::seconds(10), [&] { return hasAppeared; }));
}

} // namespace
