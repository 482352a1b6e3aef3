#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "tests/support/DaemonHarness.h"
#include "tests/support/Files.h"
#include "tests/support/ToldEvents.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using namespace EventStreamFlag;
using Lines = std::vector<std::string>;
using Envelopes = std::vector<EditorDocumentDaemonEnvelope>;

// A daemon that watches w, in which these are open documents: a.txt (document-1), sub/b.txt (document-2) and
// sub/deep/c.txt (document-3). The listings of w and sub are loaded. Names are relative to w, which itself is ".".
//
// Stories are steps divided by ";". The client may "load NAME", or give the name of another command with a path and a
// destination, or a name. On the disk "have NAME TEXT", "lose NAME" and "move FROM TO" do what they say. The system
// tells, in one batch, of what was "created", "modified" or "removed", of a root that is "changed", of both halves of
// what was "renamed FROM TO" or of the new one alone, "arrived", and, where it knows no more, to "look".
class Watched {
public:
    enum class Index { built, notYetBuilt };

    explicit Watched(Index index = Index::built) {
        makeTree(path("."), "a.txt sub/b.txt sub/deep/c.txt other/d.txt ../outside/o.txt");
        for (const char* name : {"a.txt", "sub/b.txt", "sub/deep/c.txt"}) daemon.open(path(name));
        rootListing = *daemon.openWorkspace(path(".")).workspaceDirectory;
        subListing = load("sub");
        if (index == Index::built) daemon.buildIndexes();
        daemon.fileIdentification->listingCounts.clear();
    }

    std::string path(const std::string& name) const {
        const std::string path = fs::path(daemon.directory.path("w/" + name)).lexically_normal();
        return path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
    }
    WorkspaceBrowserDirectoryPayload load(const std::string& name) {
        return *daemon.loadChildren(path("."), path(name)).workspaceDirectory;
    }

    EventStreamBatch happen(const std::string& story) {
        static const std::map<std::string, std::uint32_t> flagsByVerb{
            {"created", itemCreated}, {"modified", itemModified}, {"removed", itemRemoved},
            {"arrived", itemRenamed}, {"changed", rootChanged},   {"look", 0}};
        EventStreamBatch batch;
        std::istringstream steps(story);
        for (std::string step; std::getline(steps, step, ';');) {
            std::istringstream words(step);
            std::string verb, name, other;
            words >> verb >> name >> other;
            if (verb == "load") {
                load(name);
                daemon.fileIdentification->listingCounts.clear();
            } else if (verb == "have") {
                writeFile(path(name), other);
            } else if (verb == "lose") {
                fs::remove_all(path(name));
            } else if (verb == "move") {
                fs::create_directories(fs::path(path(other)).parent_path());
                fs::rename(path(name), path(other));
            } else if (const auto command = enumerationNamed<EditorDocumentRequestCommand>(verb)) {
                daemon.send({.command = *command,
                             .rootPath = path("."),
                             .path = path(name),
                             .destinationPath = path(other),
                             .name = other});
            } else if (verb == "renamed") {
                for (const std::string& half : {name, other}) {
                    batch.push_back(about(other, itemRenamed));
                    batch.back().path = path(half);
                }
            } else {
                batch.push_back(about(name, flagsByVerb.at(verb)));
            }
        }
        return batch;
    }

    Lines tell(const std::string& story) { return lines(daemon.notify(happen(story))); }
    Lines after(std::chrono::nanoseconds time) { return lines(daemon.advance(time)); }
    Lines built() { return lines(daemon.buildIndexes()); }
    Lines lines(const Envelopes& envelopes) const {
        Lines result;
        for (const auto& envelope : envelopes) result.push_back(toldEvent(envelope, path(".")));
        return result;
    }

    static std::string nodeID(const WorkspaceBrowserDirectoryPayload& listing, const std::string& name) {
        const auto node = std::ranges::find(listing.nodes, name, &WorkspaceBrowserNodePayload::name);
        return node == listing.nodes.end() ? "none" : node->nodeID;
    }

    DaemonHarness daemon;
    WorkspaceBrowserDirectoryPayload rootListing;
    WorkspaceBrowserDirectoryPayload subListing;

private:
    // As the system says it: with type and number of what is there now, the number only where something is left.
    EventStreamNotification about(const std::string& name, std::uint32_t flag) const {
        EventStreamNotification told{.path = path(name), .flags = flag};
        struct stat status {};
        if (flag == 0 || ::lstat(path(name).c_str(), &status) != 0) return told;
        told.flags |= S_ISDIR(status.st_mode) ? itemIsDir : itemIsFile;
        if (flag != itemRemoved) told.fileID = std::uint64_t{status.st_ino};
        return told;
    }
};

// The plain changes are made for real, through the executable.
TEST(WatchEvents, EachChangeIsToldAsWhatItIs) {
    const struct {
        const char* name;
        const char* story;
        Lines expected;
    } cases[] = {
        {"another file in its place",
         "have ../outside/a.txt a.txt; move ../outside/a.txt a.txt; modified a.txt",
         {"updated document-1 v2 a.txt"}},
        {"nothing but a rumour", "look sub", {}},
        {"a rumour that is true", "have sub/n; look sub", {"children sub: deep/ b.txt n", "createdFile sub/n"}},
        {"the same, told as a rename",
         "move a.txt a.txt~; have a.txt new; renamed a.txt a.txt~; created a.txt",
         {"children .: other/ sub/ a.txt a.txt~", "createdFile a.txt", "createdFile a.txt~", "renamed a.txt > a.txt~",
          "updated document-1 v2 a.txt"}},
        {"a folder deleted with documents at two depths",
         "lose sub; removed sub",
         {"children .: other/ a.txt", "deleted sub", "deleted document-2", "deleted document-3"}},
        {"an expanded folder renamed and rumoured about",
         "move sub tub; look tub; look sub",
         {"updated document-3 v2 tub/deep/c.txt", "updated document-2 v2 tub/b.txt", "children .: other/ tub/ a.txt",
          "children tub: deep/ b.txt", "renamed sub > tub"}},
        {"an expanded folder moved into another",
         "load other; move sub other/sub; renamed sub other/sub",
         {"updated document-3 v2 other/sub/deep/c.txt", "updated document-2 v2 other/sub/b.txt",
          "children .: other/ a.txt", "children other: sub/ d.txt", "children other/sub: deep/ b.txt",
          "createdFolder other/sub", "moved sub > other/sub", "deleted sub"}},
        {"a folder replaced by another",
         "move sub ../outside/sub; have sub/b.txt new; removed sub; created sub",
         {"children .: other/ sub/ a.txt", "children sub: b.txt", "deleted sub", "createdFolder sub",
          "deleted sub/b.txt", "createdFile sub/b.txt", "deleted sub/deep", "updated document-2 v2 sub/b.txt",
          "deleted document-3"}},
        {"something in the program's own folders", "have .logs/n; created .logs; created .logs/n", {}},
        {"out of the program's own folders",
         "have .logs/n; move .logs/n n; renamed .logs/n n",
         {"children .: other/ sub/ a.txt n", "createdFile n"}},
        {"into them",
         "move a.txt .logs/a.txt; renamed a.txt .logs/a.txt",
         {"updated document-1 v2 .logs/a.txt", "children .: other/ sub/", "deleted a.txt"}},
        {"the same twice in one batch",
         "lose other/d.txt; removed other/d.txt; removed other/d.txt",
         {"deleted other/d.txt"}},
        {"two documents on the way to one path",
         "move a.txt sub/b.txt; renamed a.txt sub/b.txt",
         {"children .: other/ sub/", "deleted a.txt", "moved a.txt > sub/b.txt", "deleted document-1",
          "updated document-2 v2 sub/b.txt"}},
    };
    for (const auto& row : cases) {
        Watched watched;
        EXPECT_EQ(watched.tell(row.story), row.expected) << row.name;
        for (const auto& [directoryPath, count] : watched.daemon.fileIdentification->listingCounts) {
            EXPECT_EQ(count, 1) << row.name << ": " << directoryPath;
        }
    }
}

TEST(WatchEvents, ASaveIsSilentAndItsFileIsKnown) {
    Watched watched;
    watched.daemon.save("document-1", "ours", 1);
    EXPECT_EQ(watched.tell("modified a.txt; look ."), Lines{});

    // Half of a rename is enough to know where the new file was, though nobody has listed it.
    watched.daemon.save("document-3", "ours", 1);
    EXPECT_EQ(watched.tell("move sub/deep/c.txt sub/deep/z.txt; arrived sub/deep/z.txt"), Lines{});
    EXPECT_EQ(watched.after(1s), (Lines{"renamed sub/deep/c.txt > sub/deep/z.txt", "deleted document-3"}));
}

TEST(WatchEvents, HalfOfARenameIsCompletedFromTheIndex) {
    Watched watched;
    watched.tell("move other/d.txt other/e.txt; arrived other/e.txt");
    watched.daemon.fileIdentification->listingCounts.clear();
    EXPECT_EQ(watched.after(1s), Lines{"renamed other/d.txt > other/e.txt"});
    // The other end might have been anywhere.
    EXPECT_EQ(watched.daemon.fileIdentification->listingCounts.size(), 2U);
}

// In folders that nobody has listed; half of a rename is completed only from what the index has kept.
TEST(WatchEvents, TheIndexKnowsWhatIsWhereAfterAChange) {
    const struct {
        const char* name;
        const char* change;
        const char* halfOfARename;
        Lines completed;
    } cases[] = {
        {"a folder renamed by another program",
         "move other o; renamed other o",
         "move o/d.txt o/e; arrived o/e",
         {"renamed o/d.txt > o/e"}},
        {"a folder renamed by request",
         "renameWorkspaceItem other o",
         "move o/d.txt o/e; arrived o/e",
         {"renamed o/d.txt > o/e"}},
        {"a new file renamed by request",
         "have other/n; renameWorkspaceItem other/n other/m",
         "move other/m other/e; arrived other/e",
         {"renamed other/m > other/e"}},
        {"a new file renamed to its own path",
         "have other/n; renameWorkspaceItem other/n other/n",
         "move other/n other/e; arrived other/e",
         {"renamed other/n > other/e"}},
        {"a folder moved in from outside",
         "moveWorkspaceItem ../outside other/o",
         "move other/o/o.txt other/o/e; arrived other/o/e",
         {"renamed other/o/o.txt > other/o/e"}},
        {"a folder copied", "copyWorkspaceItem other o", "move o/d.txt o/e; arrived o/e", {"renamed o/d.txt > o/e"}},
        {"a file created",
         "createWorkspaceFile other n",
         "move other/n other/e; arrived other/e",
         {"renamed other/n > other/e"}},
    };
    for (const auto& row : cases) {
        Watched watched;
        watched.tell(row.change);
        watched.tell(row.halfOfARename);
        EXPECT_EQ(watched.after(1s), row.completed) << row.name;
    }

    Watched watched;
    watched.daemon.directoryWalking->walkedPaths.clear();
    watched.tell("renameWorkspaceItem other o");
    EXPECT_EQ(watched.daemon.directoryWalking->walkedPaths, Lines{})
        << "a large folder is renamed as fast as a small one";
}

TEST(WatchEvents, MutationsCarryTheIDsThatTheClientKnows) {
    Watched watched;
    watched.happen("have sub/x");
    watched.load("sub");
    std::map<std::string, std::string> nodeIDs;
    for (const auto& envelope : watched.daemon.notify(watched.happen(
             "move a.txt z.txt; move sub/b.txt ../outside/b.txt; renamed a.txt z.txt; removed sub/b.txt"))) {
        if (!envelope.workspaceMutation) continue;
        nodeIDs[watched.lines({envelope})[0]] = envelope.workspaceMutation->itemNodeID.value_or("none");
        EXPECT_EQ(envelope.workspaceMutation->isDirectory, false);
    }
    EXPECT_EQ(nodeIDs, (std::map<std::string, std::string>{
                           {"renamed a.txt > z.txt", Watched::nodeID(watched.rootListing, "a.txt")},
                           {"deleted sub/b.txt", Watched::nodeID(watched.subListing, "b.txt")}}));

    // The file that was renamed is another by the time it is listed.
    for (const std::string told : {"renamed sub/x sub/y", "arrived sub/y"}) {
        const std::string before = Watched::nodeID(watched.load("sub"), "x");
        watched.tell("move sub/x sub/y; " + told + "; have sub/z; move sub/z sub/y");
        watched.daemon.advance(1s);
        EXPECT_EQ(Watched::nodeID(watched.load("sub"), "y"), before) << told;
        watched.tell("move sub/y sub/x; renamed sub/y sub/x");
    }

    // A listing that was not loaded at the time of a move shows the item under its old ID.
    watched.tell("move sub/deep other/deep; renamed sub/deep other/deep");
    EXPECT_EQ(Watched::nodeID(watched.load("other"), "deep"), Watched::nodeID(watched.subListing, "deep"));
}

TEST(WatchEvents, EventsWaitForTheIndexButDocumentsDoNot) {
    Watched watched(Watched::Index::notYetBuilt);
    EXPECT_EQ(watched.tell("have n; move a.txt z.txt; renamed a.txt z.txt; created n"),
              Lines{"updated document-1 v2 z.txt"});
    EXPECT_EQ(watched.tell("have z.txt new; modified z.txt"), Lines{"updated document-1 v3 z.txt"});
    EXPECT_EQ(watched.built(), (Lines{"children .: other/ sub/ n z.txt", "createdFile n", "renamed a.txt > z.txt"}));
    EXPECT_EQ(watched.built(), Lines{});
}

TEST(WatchEvents, AnEventIsNoNewsAfterTheListingThatShowedItsChange) {
    Watched watched;
    EXPECT_EQ(watched.tell("have n; lose sub/b.txt; look .; look sub"),
              (Lines{"children .: other/ sub/ a.txt n", "children sub: deep/", "createdFile n", "deleted sub/b.txt"}));
    EXPECT_EQ(watched.tell("created n; removed sub/b.txt"), Lines{"deleted document-2"});
    // The same once more is another change.
    EXPECT_EQ(watched.tell("created n"), Lines{"createdFile n"});
}

TEST(WatchEvents, ADocumentDoesNotFollowTheFileThatHadItsPathBefore) {
    Watched watched;
    const auto created = [&](const std::string& name) {
        return watched.daemon.fileManager->attributesOfItem(watched.path(name), FollowLinks::yes).creationDate;
    };
    watched.happen("move a.txt b.txt");
    if (!created("b.txt")) GTEST_SKIP() << "this file system keeps no dates of creation";
    do watched.happen("lose a.txt; have a.txt new");
    while (created("a.txt") == created("b.txt"));
    watched.daemon.open(watched.path("a.txt"));
    EXPECT_EQ(watched.tell("lose a.txt; renamed a.txt b.txt"),
              (Lines{"children .: other/ sub/ b.txt", "renamed a.txt > b.txt", "deleted document-1"}));
    EXPECT_EQ(watched.after(1s), Lines{});
}

TEST(WatchEvents, ADocumentBetweenTwoStepsOfASaveIsNotGone) {
    Watched watched;
    EXPECT_EQ(watched.tell("move a.txt a.txt~; have other/n; created other/n; look ."),
              (Lines{"children .: other/ sub/ a.txt~", "renamed a.txt > a.txt~", "createdFile other/n"}));
    EXPECT_EQ(watched.tell("have a.txt new; modified a.txt"),
              (Lines{"children .: other/ sub/ a.txt a.txt~", "createdFile a.txt", "updated document-1 v2 a.txt"}));
    EXPECT_EQ(watched.after(1s), Lines{});

    // Another program has emptied the file and is about to write it.
    EXPECT_EQ(watched.tell("have a.txt; look ."), Lines{});
    EXPECT_EQ(watched.tell("have a.txt newer; modified a.txt"), Lines{"updated document-1 v3 a.txt"});

    // Nobody saw it go.
    EXPECT_EQ(watched.tell("lose sub/b.txt; look sub"), (Lines{"children sub: deep/", "deleted sub/b.txt"}));
    EXPECT_EQ(watched.after(1s), Lines{"deleted document-2"});
}

TEST(WatchEvents, WhatFailsForWantOfMemoryIsToldAnewOnceItCanBe) {
    Watched watched;
    const auto failCalls = [&](FileOperation operation, std::initializer_list<int> calls) {
        const int made = watched.daemon.fileManager->callCount(operation);
        for (const int call : calls)
            watched.daemon.fileManager->beforeCall(operation, made + call, [] { throw std::bad_alloc(); });
    };
    const EventStreamBatch batch = watched.happen("have n; created n");
    failCalls(FileOperation::isDirectory, {1, 3}); // the third is of the next listing, after one for the watched roots
    EXPECT_EQ(watched.lines(watched.daemon.notify(batch)), Lines{});
    EXPECT_EQ(watched.after(100ms), Lines{}) << "it failed again";
    EXPECT_EQ(watched.after(199ms), Lines{});
    EXPECT_EQ(watched.after(1ms), (Lines{"children .: other/ sub/ a.txt n", "children sub: deep/ b.txt"}));
    EXPECT_EQ(watched.after(1h), Lines{});

    failCalls(FileOperation::contentsOfFile, {1});
    EXPECT_EQ(watched.tell("have a.txt new; modified a.txt"),
              Lines{"unavailable document-1: The file needs more memory than there is."});
    EXPECT_EQ(watched.tell("modified a.txt"), Lines{"updated document-1 v2 a.txt"});

    watched.happen("have m");
    failCalls(FileOperation::isDirectory, {4}); // when the request is answered and the folder is to be listed again
    const auto told = watched.daemon.exchange(
        {.command = EditorDocumentRequestCommand::createWorkspaceFile, .rootPath = watched.path("."), .name = "own"});
    EXPECT_EQ(told.size(), 2U) << "a request is answered once";
    EXPECT_EQ(watched.after(100ms).at(0), "children .: other/ sub/ a.txt m n own");
}

TEST(WatchEvents, ALostRootIsToldOnceAndNoLongerWatched) {
    Watched watched;
    watched.happen("have ../v/x");
    watched.daemon.openWorkspace(watched.path("../v"));
    watched.daemon.buildIndexes();
    EXPECT_EQ(watched.tell("lose .; lose ../v; changed .; changed ../v; changed ."),
              (Lines{"workspaceRootUnavailable " + watched.path("../v"), "workspaceRootUnavailable .",
                     "deleted document-1", "deleted document-2", "deleted document-3"}));
    EXPECT_FALSE(watched.daemon.eventStreams->isRunning());
    // The documents stay open, and may come back.
    EXPECT_EQ(watched.daemon.eventStreams->awaitedPaths,
              (Lines{watched.path("."), watched.path("sub"), watched.path("sub/deep")}));
    watched.happen("have sub/b.txt back");
    EXPECT_EQ(watched.lines(watched.daemon.notifyAppeared()), Lines{"updated document-2 v3 sub/b.txt"});
    EXPECT_EQ(watched.daemon.eventStreams->roots, (Lines{watched.path("."), watched.path("sub")}));
}

TEST(WatchEvents, ARootThatCannotBeListedIsLostWithItsError) {
    Watched watched;
    EXPECT_EQ(watched.tell("lose .; removed a.txt"),
              (Lines{"workspaceRootUnavailable .: The requested directory is unavailable.", "deleted document-3",
                     "deleted document-2", "deleted document-1"}));
    EXPECT_FALSE(watched.daemon.eventStreams->isRunning());
}

TEST(WatchEvents, AReplacedRootIsListedAnewAndIndexedAnew) {
    Watched watched;
    EXPECT_EQ(watched.tell("move . ../old; have sub/n; have new/n; have a.txt new; "
                           "changed .; look .; look sub; look sub/deep"),
              (Lines{"children .: new/ sub/ a.txt", "children sub: n", "createdFolder new", "deleted other",
                     "deleted sub/b.txt", "deleted sub/deep", "createdFile sub/n", "updated document-1 v2 a.txt",
                     "deleted document-2", "deleted document-3"}));
    EXPECT_EQ(watched.built(), Lines{});
    watched.tell("move new/n new/m; arrived new/m");
    EXPECT_EQ(watched.after(1s), Lines{"renamed new/n > new/m"});
}

TEST(WatchEvents, AWorkspaceWithinAnotherIsToldInBoth) {
    Watched watched;
    watched.daemon.openWorkspace(watched.path("sub"));
    watched.daemon.buildIndexes();
    EXPECT_EQ(watched.tell("have sub/n; created sub/n"),
              (Lines{"children sub: deep/ b.txt n", "createdFile sub/n", "sub: children sub: deep/ b.txt n",
                     "sub: createdFile sub/n"}));
    watched.daemon.openWorkspace(watched.path("sub/deep"));
    watched.daemon.buildIndexes();
    EXPECT_EQ(watched.tell("lose sub/deep; changed sub/deep"),
              (Lines{"workspaceRootUnavailable sub/deep", "children sub: b.txt n", "deleted sub/deep",
                     "sub: children sub: b.txt n", "sub: deleted sub/deep", "deleted document-3"}));
}

TEST(WatchEvents, AWorkspaceThatWasOpenedMeanwhileIsToldToo) {
    Watched watched;
    // The events are on their way, for the outer root, when the inner one is listed, just before the change.
    watched.daemon.eventStreams->send({{.path = watched.path("other/n"), .flags = itemCreated | itemIsFile}});
    watched.daemon.openWorkspace(watched.path("other"));
    watched.happen("have other/n");
    EXPECT_EQ(watched.built(),
              (Lines{"createdFile other/n", "other: children other: d.txt n", "other: createdFile other/n"}));
}

TEST(WatchEvents, ADocumentOutsideEveryWorkspaceIsWatchedInItsFolder) {
    DaemonHarness daemon;
    const std::string path = daemon.directory.path("folder/a.txt");
    const std::string folderPath = daemon.directory.path("folder");
    writeFile(path, "one");
    const std::string documentID = daemon.open(path).snapshot->documentID;
    EXPECT_EQ(daemon.eventStreams->roots, Lines{folderPath});
    EXPECT_EQ(daemon.eventStreams->interest,
              (EventStreamInterest{.documentPaths = {path}, .documentRootPaths = {folderPath}}));

    fs::rename(path, path + "2");
    EXPECT_EQ(daemon
                  .notify({{.path = path, .flags = itemRenamed, .fileID = std::uint64_t{7}},
                           {.path = path + "2", .flags = itemRenamed, .fileID = std::uint64_t{7}}})
                  .at(0)
                  .snapshot->path,
              path + "2");

    daemon.openWorkspace(daemon.directory.path());
    EXPECT_EQ(daemon.eventStreams->roots, Lines{daemon.directory.path()});
    EXPECT_EQ(daemon.eventStreams->interest,
              (EventStreamInterest{.directoryPaths = {daemon.directory.path()}, .documentPaths = {path + "2"}}));
    daemon.loadChildren(daemon.directory.path(), folderPath);
    EXPECT_EQ(daemon.eventStreams->interest.directoryPaths, (Lines{daemon.directory.path(), folderPath}));

    daemon.send({.command = EditorDocumentRequestCommand::closeWorkspace, .rootPath = daemon.directory.path()});
    EXPECT_EQ(daemon.eventStreams->roots, Lines{folderPath});
    daemon.close(documentID);
    EXPECT_FALSE(daemon.eventStreams->isRunning());
    EXPECT_EQ(daemon.eventStreams->interest, EventStreamInterest{});
}

TEST(WatchEvents, ANewTreeIsWalkedOnce) {
    Watched watched;
    const auto& walkCounts = watched.daemon.directoryWalking->walkCounts;
    watched.daemon.directoryWalking->walkCounts.clear();
    watched.tell("have x/y/z/n; created x; created x/y; created x/y/z");
    EXPECT_EQ(walkCounts, (std::map<std::string, int>{{watched.path("x"), 1}}));

    // What has taken the place of a removed folder since was not walked with it.
    watched.daemon.directoryWalking->walkCounts.clear();
    watched.tell("created x; removed x; created x/y");
    EXPECT_EQ(walkCounts, (std::map<std::string, int>{{watched.path("x"), 1}, {watched.path("x/y"), 1}}));
}

TEST(WatchEvents, ManyChangesCostInProportion) {
    constexpr int count = 10'000;
    DaemonHarness daemon;
    const std::string rootPath = daemon.directory.path("w");
    const auto path = [&](int number) { return rootPath + "/many/" + std::to_string(number); };
    for (int number = 0; number < count; ++number) writeFile(path(number), "");
    writeFile(rootPath + "/other/document", "");
    daemon.open(rootPath + "/other/document");
    daemon.openWorkspace(rootPath);
    const auto listing = *daemon.loadChildren(rootPath, rootPath + "/many").workspaceDirectory;
    ASSERT_EQ(listing.nodes.size(), std::size_t{count});
    daemon.buildIndexes();

    fs::remove_all(rootPath + "/many");
    fs::create_directory(rootPath + "/many");
    EventStreamBatch batch;
    for (int number = 0; number < count; ++number) batch.push_back({.path = path(number), .flags = itemRemoved});
    const auto questions = [&] {
        int sum = 0;
        for (const auto operation : {FileOperation::fileExists, FileOperation::itemExists, FileOperation::isDirectory,
                                     FileOperation::attributesOfItem, FileOperation::contentsOfDirectory,
                                     FileOperation::currentDirectoryPath}) {
            sum += daemon.fileManager->callCount(operation);
        }
        return sum;
    };
    const int questionsBefore = questions(), writesBefore = daemon.writeCount();
    daemon.fileIdentification->listingCounts.clear();
    const Envelopes told = daemon.notify(std::move(batch));

    EXPECT_LE(questions() - questionsBefore, 6 * count);
    EXPECT_LE(daemon.writeCount() - writesBefore, count / 20);
    EXPECT_EQ(daemon.fileIdentification->listingCounts,
              (std::map<std::string, int>{{rootPath, 1}, {rootPath + "/many", 1}}));
    ASSERT_EQ(told.size(), std::size_t{count + 1});
    EXPECT_EQ(told[0].workspaceDirectory->nodes.size(), 0U);
    for (std::size_t position = 0; position < count; ++position) {
        ASSERT_EQ(told[position + 1].workspaceMutation->itemNodeID, listing.nodes[position].nodeID) << position;
    }
}

TEST(WatchEvents, WatchingFollowsADocumentThatIsFoundElsewhereLater) {
    Watched watched;
    makeTree(watched.path("."), "../link>outside far>../link");
    watched.daemon.open(watched.path("far/o.txt"));
    fs::remove(watched.path("../link"));
    watched.tell("look .");
    makeTree(watched.path("."), "../new/o.txt ../link>new");
    EXPECT_EQ(watched.after(1s), Lines{"updated document-4 v2 far/o.txt"});
    EXPECT_EQ(watched.daemon.eventStreams->roots, (Lines{watched.path("../new"), watched.path(".")}));
}

} // namespace
