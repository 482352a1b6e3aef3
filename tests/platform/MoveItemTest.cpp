#include "platform/linux/files/MoveItem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/DirectorySnapshot.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/SystemCallTracer.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

PlatformError errorOfMove(const std::string& source, const std::string& destination) {
    return errorOf([&] { moveItem(source, destination); });
}

TEST(MoveItem, TheItemItselfMovesOrEverythingStays) {
    struct Row {
        const char* name;
        const char* source;
        const char* destination;
        int error;
    };
    const Row rows[] = {
        {"a file", "file", "folder/new", 0},
        {"a folder", "folder", "new", 0},
        {"a link, not its target", "link", "folder/new", 0},
        {"a link that leads nowhere", "dangling", "new", 0},
        {"a link into the folder that it leads to", "to-folder", "folder/new", 0},
        {"only the case differs, where case counts", "file", "FILE", 0},
        {"nothing there", "missing", "new", ENOENT},
        {"nowhere to go", "file", "missing/new", ENOENT},
        {"onto itself", "file", "file", EEXIST},
        {"a taken name", "file", "other", EEXIST},
        {"a folder over an empty folder", "folder", "empty", EEXIST},
        {"a name taken by a link that leads nowhere", "file", "dangling", EEXIST},
        {"a name taken by another hard link of the item", "file", "hard", EEXIST},
        {"a folder into itself", "folder", "folder/new", EINVAL},
        {"a folder into itself through a link", "folder", "to-folder/new", EINVAL},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        makeTree(directory.path(), "file other folder/inner empty/ link>file to-folder>folder dangling>nowhere");
        fs::create_hard_link(directory.path("file"), directory.path("hard"));
        const DirectorySnapshot before = portraitOf(directory.path());
        const DirectorySnapshot moved = portraitOf(directory.path(row.source));
        const PlatformError error = errorOfMove(directory.path(row.source), directory.path(row.destination));
        EXPECT_EQ(error.code, row.error) << error.what();
        if (row.error != 0) {
            EXPECT_EQ(portraitOf(directory.path()), before);
            EXPECT_TRUE(
                error.localizedDescription.starts_with("Cannot move “" + directory.path(row.source) + "” to “"));
        } else {
            EXPECT_EQ(portraitOf(directory.path(row.destination)), moved);
            EXPECT_TRUE(portraitOf(directory.path(row.source)).empty());
        }
    }
}

TEST(MoveItem, AFileSystemThatCannotKeepATakenNameIsAskedFirst) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    for (const int error : {EINVAL, ENOSYS}) {
        const TemporaryDirectory directory;
        writeFile(directory.path("file"), "file");
        writeFile(directory.path("taken"), "taken");
        for (const char* name : {"taken", "new"}) {
            const Trace trace = traceSystemCalls(
                [&] { return std::to_string(errorOfMove(directory.path("file"), directory.path(name)).code); },
                {{1, FaultKind::fail, error, {}, "renameat2"}});
            EXPECT_EQ(trace.message, name == std::string("taken") ? std::to_string(EEXIST) : "0");
        }
        EXPECT_EQ(readFile(directory.path("taken")), "taken");
        EXPECT_EQ(readFile(directory.path("new")), "file");
    }
}

// A tree and another file system to move it to.
class TwoDisks {
public:
    TwoDisks() : disk(directory.path("disk")) {
        const std::string tree = sourcePath();
        writeFile(tree + "/file", "text");
        writeFile(tree + "/inner/file", "inner");
        ::setxattr((tree + "/file").c_str(), "user.tag", "value", 5, 0);
        fs::create_symlink("../file", tree + "/inner/link");
        fs::last_write_time(tree, fs::file_time_type(std::chrono::seconds(1234567890)));
        whole = portraitOf(tree);
    }

    const std::string& skipReason() const { return disk.reason; }
    std::string sourcePath() const { return directory.path("tree"); }
    std::string destinationPath() const { return disk.path + "/moved"; }
    bool isWhole(const std::string& path) const { return portraitOf(path) == whole; }
    bool isGone(const std::string& path) const { return portraitOf(path).empty(); }

    const TemporaryDirectory directory;
    const MountedDisk disk;

private:
    DirectorySnapshot whole;
};

TEST(MoveItem, ATreeMovesToAnotherFileSystem) {
    const TwoDisks disks;
    if (!disks.skipReason().empty()) GTEST_SKIP() << disks.skipReason();
    writeFile(disks.disk.path + "/taken", "taken");
    EXPECT_EQ(errorOfMove(disks.sourcePath(), disks.disk.path + "/taken").code, EEXIST);
    EXPECT_TRUE(disks.isWhole(disks.sourcePath()));
    moveItem(disks.sourcePath(), disks.destinationPath());
    EXPECT_TRUE(disks.isWhole(disks.destinationPath()));
    EXPECT_TRUE(disks.isGone(disks.sourcePath()));
    moveItem(disks.destinationPath(), disks.sourcePath());
    EXPECT_TRUE(disks.isWhole(disks.sourcePath()));
}

TEST(MoveItem, ARemovalThatFailsPartOfTheWayIsToldWithThePlaceOfTheWhole) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const TwoDisks disks;
    if (!disks.skipReason().empty()) GTEST_SKIP() << disks.skipReason();
    const Trace trace =
        traceSystemCalls([&] { return errorOfMove(disks.sourcePath(), disks.destinationPath()).localizedDescription; },
                         {{2, FaultKind::fail, EIO, {}, "unlinkat"}});
    EXPECT_TRUE(trace.message.ends_with(" A part of “" + disks.sourcePath() +
                                        "” has been removed already. The whole is at “" + disks.destinationPath() +
                                        "”."))
        << trace.message;
    EXPECT_TRUE(disks.isWhole(disks.destinationPath()));
}

TEST(MoveItem, WhatMayNotLeaveItsFolderIsNotCopiedAway) {
    if (::geteuid() != 0 || !canTraceSystemCalls()) GTEST_SKIP() << "needs root, to be another user for a while";
    struct Row {
        const char* name;
        mode_t aroundMode;
        mode_t treeMode;
        bool isSeenBefore; // without copying anything
    };
    const Row rows[] = {
        {"the folder around it may not be written", 0755, 0777, true},
        {"another's item in a sticky folder", 01777, 0755, false},
        {"the first removal in it fails", 0777, 0755, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TwoDisks disks;
        if (!disks.skipReason().empty()) GTEST_SKIP() << disks.skipReason();
        ASSERT_EQ(::chmod(disks.directory.path().c_str(), row.aroundMode), 0);
        ASSERT_EQ(::chmod((disks.sourcePath() + "/inner").c_str(), 0755), 0);
        ASSERT_EQ(::chmod(disks.sourcePath().c_str(), row.treeMode), 0);
        ASSERT_EQ(::chmod(disks.disk.path.c_str(), 0777), 0);
        const DirectorySnapshot before = portraitOf(disks.sourcePath());
        const Trace trace = traceSystemCalls([&] {
            becomeOrdinaryUser();
            moveItem(disks.sourcePath(), disks.destinationPath());
            return std::string();
        });
        EXPECT_EQ(trace.ending, TraceEnding::threw) << trace.message;
        EXPECT_EQ(std::ranges::count(trace.calls, "mkdir") == 0, row.isSeenBefore);
        EXPECT_EQ(portraitOf(disks.sourcePath()), before);
        EXPECT_TRUE(fs::is_empty(disks.disk.path));
    }
}

} // namespace
