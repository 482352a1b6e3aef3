#include "platform/linux/files/AtomicSave.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/linux/files/StableRead.h"
#include "tests/support/AccessList.h"
#include "tests/support/DirectorySnapshot.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/SystemCallTracer.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

const std::string oldBytes(5000, 'o');
const std::string newBytes(7000, 'n');

FileAttributes replaceFile(const std::string& path, std::string_view data) {
    return prepareReplacement(path, data)->commit();
}

mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

Trace traceSave(const std::string& path, const std::vector<SystemCallFault>& faults = {}) {
    return traceSystemCalls(
        [&] {
            replaceFile(path, newBytes);
            return std::string();
        },
        faults);
}

TEST(AtomicSave, FailuresThatCostTheFileAreReportedAndOthersAreNot) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    struct Row {
        const char* name;
        const char* call;
        int error;
        TraceEnding ending;
    };
    const Row rows[] = {
        {"an interrupted write goes on", "write", EINTR, TraceEnding::returned},
        {"the owner may not be given away", "fchown", EPERM, TraceEnding::returned},
        {"the old owner's quota is used up", "fchown", EDQUOT, TraceEnding::threw},
        {"no extended attributes here", "llistxattr", ENOTSUP, TraceEnding::returned},
        {"an attribute that may not be set", "fsetxattr", EPERM, TraceEnding::returned},
        {"no room for an attribute", "fsetxattr", ENOSPC, TraceEnding::threw},
        {"an unreadable attribute", "lgetxattr", EIO, TraceEnding::threw},
        {"an ACL that stays", "fremovexattr", EIO, TraceEnding::threw},
        {"no modes here", "fchmod", EPERM, TraceEnding::returned},
        {"a mode that is lost", "fchmod", EIO, TraceEnding::threw},
        {"no flushing here", "fdatasync", EINVAL, TraceEnding::returned},
        {"an interrupted flush goes on", "fdatasync", EINTR, TraceEnding::returned},
        {"a file that cannot be looked at", "fstat", EIO, TraceEnding::threw},
        {"bytes that never reach the disk", "fdatasync", EIO, TraceEnding::threw},
        {"a write that shows as lost only now", "close", EIO, TraceEnding::threw},
        {"a directory that cannot be flushed", "fsync", EIO, TraceEnding::returned},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        writeFile(directory.path("file"), oldBytes);
        ::setxattr(directory.path("file").c_str(), "user.tag", "value", 5, 0);
        const Trace trace = traceSave(directory.path("file"), {{1, FaultKind::fail, row.error, {}, row.call}});
        if (std::ranges::count(trace.calls, row.call) == 0) continue; // no attributes on this file system
        EXPECT_EQ(trace.ending, row.ending) << trace.message;
        EXPECT_EQ(trace.errorNumber, row.ending == TraceEnding::threw ? row.error : 0);
    }
}

TEST(AtomicSave, ASaveMakesNoCallTooMany) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const TemporaryDirectory directory;
    EXPECT_EQ(traceSave(directory.path("file")).calls.size(), 13u);
    EXPECT_EQ(traceSave(directory.path("file")).calls.size(), 17u);
}

TEST(AtomicSave, WhatIsNoFileIsRefusedAndLeftAlone) {
    const TemporaryDirectory directory;
    makeTree(directory.path(),
             "file directory/ fifo| socket= toDirectory>directory toFifo>fifo toSocket>socket loop1>loop2 loop2>loop1 "
             "toMissing>missing/file");
    const DirectorySnapshot before = snapshotOf(directory.path());
    struct Row {
        std::string name;
        int error;
    };
    const Row rows[] = {
        {"directory", EISDIR},
        {"fifo", EOPNOTSUPP},
        {"toDirectory", EISDIR},
        {"toFifo", EOPNOTSUPP},
        {"loop1", ELOOP},
        {"toSocket", EOPNOTSUPP},
        {"missing/file", ENOENT},
        {"file/x", ENOTDIR},
        {"file/", ENOTDIR},
        {"new/", ENOENT},
        {"toMissing", ENOENT},
        {std::string("file\0x", 6), ENOENT},
        {std::string(256, 'x'), ENAMETOOLONG},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const PlatformError error = errorOf([&] { replaceFile(directory.path(row.name), newBytes); });
        EXPECT_EQ(error.code, row.error) << error.what();
        EXPECT_EQ(snapshotOf(directory.path()), before);
    }
}

TEST(AtomicSave, ALinkStaysAndItsTargetIsReplaced) {
    struct Row {
        const char* name;
        std::vector<std::pair<std::string, std::string>> links; // name and destination, "@" is the directory
        const char* saved;
    };
    const Row rows[] = {
        {"relative", {{"link", "folder/file"}}, "link"},
        {"absolute", {{"link", "@/folder/file"}}, "link"},
        {"relative to the link's own folder", {{"folder/link", "file"}}, "folder/link"},
        {"up and down", {{"folder/link", "../folder/file"}}, "folder/link"},
        {"a chain", {{"one", "two"}, {"two", "folder/three"}, {"folder/three", "file"}}, "one"},
        {"a folder on the way", {{"way", "folder"}}, "way/file"},
    };
    for (const Row& row : rows) {
        for (const bool isThere : {true, false}) {
            SCOPED_TRACE(std::string(row.name) + (isThere ? "" : ", leading nowhere"));
            const TemporaryDirectory directory;
            std::filesystem::create_directory(directory.path("folder"));
            if (isThere) writeFile(directory.path("folder/file"), oldBytes);
            for (auto [name, destination] : row.links) {
                if (destination[0] == '@') destination.replace(0, 1, directory.path());
                std::filesystem::create_symlink(destination, directory.path(name));
            }
            DirectorySnapshot before = snapshotOf(directory.path());
            replaceFile(directory.path(row.saved), newBytes);
            EXPECT_EQ(readFile(directory.path("folder/file")), newBytes);
            DirectorySnapshot after = snapshotOf(directory.path());
            before.erase("folder/file"), after.erase("folder/file");
            EXPECT_EQ(after, before);
        }
    }
}

TEST(AtomicSave, ModeAndOwnerAreKept) {
    for (const mode_t mode : {0600u, 0644u, 0755u, 0444u, 0200u, 04755u, 02750u, 01666u}) {
        SCOPED_TRACE(mode);
        const TemporaryDirectory directory;
        const std::string path = directory.path("file");
        writeFile(path, oldBytes);
        const bool isRoot = ::geteuid() == 0;
        if (isRoot) {
            ASSERT_EQ(::chown(path.c_str(), 1234, 5678), 0);
        }
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        replaceFile(path, newBytes);
        EXPECT_EQ(modeOf(path), mode);
        struct stat status {};
        ASSERT_EQ(::stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, isRoot ? 1234 : ::geteuid());
        EXPECT_EQ(status.st_gid, isRoot ? 5678 : ::getegid());
    }
}

TEST(AtomicSave, ANewFileGetsWhatTheUmaskLeaves) {
    const TemporaryDirectory directory;
    const mode_t before = ::umask(027);
    replaceFile(directory.path("file"), newBytes);
    ::umask(before);
    EXPECT_EQ(modeOf(directory.path("file")), 0640u);
}

TEST(AtomicSave, AnOrdinaryUserGetsNoMoreThanTheFoldersAllow) {
    if (::geteuid() != 0 || !canTraceSystemCalls()) GTEST_SKIP() << "needs root, to be another user for a while";
    struct Row {
        const char* name;
        mode_t folderMode;
        uid_t fileOwner;
        mode_t fileMode;
        int error; // 0: saved
        mode_t modeAfterwards;
    };
    const Row rows[] = {
        {"a folder that may not be written", 0755, ordinaryUserID, 0644, EACCES, 0644},
        {"another's file in a sticky folder", 01777, 0, 0666, EPERM, 0666},
        {"another's file becomes ours", 0777, 0, 0640, 0, 0640},
        {"set-id bits do not pass to a new owner", 0777, 0, 06755, 0, 0755},
        {"own file, set-id bits stay", 0777, ordinaryUserID, 06755, 0, 06755},
        {"own file that may not be read", 0777, ordinaryUserID, 0200, 0, 0200},
        {"own file in a folder that may not be listed", 0333, ordinaryUserID, 0644, 0, 0644},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        const std::string path = directory.path("folder/file");
        writeFile(path, oldBytes);
        ASSERT_EQ(::chown(path.c_str(), row.fileOwner, row.fileOwner), 0);
        ASSERT_EQ(::chmod(path.c_str(), row.fileMode), 0);
        ASSERT_EQ(::chmod(directory.path("folder").c_str(), row.folderMode), 0);
        ASSERT_EQ(::chmod(directory.path().c_str(), 0755), 0);
        const DirectorySnapshot before = snapshotOf(directory.path());
        const Trace trace = traceSystemCalls([&] {
            becomeOrdinaryUser();
            replaceFile(path, newBytes);
            return std::string();
        });
        EXPECT_EQ(trace.errorNumber, row.error) << trace.message;
        EXPECT_EQ(modeOf(path), row.modeAfterwards);
        if (row.error != 0)
            EXPECT_EQ(snapshotOf(directory.path()), before);
        else
            EXPECT_EQ(readFile(path), newBytes);
        EXPECT_EQ(snapshotOf(directory.path()).size(), before.size());
    }
}

// In shared folders the kernel does not follow a link that belongs neither to the user nor to the folder's owner.
TEST(AtomicSave, ALinkThatTheKernelRefusesToFollowIsNotFollowedByHand) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), oldBytes);
    std::filesystem::create_symlink("file", directory.path("link"));
    const DirectorySnapshot before = snapshotOf(directory.path());
    const Trace trace = traceSave(directory.path("link"), {{1, FaultKind::fail, EACCES, {}, "stat"}});
    EXPECT_EQ(trace.errorNumber, EACCES) << trace.message;
    EXPECT_EQ(snapshotOf(directory.path()), before);
}

TEST(AtomicSave, ExtendedAttributesAndAccessListsAreKeptAndNoneAreAdded) {
    const TemporaryDirectory directory;
    const std::string tagged = directory.path("tagged"), listed = directory.path("listed"),
                      plain = directory.path("plain"), fresh = directory.path("fresh");
    for (const std::string& path : {tagged, listed, plain}) writeFile(path, oldBytes);
    const std::string large(2000, 'x');
    if (::setxattr(tagged.c_str(), "user.large", large.data(), large.size(), 0) != 0 ||
        ::setxattr(tagged.c_str(), "user.empty", "", 0, 0) != 0)
        GTEST_SKIP() << "no extended attributes in " << directory.path() << ": " << std::strerror(errno);
    if (!setAccessList(listed, "system.posix_acl_access") ||
        !setAccessList(directory.path(), "system.posix_acl_default"))
        GTEST_SKIP() << "no access lists in " << directory.path() << ": " << std::strerror(errno);
    for (const std::string& path : {tagged, listed, plain}) {
        SCOPED_TRACE(path);
        const std::string attributes = extendedAttributes(path);
        const mode_t mode = modeOf(path);
        replaceFile(path, newBytes);
        EXPECT_EQ(extendedAttributes(path), attributes);
        EXPECT_EQ(modeOf(path), mode);
    }
    replaceFile(fresh, newBytes);
    EXPECT_NE(extendedAttributes(fresh).find("posix_acl_access"), std::string::npos);
}

TEST(AtomicSave, TheLongestNamesFit) {
    const TemporaryDirectory directory;
    std::string threeByteCharacters;
    while (threeByteCharacters.size() < 255) threeByteCharacters += "日";
    for (const std::string& name : {std::string(255, 'x'), threeByteCharacters, std::string(255, '\xff')}) {
        replaceFile(directory.path(name), oldBytes);
        replaceFile(directory.path(name), newBytes);
        EXPECT_EQ(readFile(directory.path(name)), newBytes);
    }
    EXPECT_EQ(snapshotOf(directory.path()).size(), 3u);
}

TEST(AtomicSave, TheReturnedAttributesAreThoseOfTheFileUntilSomeoneElseWrites) {
    const TemporaryDirectory directory;
    const std::string path = directory.path("file");
    for (const char* which : {"new", "existing"}) {
        SCOPED_TRACE(which);
        const FileAttributes written = replaceFile(path, newBytes);
        EXPECT_EQ(written, contentsOfFile(path, 1 << 20).attributes);
        EXPECT_EQ(written.size, newBytes.size());
    }
    if (!canTraceSystemCalls()) return;
    const Trace trace = traceSystemCalls(
        [&] {
            const FileAttributes written = replaceFile(path, newBytes);
            return std::string(written == contentsOfFile(path, 1 << 20).attributes ? "overlooked" : "noticed");
        },
        {{1, FaultKind::interlude, 0, [&] { writeFile(path, "foreign"); }, "fsync"}});
    EXPECT_EQ(trace.message, "noticed");
}

} // namespace
