#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/DaemonHarness.h"
#include "tests/support/Files.h"
#include "tests/support/ToldEvents.h"

namespace {

namespace fs = std::filesystem;
using namespace EventStreamFlag;
using Lines = std::vector<std::string>;

// The open document "document-1" at a.txt, which another program renames to b.txt.
class DocumentFollowing : public testing::Test {
protected:
    DocumentFollowing() {
        writeFile(path("a.txt"), "one");
        daemon.open(path("a.txt"));
    }

    std::string path(const std::string& name) const { return daemon.directory.path(name); }

    Lines tellRename(const std::string& from, const std::string& to) {
        return lines(daemon.notify({{.path = path(from), .flags = itemRenamed | itemIsFile, .fileID = 7U},
                                    {.path = path(to), .flags = itemRenamed | itemIsFile, .fileID = 7U}}));
    }
    Lines lines(const std::vector<EditorDocumentDaemonEnvelope>& envelopes) const {
        Lines result;
        for (const auto& envelope : envelopes) result.push_back(toldEvent(envelope, daemon.directory.path()));
        return result;
    }

    DaemonHarness daemon;
};

// The client hears of a path together with its text. Were it told of no path where the daemon goes by one, what it is
// told next would be about a file that it does not know.
TEST_F(DocumentFollowing, TheDocumentMovesOnlyIfItsTextCanBeTold) {
    fs::rename(path("a.txt"), path("b.txt"));
    const int reads = daemon.fileManager->callCount(FileOperation::contentsOfFile);
    daemon.fileManager->beforeCall(FileOperation::contentsOfFile, reads + 1,
                                   [&] { fs::rename(path("b.txt"), path("a.txt")); });
    EXPECT_EQ(tellRename("a.txt", "b.txt"), Lines{}) << "it is back where it was";
    writeFile(path("a.txt"), "two");
    EXPECT_EQ(lines(daemon.checkDocument("document-1")), Lines{"updated document-1 v2 a.txt"});

    for (const auto& lack : {std::function<void()>([] {
                                 throw PlatformError{"POSIX", 24, "Too many open files"};
                             }),
                             std::function<void()>([] { throw std::bad_alloc(); })}) {
        fs::rename(path("a.txt"), path("b.txt"));
        const int readsBefore = daemon.fileManager->callCount(FileOperation::contentsOfFile);
        daemon.fileManager->beforeCall(FileOperation::contentsOfFile, readsBefore + 1, lack);
        const Lines told = tellRename("a.txt", "b.txt");
        ASSERT_EQ(told.size(), 1U);
        EXPECT_TRUE(told[0].starts_with("deleted document-1")) << told[0];
        fs::rename(path("b.txt"), path("a.txt"));
        daemon.checkDocument("document-1");
    }
}

} // namespace
