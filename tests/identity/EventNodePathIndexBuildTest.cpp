#include "identity/EventNodePathIndexBuild.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "identity/StableNodeID.h"
#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/MountPoints.h"
#include "platform/linux/files/LinuxDirectoryWalking.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/DeepFolder.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using Map = std::map<std::string, std::string>;

TEST(EventNodeIndexDelay, PositiveDecimalNumbersOnly) {
    const std::pair<std::optional<std::string>, int> cases[] = {
        {std::nullopt, 0},
        {"", 0},
        {"250", 250},
        {"+250", 250},
        {"0", 0},
        {"-5", 0},
        {"+-5", 0},
        {"+", 0},
        {"-", 0},
        {" 250", 0},
        {"250 ", 0},
        {"abc", 0},
        {"0250", 250},
        {"1e3", 0},
        {"0x10", 0},
        {"2.5", 0},
        {"9223372036854775808", 0},
    };
    for (const auto& [value, delay] : cases)
        EXPECT_EQ(eventNodeIndexDelay(value).count(), delay) << value.value_or("-");
    EXPECT_EQ(eventNodeIndexDelay("9223372036854775807"), std::chrono::hours(24 * 365));
}

TEST(MountPoints, PlaceInALineOfTheTable) {
    EXPECT_EQ(mountPointInLine("36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw"), "/mnt/parent");
    EXPECT_EQ(mountPointInLine("36 35 98:0 / /a\\040b\\134\\011\\0 rw - ext3 x rw"), "/a b\\\t\\0");
    EXPECT_EQ(mountPointInLine("36 35"), "");
}

class EventNodePathIndexBuild : public testing::Test {
protected:
    Map built(const std::string& path) const { return contents(buildWorkspaceEventNodePathIndex(path, walking, disk)); }

    static Map contents(const EventNodePathIndex& index) {
        Map map;
        index.forEach([&](const std::string& hint, const std::string& path) { map[hint] = path; });
        return map;
    }
    // What asking for every item one by one gives.
    Map expected(const std::string& path) const {
        Map map{{*eventNodeIDHint(path, disk), path}};
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path + "/")) {
            const std::string itemPath = std::filesystem::path(entry.path()).string();
            map[*eventNodeIDHint(itemPath, disk)] = path + itemPath.substr(path.size());
        }
        return map;
    }

    TemporaryDirectory root;
    LinuxEnvironment environment;
    LinuxFileManager disk{environment};
    LinuxDirectoryWalking walking;
};

TEST_F(EventNodePathIndexBuild, HoldsEveryItem) {
    for (int directory = 0; directory < 40; ++directory) {
        for (int file = 0; file < 30; ++file) {
            writeFile(root.path(std::to_string(directory % 7) + "/d" + std::to_string(directory) + "/" +
                                std::to_string(file)),
                      "");
        }
    }
    makeTree(root.path(), ".hidden/.git/config empty/ dangling>none fifo| 1/loop>" + root.path());
    EXPECT_EQ(built(root.path()), expected(root.path()));

    // Unfinished temporaries are nobody's items.
    const Map before = built(root.path());
    writeFile(root.path("1/.a.edsave-0123456789abcdef"), "");
    EXPECT_EQ(built(root.path()), before);
}

TEST_F(EventNodePathIndexBuild, RootThatIsNoDirectory) {
    makeTree(root.path(), "file folder/a link>folder");
    EXPECT_EQ(built(root.path("none")), Map{});
    EXPECT_EQ(built(root.path("file")), (Map{{*eventNodeIDHint(root.path("file"), disk), root.path("file")}}));
    EXPECT_EQ(built(root.path("link")), expected(root.path("link")));
}

TEST_F(EventNodePathIndexBuild, PassesOverUnreadableDirectories) {
    makeTree(root.path(), "a/closed/inside b/open");
    const Map all = built(root.path());
    ASSERT_EQ(::chmod(root.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(root.path("a/closed").c_str(), 0), 0);
    const uid_t self = ::geteuid();
    ASSERT_EQ(::seteuid(self == 0 ? ordinaryUserID : self), 0); // root reads everything
    const Map seen = built(root.path());
    ASSERT_EQ(::seteuid(self), 0);
    Map readable = all;
    std::erase_if(readable, [&](const auto& entry) { return entry.second.ends_with("/inside"); });
    EXPECT_EQ(seen, readable);
    ::chmod(root.path("a/closed").c_str(), 0755);
}

TEST_F(EventNodePathIndexBuild, AsksWhereAMountHidesTheNumber) {
    makeTree(root.path(), "a/covered elsewhere link-to-a>a");
    const MountedDisk mounted(root.path("a/mount ed"));
    if (!mounted.reason.empty()) GTEST_SKIP() << mounted.reason;
    writeFile(root.path("a/mount ed/b/c"), "");
    ASSERT_EQ(::mount(root.path("elsewhere").c_str(), root.path("a/covered").c_str(), nullptr, MS_BIND, nullptr), 0);
    const auto numberAt = [](const Map& map, const std::string& path) {
        for (const auto& [hint, itemPath] : map) {
            if (itemPath == path) return hint;
        }
        return std::string();
    };
    for (const std::string& path : {root.path("a"), root.path("link-to-a")}) {
        const Map map = built(path);
        for (const char* name : {"/mount ed", "/mount ed/b", "/covered"}) {
            EXPECT_EQ(numberAt(map, path + name), eventNodeIDHint(path + name, disk)) << path << name;
        }
    }
    ::umount2(root.path("a/covered").c_str(), MNT_DETACH);
}

TEST_F(EventNodePathIndexBuild, NeverEntersADirectoryInWhichItIs) {
    writeFile(root.path("a/b/x"), "");
    const Map before = built(root.path());
    if (::mount(root.path("a").c_str(), root.path("a/b").c_str(), nullptr, MS_BIND, nullptr) != 0) {
        GTEST_SKIP() << "cannot mount";
    }
    const Map map = built(root.path());
    ::umount2(root.path("a/b").c_str(), MNT_DETACH);
    for (const auto& [hint, path] : map) EXPECT_FALSE(path.starts_with(root.path("a/b/"))) << path;
    EXPECT_EQ(built(root.path()), before);
}

TEST_F(EventNodePathIndexBuild, NeitherDepthNorDescriptorsEndIt) {
    constexpr std::size_t depth = 300; // sixty thousand bytes of path
    makeDeepFolder(root.path("deep"), depth);
    writeFile(root.path("z"), "");
    const DescriptorLimit limit(40);
    const EventNodePathIndex index = buildWorkspaceEventNodePathIndex(root.path(), walking, disk);
    EXPECT_EQ(index.size(), depth + 4);
    std::size_t longest = 0;
    index.forEach([&](const std::string&, const std::string& path) { longest = std::max(longest, path.size()); });
    EXPECT_EQ(longest, root.path("deep").size() + depth * (deepName.size() + 1) + std::string("/link").size());
}

// The item that a step of the walk stands in is moved elsewhere, so that ".." leads astray.
TEST_F(EventNodePathIndexBuild, AWalkFindsBackWhenItsDirectoryIsMoved) {
    makeTree(root.path(), "a/b/c/x a/d/y other/z");
    const auto walk = walking.walk(root.path(), FollowLinks::yes);
    for (const char* name : {"a", "b", "c"}) ASSERT_TRUE(walk->enter(name));
    std::string deep;
    for (int level = 0; level < 30; ++level) { // far enough for the upper directories to be closed
        std::filesystem::create_directories(root.path("a/b/c" + deep + "/d"));
        deep += "/d";
        ASSERT_TRUE(walk->enter("d"));
    }
    std::filesystem::rename(root.path("a/b/c/d"), root.path("other/moved"));
    for (int level = 0; level < 30; ++level) walk->leave();
    std::vector<std::string> names;
    walk->forEachEntry([&](const WalkedEntry& entry) { names.emplace_back(entry.name); });
    EXPECT_EQ(names, std::vector<std::string>{"x"});
    walk->leave();
    walk->leave();
    EXPECT_TRUE(walk->enter("d"));
}

TEST_F(EventNodePathIndexBuild, Subtree) {
    writeFile(root.path("w/a/old"), "");
    EventNodePathIndex index = buildWorkspaceEventNodePathIndex(root.path("w"), walking, disk);
    makeTree(root.path(), "w/a/b/c w/file outside/x w/link>../outside");
    for (const char* name : {"w/a", "w/file", "w/link", "w/none", "outside"}) {
        indexWorkspaceEventNodePathSubtree(root.path(name), index, walking, disk);
    }
    EXPECT_EQ(contents(index), expected(root.path("w")));
}

} // namespace
