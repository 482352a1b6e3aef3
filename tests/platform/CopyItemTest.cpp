#include "platform/linux/files/CopyItem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <filesystem>

#include "platform/linux/files/RemoveItem.h"
#include "tests/support/AccessList.h"
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

std::int64_t errorOfCopy(const std::string& source, const std::string& destination) {
    return errorOf([&] { copyItem(source, destination); }).code;
}

void setTimes(const std::string& path, const timespec& access, const timespec& modification) {
    const timespec times[] = {access, modification};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

void makeFileWithHoles(const std::string& path, off_t size) {
    const Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT, 0644));
    ASSERT_EQ(::pwrite(file.get(), "middle", 6, size / 2), 6);
    ASSERT_EQ(::ftruncate(file.get(), size), 0);
}

// A tree with one of everything that a copy must keep.
void makeVariedTree(const std::string& path) {
    writeFile(path + "/file", "text");
    writeFile(path + "/empty", "");
    writeFile(path + "/program", "#!");
    writeFile(path + "/read-only/inner/file", std::string(300000, 'x'));
    writeFile(path + "/odd \xff\n name", "odd");
    makeFileWithHoles(path + "/holes", 1 << 20);
    fs::create_symlink("file", path + "/link");
    fs::create_symlink("/nowhere/at/all", path + "/dangling");
    fs::create_symlink("loop", path + "/loop");
    fs::create_symlink("../..", path + "/read-only/up");
    ASSERT_EQ(::mkfifo((path + "/fifo").c_str(), 0620), 0);
    ::setxattr((path + "/file").c_str(), "user.tag", "value", 5, 0);
    ::setxattr((path + "/read-only").c_str(), "user.empty", "", 0, 0);
    ASSERT_EQ(::chmod((path + "/program").c_str(), 06755), 0);
    for (const char* name : {"/file", "/empty", "/program", "/link", "/dangling", "/loop", "/fifo",
                             "/read-only/inner/file", "/read-only/inner", "/read-only", ""})
        setTimes(path + name, {1000000000, 1}, {1234567890, 123456789});
    ASSERT_EQ(::chmod((path + "/read-only/inner").c_str(), 0555), 0);
    ASSERT_EQ(::chmod((path + "/read-only").c_str(), 0555), 0);
}

TEST(CopyItem, ACopyIsLikeItsSource) {
    for (const char* name : {"", "/file", "/empty", "/program", "/link", "/dangling", "/loop", "/fifo", "/read-only"}) {
        SCOPED_TRACE(name);
        const TemporaryDirectory directory;
        const std::string source = directory.path("tree"), copy = directory.path("copy");
        makeVariedTree(source);
        copyItem(source + name, copy);
        struct stat status {};
        ASSERT_EQ(::lstat(copy.c_str(), &status), 0);
        EXPECT_TRUE(status.st_atim.tv_sec == 1000000000 && status.st_atim.tv_nsec == 1);
        EXPECT_EQ(portraitOf(copy), portraitOf(source + name));
        EXPECT_EQ(std::distance(fs::directory_iterator(directory.path()), {}), 2);
    }
}

TEST(CopyItem, HolesStayHoles) {
    const TemporaryDirectory directory;
    makeFileWithHoles(directory.path("holes"), 4 << 20);
    { std::ofstream(directory.path("only hole")); }
    fs::resize_file(directory.path("only hole"), 4 << 20);
    for (const std::string name : {"holes", "only hole"}) {
        const std::string copy = directory.path(name + " copy");
        copyItem(directory.path(name), copy);
        EXPECT_EQ(readFile(copy), readFile(directory.path(name)));
        struct stat status {};
        ASSERT_EQ(::stat(copy.c_str(), &status), 0);
        EXPECT_LT(status.st_blocks * 512, 1 << 18) << name;
    }
}

TEST(CopyItem, AFileThatTheSystemMakesUpIsReadToItsEnd) {
    const TemporaryDirectory directory;
    copyItem("/proc/self/status", directory.path("copy"));
    EXPECT_NE(readFile(directory.path("copy")).find("Name:"), std::string::npos);
}

TEST(CopyItem, TheListOfTheFolderAroundItGivesNobodyAccess) {
    const TemporaryDirectory directory;
    makeTree(directory.path(), "tree/file open/");
    if (!setAccessList(directory.path("open"), "system.posix_acl_default"))
        GTEST_SKIP() << "no access lists in " << directory.path();
    for (const char* name : {"tree", "tree/file"}) {
        copyItem(directory.path(name), directory.path("open/copy"));
        EXPECT_EQ(portraitOf(directory.path("open/copy")), portraitOf(directory.path(name)));
        removeItem(directory.path("open/copy"));
    }
    copyItem(directory.path("open"), directory.path("copy"));
    EXPECT_EQ(portraitOf(directory.path("copy")), portraitOf(directory.path("open")));
}

TEST(CopyItem, RefusalsMakeNothing) {
    struct Row {
        const char* name;
        const char* source;
        const char* destination;
        int error;
    };
    const Row rows[] = {
        {"nothing there", "missing", "new", ENOENT},
        {"nowhere to go", "file", "missing/new", ENOENT},
        {"a file is no folder", "file", "file/new", ENOTDIR},
        {"a taken name", "file", "other", EEXIST},
        {"a folder over an empty folder", "tree", "empty", EEXIST},
        {"a name taken by a link that leads nowhere", "file", "dangling", EEXIST},
        {"a name taken by a link to the source", "file", "to-file", EEXIST},
        {"a file onto itself", "file", "file", EINVAL},
        {"a folder onto itself", "tree", "tree", EINVAL},
        {"a folder into itself", "tree", "tree/new", EINVAL},
        {"a folder into itself, deeper", "tree", "tree/inner/new", EINVAL},
        {"a folder into itself, to a place that is not there", "tree", "tree/missing/new", EINVAL},
        {"a folder into itself through a link", "tree", "to-inner/new", EINVAL},
        {"a socket", "socket", "new", ENOTSUP},
        {"a tree with a socket", "special", "new", ENOTSUP},
        {"a device", "/dev/null", "new", ENOTSUP},
        {"a name that is too long", "tree", "l", ENAMETOOLONG},
    };
    const TemporaryDirectory directory;
    makeTree(directory.path(),
             "file other tree/inner/file special/a/file special/z/file special/s= socket= empty/ dangling>nowhere "
             "to-file>file to-inner>tree/inner");
    const DirectorySnapshot before = portraitOf(directory.path());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string source = row.source[0] == '/' ? row.source : directory.path(row.source);
        const std::string destination =
            row.error == ENAMETOOLONG ? directory.path(std::string(256, 'n')) : directory.path(row.destination);
        EXPECT_EQ(errorOfCopy(source, destination), row.error);
        DirectorySnapshot after = portraitOf(directory.path());
        after[""] = before.at(""); // the undone copy shows in the folder's time
        EXPECT_EQ(after, before);
    }
}

TEST(CopyItem, ATreeThatSeesItsOwnCopyThroughAMountIsRefused) {
    const TemporaryDirectory directory;
    for (const char* name : {"tree/inner/mount", "other"}) fs::create_directories(directory.path(name));
    if (::mount(directory.path("other").c_str(), directory.path("tree/inner/mount").c_str(), "", MS_BIND, nullptr) != 0)
        GTEST_SKIP() << "cannot mount";
    EXPECT_EQ(errorOfCopy(directory.path("tree"), directory.path("other/copy")), EINVAL);
    ::umount2(directory.path("tree/inner/mount").c_str(), MNT_DETACH);
    EXPECT_TRUE(fs::is_empty(directory.path("other")));
}

TEST(CopyItem, DepthKnowsNoLimitAndNeedsFewDescriptors) {
    const TemporaryDirectory directory;
    const MountedDisk disk(directory.path("disk"), "size=100m"); // for speed; any other place will do
    makeDeepFolder(disk.path + "/deep", 5000);
    const DescriptorLimit limit(64);
    copyItem(disk.path + "/deep", disk.path + "/copy");
    EXPECT_EQ(depthOfFolder(disk.path + "/copy"), 5000U);
    for (const char* name : {"/deep", "/copy"}) removeItem(disk.path + name);
}

TEST(CopyItem, AnOrdinaryUserCopiesWhatMayBeReadOrNothing) {
    if (::geteuid() != 0 || !canTraceSystemCalls()) GTEST_SKIP() << "needs root, to be another user for a while";
    struct Row {
        const char* name;
        const char* closed; // to be read by the owner, root, alone
        const char* copied;
        int error;
        std::vector<SystemCallFault> faults{};
    };
    const Row rows[] = {
        {"a folder that may not be read, read-only ones beside it", "tree/closed", "tree", EACCES},
        {"a file that may not be read", "tree/file", "tree", EACCES},
        {"another's program", "", "tree/program", 0},
        {"read-only folders that are whole", "", "tree/read-only", EIO, {{1, FaultKind::fail, EIO, {}, "renameat2"}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        makeVariedTree(directory.path("tree"));
        fs::create_directory(directory.path("tree/closed"));
        fs::create_directory(directory.path("target"));
        ASSERT_EQ(::chmod(directory.path().c_str(), 0755), 0);
        ASSERT_EQ(::chmod(directory.path("target").c_str(), 0777), 0);
        if (*row.closed) {
            ASSERT_EQ(::chmod(directory.path(row.closed).c_str(), 0), 0);
        }
        const Trace trace = traceSystemCalls(
            [&] {
                becomeOrdinaryUser();
                return std::to_string(errorOfCopy(directory.path(row.copied), directory.path("target/copy")));
            },
            row.faults);
        EXPECT_EQ(trace.message, std::to_string(row.error));
        EXPECT_EQ(fs::is_empty(directory.path("target")), row.error != 0);
        if (row.error == 0) {
            EXPECT_EQ(fs::status(directory.path("target/copy")).permissions(), fs::perms(0755)); // not set-user-ID
        }
    }
}

} // namespace
