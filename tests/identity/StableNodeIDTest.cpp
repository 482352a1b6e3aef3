#include "identity/StableNodeID.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "identity/Base64.h"
#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/files/LinuxFileIdentification.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace std::string_literals;

TEST(Base64, HasEveryLengthAndValue) {
    const std::map<std::string, std::string> cases{
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"\xFB\xFF\xFE", "+//+"},
        {"\0\0\0"s, "AAAA"},
        {"\xFF", "/w=="},
    };
    for (const auto& [bytes, text] : cases) {
        std::string written = "data:";
        appendBase64(written, bytes);
        EXPECT_EQ(written, "data:" + std::string(text));
    }
}

TEST(StableNodeID, StringOfAnIdentifier) {
    const FileIdentifierUUID uuid{{0, 1, 0x2A, 0x3B, 0x4C, 0x5D, 0x6E, 0x7F, 0x80, 0x9A, 10, 11, 12, 13, 14, 0xFF}};
    EXPECT_EQ(stableNodeIDString(std::uint64_t{18446744073709551615U}), "number:18446744073709551615");
    EXPECT_EQ(stableNodeIDString(FileIdentifierBytes{"\0\xFF"s}), "data:AP8=");
    EXPECT_EQ(stableNodeIDString("data:x"s), "string:data:x");
    EXPECT_EQ(stableNodeIDString(uuid), "uuid:00012A3B-4C5D-6E7F-809A-0A0B0C0D0EFF");
    EXPECT_EQ(stableNodeIDString(OpaqueFileIdentifier{"<a thing>"}), "object:<a thing>");
}

TEST(StableNodeID, OfAListedEntry) {
    const struct {
        const char* name;
        IdentifiedEntry entry;
        const char* nodeID;
    } cases[] = {
        {"identifier", {.fileSystemNumber = 1, .fileNumber = 2, .identifier = "x"}, "string:x"},
        {"numbers", {.fileSystemNumber = 1, .fileNumber = 2}, "inode:1:2"},
        {"no file system", {.fileNumber = 2}, "inode:0:2"},
        {"nothing", {.fileSystemNumber = 1}, "path:/w/a"},
    };
    const LinuxEnvironment environment;
    for (const auto& row : cases) {
        StableNodeIDTable table;
        EXPECT_EQ(stableNodeID("/w/a", row.entry, table, LinuxFileManager(environment)), row.nodeID) << row.name;
    }
}

class StableNodeIDOnDisk : public testing::Test {
protected:
    std::string id(const std::string& name) { return stableNodeID(root.path(name), table, identification, disk); }

    TemporaryDirectory root;
    LinuxEnvironment environment;
    LinuxFileManager disk{environment};
    LinuxFileIdentification identification;
    StableNodeIDTable table;
};

TEST_F(StableNodeIDOnDisk, NothingThere) {
    EXPECT_EQ(id("x/../none"), "path:" + root.path("none"));
    EXPECT_EQ(eventNodeIDHint(root.path("none"), disk), std::nullopt);
    EXPECT_EQ(id("no\0ne"s), "path:" + root.path("no\0ne"s));
}

TEST_F(StableNodeIDOnDisk, SpellingsOfAPathAreOneItem) {
    writeFile(root.path("a"), "");
    EXPECT_EQ(id("a"), id("./b/../a/"));
    EXPECT_EQ(eventNodeIDHint(root.path("a"), disk), eventNodeIDHint(root.path("b/.././a"), disk));
    struct stat status {};
    ASSERT_EQ(::lstat(root.path("a").c_str(), &status), 0);
    EXPECT_EQ(eventNodeIDHint(root.path("a"), disk), "number:" + std::to_string(status.st_ino));
}

TEST_F(StableNodeIDOnDisk, ALinkIsNotWhatItPointsTo) {
    makeTree(root.path(), "a link>a dangling>none");
    EXPECT_NE(id("link"), id("a"));
    EXPECT_NE(eventNodeIDHint(root.path("link"), disk), eventNodeIDHint(root.path("a"), disk));
    EXPECT_FALSE(id("dangling").starts_with("path:"));
}

// The file system may well give the new file the number of the old one.
TEST_F(StableNodeIDOnDisk, AFileMadeAfterADeletionIsAnotherItem) {
    for (int round = 0; round < 20; ++round) {
        writeFile(root.path("a"), "old");
        const std::string old = id("a");
        std::filesystem::remove(root.path("a"));
        writeFile(root.path("z"), "new");
        EXPECT_NE(id("z"), old);
        std::filesystem::remove(root.path("z"));
        table = {};
    }
}

TEST_F(StableNodeIDOnDisk, AReplacedFileKeepsTheIDOfItsName) {
    writeFile(root.path("a"), "old");
    const std::string name = id("a");
    const auto hint = eventNodeIDHint(root.path("a"), disk);
    disk.prepareReplacement(root.path("a"), "new")->commit();
    EXPECT_EQ(id("a"), name);
    EXPECT_NE(eventNodeIDHint(root.path("a"), disk), hint);
}

} // namespace
