#include "platform/linux/files/RemoveItem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/DeepFolder.h"
#include "tests/support/DirectorySnapshot.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/SystemCallTracer.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

PlatformError errorOfRemoval(const std::string& path) {
    return errorOf([&] { removeItem(path); });
}

// Whether the error tells that a part is gone already.
bool isIncomplete(const PlatformError& error) {
    return error.localizedDescription.find("A part of “") != std::string::npos;
}

TEST(RemoveItem, TheItemGoesAndNothingElse) {
    struct Row {
        const char* name;
        std::function<void(const std::string& item, const std::string& outside)> make;
    };
    const Row rows[] = {
        {"a file", [](auto& item, auto&) { writeFile(item, "text"); }},
        {"a link to a folder outside", [](auto& item, auto& outside) { fs::create_symlink(outside, item); }},
        {"a link that leads nowhere", [](auto& item, auto&) { fs::create_symlink("nowhere", item); }},
        {"a link to itself", [](auto& item, auto&) { fs::create_symlink(item, item); }},
        {"a FIFO", [](auto& item, auto&) { ASSERT_EQ(::mkfifo(item.c_str(), 0600), 0); }},
        {"an empty folder", [](auto& item, auto&) { fs::create_directory(item); }},
        {"a folder with links out of it and up",
         [](auto& item, auto& outside) {
             makeTree(item, "deeper/still/out>" + outside + " deeper/up>.. file>" + outside + "/kept");
         }},
        {"a hard link of a file outside",
         [](auto& item, auto& outside) { fs::create_hard_link(outside + "/kept", item); }},
        {"names of odd bytes",
         [](auto& item, auto&) {
             for (const char* name : {"\xff\xfe", "new\nline", "*", "-rf", " "})
                 writeFile(item + "/" + name + "/x", "");
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        writeFile(directory.path("outside/kept"), "kept");
        const DirectorySnapshot before = snapshotOf(directory.path());
        row.make(directory.path("item"), directory.path("outside"));
        removeItem(directory.path("item"));
        EXPECT_EQ(snapshotOf(directory.path()), before);
    }
}

TEST(RemoveItem, DepthAndWidthKnowNoLimitAndNeedFewDescriptors) {
    const TemporaryDirectory directory;
    const MountedDisk disk(directory.path("disk"), "size=100m"); // for speed; any other place will do
    makeDeepFolder(disk.path + "/deep", 5000);
    fs::create_directory(disk.path + "/wide");
    for (int i = 0; i < 100000; ++i) Descriptor(::creat((disk.path + "/wide/" + std::to_string(i)).c_str(), 0600));
    for (int i = 0; i < 2000; ++i) fs::create_directories(disk.path + "/forked/" + std::to_string(i) + "/below");
    const DescriptorLimit limit(64);
    for (const char* name : {"/deep", "/wide", "/forked"}) removeItem(disk.path + name);
    EXPECT_TRUE(fs::is_empty(disk.path));
}

TEST(RemoveItem, WhatCannotBeRemovedIsNamed) {
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), "text");
    struct Row {
        std::string name;
        int error;
    };
    const Row rows[] = {{"missing", ENOENT}, {"file/below", ENOTDIR}, {std::string("file\0x", 6), ENOENT}};
    for (const Row& row : rows) {
        const PlatformError error = errorOfRemoval(directory.path(row.name));
        EXPECT_EQ(error.code, row.error) << row.name;
        EXPECT_TRUE(error.localizedDescription.starts_with("Cannot remove “" + directory.path(row.name) + "”: "));
        EXPECT_FALSE(isIncomplete(error)) << error.what();
    }
    EXPECT_EQ(readFile(directory.path("file")), "text");
}

TEST(RemoveItem, AnOrdinaryUserLosesNothingToARefusal) {
    if (::geteuid() != 0 || !canTraceSystemCalls()) GTEST_SKIP() << "needs root, to be another user for a while";
    struct Row {
        const char* name;
        const char* fixedFolder; // may not be written
        const char* removed;
        bool isWhole;
    };
    const Row rows[] = {
        {"the folder around the item", "", "tree", true},
        {"the folder with the first item", "tree", "tree", true},
        {"an inner folder, with files beside it", "tree/inner", "tree", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        makeTree(directory.path(), "tree/file tree/inner/file");
        for (const char* name : {"", "tree", "tree/inner"})
            ASSERT_EQ(::chmod(directory.path(name).c_str(), std::string(name) == row.fixedFolder ? 0755 : 0777), 0);
        const DirectorySnapshot before = snapshotOf(directory.path());
        const Trace trace = traceSystemCalls([&] {
            becomeOrdinaryUser();
            const PlatformError error = errorOfRemoval(directory.path(row.removed));
            return std::to_string(error.code) + (isIncomplete(error) ? " in part" : " whole");
        });
        EXPECT_EQ(trace.message, std::to_string(EACCES) + (row.isWhole ? " whole" : " in part"));
        EXPECT_EQ(snapshotOf(directory.path()) == before, row.isWhole);
        EXPECT_TRUE(fs::exists(directory.path("tree/inner/file")));
    }
}

TEST(RemoveItem, AMountedFileSystemKeepsItsFiles) {
    const TemporaryDirectory directory;
    const MountedDisk disk(directory.path("tree/inner/disk"));
    if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
    writeFile(disk.path + "/kept", "kept");
    for (const char* removed : {"tree/inner/disk", "tree"}) {
        const PlatformError error = errorOfRemoval(directory.path(removed));
        EXPECT_EQ(error.code, EBUSY) << removed;
        EXPECT_TRUE(error.localizedDescription.starts_with("Cannot remove “" + disk.path + "”: ")) << error.what();
        EXPECT_EQ(readFile(disk.path + "/kept"), "kept");
    }
}

TEST(RemoveItem, AFolderThatIsMovedAwayMeanwhileTakesNothingElseWithIt) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const TemporaryDirectory directory;
    makeDeepFolder(directory.path("tree"), 40);
    writeFile(directory.path("elsewhere/kept"), "kept");
    const auto moveAway = [&] {
        fs::rename(directory.path("tree/" + deepName + "/" + deepName), directory.path("elsewhere/moved"));
    };
    // By then the walk is at the bottom, and the folders above the moved one are closed.
    const Trace trace =
        traceSystemCalls([&] { return std::to_string(errorOfRemoval(directory.path("tree")).code); },
                         {{.call = 1, .kind = FaultKind::interlude, .interlude = moveAway, .name = "unlinkat"}});
    EXPECT_EQ(trace.message, std::to_string(ENOENT));
    EXPECT_EQ(readFile(directory.path("elsewhere/kept")), "kept");
}

TEST(RemoveItem, WhatOthersRemoveMeanwhileIsNoError) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    for (std::size_t call = 1;; ++call) {
        SCOPED_TRACE("before call " + std::to_string(call));
        const TemporaryDirectory directory;
        makeTree(directory.path(), "tree/inner/file tree/file");
        const auto removeAll = [&] { fs::remove_all(directory.path("tree")); };
        const Trace trace =
            traceSystemCalls([&] { return std::to_string(errorOfRemoval(directory.path("tree")).code); },
                             {{.call = call, .kind = FaultKind::interlude, .interlude = removeAll}});
        if (trace.calls.size() < call) break;
        EXPECT_EQ(trace.message, call <= 3 ? std::to_string(ENOENT) : "0");
        EXPECT_TRUE(fs::is_empty(directory.path()));
    }
}

} // namespace
