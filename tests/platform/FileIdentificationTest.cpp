#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "platform/PlatformError.h"
#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/files/LinuxFileIdentification.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

class FileIdentificationTest : public testing::Test {
protected:
    // Whatever a listing says of an entry is what is answered when one asks for it alone.
    void checkListing(const std::string& directoryPath, const std::set<std::string>& expectedNames) {
        std::set<std::string> names;
        identification.forEachIdentifiedEntry(directoryPath, [&](const IdentifiedEntry& entry) {
            const std::string path = directoryPath + "/" + std::string(entry.name);
            names.emplace(entry.name);
            const FileAttributes attributes = disk.attributesOfItem(path, FollowLinks::no);
            EXPECT_EQ(entry.type, attributes.type) << path;
            EXPECT_EQ(entry.fileNumber, attributes.fileNumber) << path;
            EXPECT_EQ(entry.fileSystemNumber, attributes.fileSystemNumber) << path;
            EXPECT_EQ(entry.identifier, LinuxFileIdentification().fileResourceIdentifier(path)) << path;
            EXPECT_EQ(entry.identifier, identification.fileResourceIdentifier(path)) << path;
        });
        EXPECT_EQ(names, expectedNames);
    }

    TemporaryDirectory root;
    LinuxEnvironment environment;
    LinuxFileManager disk{environment};
    LinuxFileIdentification identification;
};

TEST_F(FileIdentificationTest, AListingTellsWhatASingleQuestionTells) {
    makeTree(root.path(), "file .hidden folder/inside .file.edsave-0123456789abcdef link>file dangling>none fifo|");
    std::filesystem::create_hard_link(root.path("file"), root.path("hard link"));
    checkListing(root.path(), {"file", ".hidden", "folder", "link", "dangling", "hard link", "fifo"});

    makeTree(root.path(), "folder-link>folder");
    checkListing(root.path("folder-link"), {"inside"});
}

TEST_F(FileIdentificationTest, AMountHidesWhatTheDirectoryTells) {
    makeTree(root.path(), "covered elsewhere");
    const MountedDisk mounted(root.path("mounted"));
    if (!mounted.reason.empty()) GTEST_SKIP() << mounted.reason;
    writeFile(root.path("mounted/a"), "");
    ASSERT_EQ(::mount(root.path("elsewhere").c_str(), root.path("covered").c_str(), nullptr, MS_BIND, nullptr), 0);
    checkListing(root.path(), {"covered", "elsewhere", "mounted"});
    checkListing(root.path("mounted"), {"a"});
    ::umount2(root.path("covered").c_str(), MNT_DETACH);
}

TEST_F(FileIdentificationTest, FileSystemsWithoutLastingHandlesTellNumbersOnly) {
    EXPECT_EQ(identification.fileResourceIdentifier("/proc/self"), std::nullopt);
    identification.forEachIdentifiedEntry("/proc/self/attr", [](const IdentifiedEntry& entry) {
        EXPECT_TRUE(entry.fileNumber && entry.fileSystemNumber && !entry.identifier) << entry.name;
    });
}

TEST_F(FileIdentificationTest, AnEntryThatVanishesIsLeftOut) {
    makeTree(root.path(), "a b c");
    int entries = 0;
    identification.forEachIdentifiedEntry(root.path(), [&](const IdentifiedEntry& entry) {
        ++entries;
        for (const char* name : {"a", "b", "c"}) {
            if (entry.name != name) std::filesystem::remove(root.path(name));
        }
    });
    EXPECT_EQ(entries, 1);
}

// As the source of a bind mount can be.
TEST_F(FileIdentificationTest, ADirectoryThatIsRemovedAndStillReachedIsEmpty) {
    makeTree(root.path(), "folder/");
    const Descriptor folder(::open(root.path("folder").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::rmdir(root.path("folder").c_str()), 0);
    checkListing("/proc/self/fd/" + std::to_string(folder.get()), {});
}

TEST_F(FileIdentificationTest, WhatCannotBeListedIsRefused) {
    writeFile(root.path("file"), "");
    for (const char* name : {"none", "file"}) {
        EXPECT_THROW(identification.forEachIdentifiedEntry(root.path(name), [](const IdentifiedEntry&) {}),
                     PlatformError);
    }
}

} // namespace
