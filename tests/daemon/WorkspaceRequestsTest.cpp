#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Files.h"
#include "tests/support/WorkspaceTest.h"

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

namespace fs = std::filesystem;

constexpr auto delayVariable = "MARBLEFERN_EDITOR_DOCUMENT_DAEMON_EVENT_NODE_INDEX_DELAY_MS";

class WorkspaceRequests : public WorkspaceTest {
protected:
    Lines open() { return send({.command = Command::openWorkspace}); }
    Lines children(const std::string& directory) {
        return send({.command = Command::loadWorkspaceChildren, .path = directory});
    }
    // What a mutation in the directory tells of listings: those that the daemon holds for loaded.
    Lines listingsAfterChangeIn(const std::string& directory) {
        Lines lines = send({.command = Command::createWorkspaceFile, .path = directory});
        lines.erase(lines.begin());
        return lines;
    }
};

TEST_F(WorkspaceRequests, ListsInTheOrderOfAFileBrowser) {
    const struct {
        const char* name;
        std::string before;
        std::string listing;
    } cases[] = {
        {"folders first, numbers by value", "b.txt A/ a10 a2", "A/ a2 a10 b.txt"},
        {"case only where nothing else differs", "b A c B/ a", "B/ A a b c"},
        {"hidden items", ".DS_Store .marblefern/ .marblefernlogs/ .logs .gitignore .git/", ".git/ .gitignore"},
        {"a folder named like a hidden file", ".DS_Store/x .logs/x x/", "x/"},
        {"links as they are", "d/ to-d>d to-f>f gone>nowhere f", "d/ f gone to-d to-f"},
        {"nothing", "", ""},
    };
    for (const auto& row : cases) {
        fs::remove_all(root);
        fs::create_directory(root);
        make(row.before);
        EXPECT_EQ(open(), Lines{"listing .:" + (row.listing.empty() ? "" : " " + row.listing)}) << row.name;
    }
}

TEST_F(WorkspaceRequests, RefusalsComeInTheOrderOfTheChecks) {
    make("d/ f");
    const std::string noRoot = "failure: Missing workspace root path.";
    const std::string noDirectory = "failure: Missing workspace directory path.";
    const std::string rootGone = "failure: The selected project root is unavailable.";
    const std::string outside = "failure: The selected path is outside the active project root.";
    const std::string directoryGone = "failure: The requested directory is unavailable.";
    const struct {
        const char* name;
        EditorDocumentDaemonRequest request;
        std::string line;
    } cases[] = {
        {"open without a root", {.command = Command::openWorkspace, .rootPath = " \n"}, noRoot},
        {"open of nothing", {.command = Command::openWorkspace, .rootPath = path("x")}, rootGone},
        {"open of a file", {.command = Command::openWorkspace, .rootPath = path("f")}, rootGone},
        {"open of a path with a NUL", {.command = Command::openWorkspace, .rootPath = path("d\0"s)}, rootGone},
        {"close without a root", {.command = Command::closeWorkspace, .rootPath = ""}, noRoot},
        {"close of what is not open", {.command = Command::closeWorkspace, .rootPath = path("x/.")}, "closed x"},
        {"children without a root",
         {.command = Command::loadWorkspaceChildren, .rootPath = "", .path = "d"},
         noDirectory},
        {"children without a path", {.command = Command::loadWorkspaceChildren}, noDirectory},
        {"children with a blank path", {.command = Command::loadWorkspaceChildren, .path = " "}, noDirectory},
        {"children outside", {.command = Command::loadWorkspaceChildren, .path = "../w2"}, outside},
        {"children outside by dots", {.command = Command::loadWorkspaceChildren, .path = "d/../.."}, outside},
        {"children of nothing", {.command = Command::loadWorkspaceChildren, .path = "x"}, directoryGone},
        {"children of a file", {.command = Command::loadWorkspaceChildren, .path = "f"}, directoryGone},
        {"children in a root that is gone",
         {.command = Command::loadWorkspaceChildren, .rootPath = path("x"), .path = "x"},
         directoryGone},
    };
    for (const auto& row : cases) EXPECT_EQ(send(row.request), Lines{row.line}) << row.name;
    daemon.advanceIndexing();
    EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{}) << "a refused request opens nothing";
}

TEST_F(WorkspaceRequests, OneRootHasOneName) {
    make("a");
    daemon.environment->variables["HOME"] = daemon.directory.path();
    EXPECT_EQ(send({.command = Command::openWorkspace, .rootPath = " ~/./w//\n"}), Lines{"listing .: a"});
    EXPECT_EQ(listingsAfterChangeIn("."), Lines{"listing .: a untitled"});
    EXPECT_EQ(send({.command = Command::closeWorkspace, .rootPath = "~/w/"}), Lines{"closed ."});
    EXPECT_EQ(listingsAfterChangeIn("."), Lines{});
}

TEST_F(WorkspaceRequests, AFailedListingLeavesTheRegistryAlone) {
    make("d/e/ d/f");
    const auto loseWhileListing = [&](const std::string& directory, int questions) {
        const int asked = daemon.fileManager->callCount(FileOperation::isDirectory);
        daemon.fileManager->beforeCall(FileOperation::isDirectory, asked + questions,
                                       [this, directory] { fs::rename(path(directory), path(directory) + "2"); });
    };
    const Lines unavailable = {"failure: The requested directory is unavailable."};
    loseWhileListing(".", 2);
    EXPECT_EQ(open(), unavailable);
    fs::rename(root + "2", root);
    daemon.advanceIndexing();
    EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{});

    load("d");
    loseWhileListing("d/e", 2);
    EXPECT_EQ(children("d/e"), unavailable);
    EXPECT_EQ(listingsAfterChangeIn("d"), Lines{"listing d: e2/ f untitled"}) << "d is still loaded";
}

TEST_F(WorkspaceRequests, ReopeningKeepsWhatIsExpandedAndClosingForgetsIt) {
    make("d/e/f g/");
    load("d d/e");
    EXPECT_EQ(open(), Lines{"listing .: d/ g/"});
    EXPECT_EQ(listingsAfterChangeIn("d/e"), Lines{"listing d/e: f untitled"});
    EXPECT_EQ(listingsAfterChangeIn("g"), Lines{}) << "nothing loaded has changed";
    send({.command = Command::closeWorkspace});
    open();
    EXPECT_EQ(listingsAfterChangeIn("d/e"), Lines{});
}

TEST_F(WorkspaceRequests, ExpandingADirectoryOfAnUnknownRootOpensTheRoot) {
    make("d/f");
    EXPECT_EQ(children("d"), Lines{"listing d: f"});
    EXPECT_EQ(listingsAfterChangeIn("."), Lines{"listing .: d/ untitled"});
    daemon.advanceIndexing();
    EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{root});
    children("d");
    daemon.advanceIndexing();
    EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{root}) << "what is indexed is not indexed again";
}

TEST_F(WorkspaceRequests, ADirectoryIsRememberedOnlyIfALoadedListingShowsIt) {
    make("d/e/f");
    open();
    EXPECT_EQ(children("d/e"), Lines{"listing d/e: f"});
    EXPECT_EQ(listingsAfterChangeIn("d/e"), Lines{}) << "d is not loaded";
    children("d");
    EXPECT_EQ(listingsAfterChangeIn("d/e"), Lines{}) << "d/e was loaded before d";
    children("d/e");
    EXPECT_EQ(listingsAfterChangeIn("d/e"), Lines{"listing d/e: f untitled untitled1 untitled2"});
}

TEST_F(WorkspaceRequests, EveryOpeningBuildsTheIndexAfterTheDelay) {
    const struct {
        const char* name;
        std::optional<std::string> value;
        std::chrono::milliseconds delay;
    } cases[] = {
        {"unset", std::nullopt, 0ms},
        {"text", "abc", 0ms},
        {"number", "250", 250ms},
    };
    for (const auto& row : cases) {
        daemon.directoryWalking->walkedPaths.clear();
        daemon.environment->variables.erase(delayVariable);
        if (row.value) daemon.environment->variables[delayVariable] = *row.value;
        open();
        EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{}) << "the response does not wait";
        if (row.delay > 0ms) {
            EXPECT_EQ(daemon.advanceIndexing(row.delay - 1ms), Envelopes{}) << row.name;
            EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{}) << row.name;
        }
        EXPECT_EQ(daemon.advanceIndexing(row.delay > 0ms ? 1ms : 0ms), Envelopes{}) << row.name;
        EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{root}) << row.name;
    }
}

TEST_F(WorkspaceRequests, ClosingWithBuildsPendingLeavesNothing) {
    make("d/f");
    daemon.environment->variables[delayVariable] = "100";
    for (int round = 0; round < 3; ++round) {
        load("d");
        send({.command = Command::closeWorkspace});
    }
    EXPECT_EQ(daemon.advanceIndexing(100ms), Envelopes{});
    EXPECT_EQ(listingsAfterChangeIn("d"), Lines{});
    // A build that lands in a root that is open again finds it as it should be.
    open();
    send({.command = Command::closeWorkspace});
    load("d");
    EXPECT_EQ(daemon.advanceIndexing(200ms), Envelopes{});
    EXPECT_EQ(listingsAfterChangeIn("d"), Lines{"listing d: f untitled untitled1"});
}

TEST_F(WorkspaceRequests, AClosedRootForgetsItsIdentitiesUnlessAnotherCoversIt) {
    make("d/a b");
    load("d");
    const std::string inner = nodeID("d/a");
    send({.command = Command::openWorkspace, .rootPath = path("d")});
    send({.command = Command::closeWorkspace, .rootPath = path("d")});
    // A replaced file keeps its ID only as long as its name is remembered.
    const auto replace = [&](const std::string& file) {
        writeFile(path("new"), "other");
        fs::rename(path("new"), path(file));
    };
    replace("d/a");
    EXPECT_EQ(nodeID("d/a"), inner);
    send({.command = Command::closeWorkspace});
    replace("d/a");
    load("d");
    EXPECT_NE(nodeID("d/a"), inner);
}

TEST_F(WorkspaceRequests, ASavedFileStaysTheSameItem) {
    make("a b");
    load();
    const std::string before = nodeID("a");
    const std::string document = openDocument("a");
    EXPECT_EQ(daemon.save(document, "ours", 1).success, true);
    fs::rename(path("a"), path("c"));
    EXPECT_EQ(nodeID("c"), before) << "renamed outside right after the save";
}

} // namespace
