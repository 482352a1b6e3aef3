#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/DaemonHarness.h"
#include "tests/support/Files.h"
#include "tests/support/ToldEvents.h"

namespace {

using namespace std::chrono_literals;
using namespace EventStreamFlag;
using Lines = std::vector<std::string>;
using Envelopes = std::vector<EditorDocumentDaemonEnvelope>;

// A daemon that watches w, in which these are open documents: a.txt (document-1), sub/b.txt (document-2) and
// sub/deep/c.txt (document-3). The listings of w and sub are loaded. Names in the tables are relative to w.
class Watched {
public:
    enum class Index { built, notYetBuilt };

    explicit Watched(Index index = Index::built) {
        for (const char* name : {"a.txt", "sub/b.txt", "sub/deep/c.txt", "other/d.txt", "../outside/o.txt"}) {
            have(name, name);
        }
        for (const char* name : {"a.txt", "sub/b.txt", "sub/deep/c.txt"}) daemon.open(path(name));
        rootListing = *daemon.openWorkspace(path()).workspaceDirectory;
        subListing = *daemon.loadChildren(path(), path("sub")).workspaceDirectory;
        if (index == Index::built) daemon.buildIndexes();
        daemon.fileIdentification->listingCounts.clear();
    }

    std::string path(const std::string& name = "") const {
        return std::filesystem::path(daemon.directory.path("w/" + name))
            .lexically_normal()
            .string()
            .substr(0, name.empty() ? daemon.directory.path("w").size() : std::string::npos);
    }
    void have(const std::string& name, const std::string& text = "") const { writeFile(path(name), text); }
    void lose(const std::string& name) const { std::filesystem::remove_all(path(name)); }
    void move(const std::string& from, const std::string& to) const {
        std::filesystem::create_directories(std::filesystem::path(path(to)).parent_path());
        std::filesystem::rename(path(from), path(to));
    }

    // Notifications as the system sends them: with type and number of what is there now, without them after a removal.
    EventStreamNotification about(const std::string& name, std::uint32_t flag) const {
        struct stat status {};
        if (::lstat(path(name).c_str(), &status) != 0) return {.path = path(name), .flags = flag};
        return {.path = path(name),
                .flags = flag | (S_ISDIR(status.st_mode) ? itemIsDir : itemIsFile),
                .fileID = std::uint64_t{status.st_ino}};
    }
    EventStreamBatch renamed(const std::string& from, const std::string& to) const {
        EventStreamBatch halves{about(to, itemRenamed), about(to, itemRenamed)};
        halves[0].path = path(from);
        return halves;
    }
    EventStreamBatch newHalf(const std::string&, const std::string& to) const { return {about(to, itemRenamed)}; }
    EventStreamNotification somewhereIn(const std::string& name) const { return {.path = path(name)}; }

    Lines tell(EventStreamBatch batch) { return lines(daemon.notify(std::move(batch))); }
    Lines lines(const Envelopes& envelopes) const {
        Lines result;
        for (const auto& envelope : envelopes) result.push_back(line(envelope));
        return result;
    }

    std::string line(const EditorDocumentDaemonEnvelope& event) const { return toldEvent(event, path()); }

    static std::string nodeID(const WorkspaceBrowserDirectoryPayload& listing, const std::string& name) {
        for (const auto& node : listing.nodes) {
            if (node.name == name) return node.nodeID;
        }
        return "none";
    }

    DaemonHarness daemon;
    WorkspaceBrowserDirectoryPayload rootListing;
    WorkspaceBrowserDirectoryPayload subListing;
};

// The plain changes are made for real, through the executable.
TEST(WatchEvents, EachChangeIsToldAsWhatItIs) {
    const struct {
        const char* name;
        EventStreamBatch (*change)(Watched& watched);
        Lines expected;
    } cases[] = {
        {"another file in its place",
         [](Watched& w) {
             w.have("../outside/a.txt", "a.txt");
             w.move("../outside/a.txt", "a.txt");
             return EventStreamBatch{w.about("a.txt", itemModified)};
         },
         {"updated document-1 v2 a.txt"}},
        {"nothing but a rumour", [](Watched& w) { return EventStreamBatch{w.somewhereIn("sub")}; }, {}},
        {"a rumour that is true",
         [](Watched& w) { return w.have("sub/n"), EventStreamBatch{w.somewhereIn("sub")}; },
         {"children sub: deep/ b.txt n", "createdFile sub/n"}},
        {"the same, told as a rename",
         [](Watched& w) {
             w.move("a.txt", "a.txt~");
             w.have("a.txt", "new");
             EventStreamBatch batch = w.renamed("a.txt", "a.txt~");
             batch.push_back(w.about("a.txt", itemCreated));
             return batch;
         },
         {"children .: other/ sub/ a.txt a.txt~", "createdFile a.txt", "createdFile a.txt~", "renamed a.txt > a.txt~",
          "updated document-1 v2 a.txt"}},
        {"a folder deleted with documents at two depths",
         [](Watched& w) { return w.lose("sub"), EventStreamBatch{w.about("sub", itemRemoved)}; },
         {"children .: other/ a.txt", "deleted sub", "deleted document-2", "deleted document-3"}},
        {"an expanded folder renamed and rumoured about",
         [](Watched& w) {
             w.move("sub", "tub");
             return EventStreamBatch{w.somewhereIn("tub"), w.somewhereIn("sub")};
         },
         {"updated document-3 v2 tub/deep/c.txt", "updated document-2 v2 tub/b.txt", "children .: other/ tub/ a.txt",
          "children tub: deep/ b.txt", "renamed sub > tub"}},
        {"an expanded folder moved into another",
         [](Watched& w) {
             w.daemon.loadChildren(w.path(), w.path("other"));
             w.daemon.fileIdentification->listingCounts.clear();
             w.move("sub", "other/sub");
             return w.renamed("sub", "other/sub");
         },
         {"updated document-3 v2 other/sub/deep/c.txt", "updated document-2 v2 other/sub/b.txt",
          "children .: other/ a.txt", "children other: sub/ d.txt", "children other/sub: deep/ b.txt",
          "createdFolder other/sub", "moved sub > other/sub", "deleted sub"}},
        {"a folder replaced by another",
         [](Watched& w) {
             w.move("sub", "../outside/sub");
             w.have("sub/b.txt", "new");
             EventStreamBatch batch{w.about("sub", itemRemoved), w.about("sub", itemCreated)};
             batch[0].fileID.reset();
             return batch;
         },
         {"children .: other/ sub/ a.txt", "children sub: b.txt", "deleted sub", "createdFolder sub",
          "deleted sub/b.txt", "createdFile sub/b.txt", "deleted sub/deep", "updated document-2 v2 sub/b.txt",
          "deleted document-3"}},
        {"something in the program's own folders",
         [](Watched& w) {
             w.have(".logs/n");
             return EventStreamBatch{w.about(".logs", itemCreated), w.about(".logs/n", itemCreated)};
         },
         {}},
        {"out of the program's own folders",
         [](Watched& w) { return w.have(".logs/n"), w.move(".logs/n", "n"), w.renamed(".logs/n", "n"); },
         {"children .: other/ sub/ a.txt n", "createdFile n"}},
        {"into them",
         [](Watched& w) { return w.move("a.txt", ".logs/a.txt"), w.renamed("a.txt", ".logs/a.txt"); },
         {"updated document-1 v2 .logs/a.txt", "children .: other/ sub/", "deleted a.txt"}},
        {"the same twice in one batch",
         [](Watched& w) {
             w.lose("other/d.txt");
             return EventStreamBatch{w.about("other/d.txt", itemRemoved), w.about("other/d.txt", itemRemoved)};
         },
         {"deleted other/d.txt"}},
        {"two documents on the way to one path",
         [](Watched& w) { return w.move("a.txt", "sub/b.txt"), w.renamed("a.txt", "sub/b.txt"); },
         {"children .: other/ sub/", "deleted a.txt", "moved a.txt > sub/b.txt", "deleted document-1",
          "updated document-2 v2 sub/b.txt"}},
    };
    for (const auto& row : cases) {
        Watched watched;
        EXPECT_EQ(watched.tell(row.change(watched)), row.expected) << row.name;
        for (const auto& [directoryPath, count] : watched.daemon.fileIdentification->listingCounts) {
            EXPECT_EQ(count, 1) << row.name << ": " << directoryPath;
        }
    }
}

TEST(WatchEvents, ASaveIsSilentAndItsFileIsKnown) {
    Watched watched;
    watched.daemon.save("document-1", "ours", 1);
    EXPECT_EQ(watched.tell({watched.about("a.txt", itemModified), watched.somewhereIn("")}), Lines{});

    // Half of a rename is enough to know where the new file was, though nobody has listed it.
    watched.daemon.save("document-3", "ours", 1);
    watched.move("sub/deep/c.txt", "sub/deep/z.txt");
    EXPECT_EQ(watched.tell({watched.about("sub/deep/z.txt", itemRenamed)}), Lines{});
    EXPECT_EQ(watched.lines(watched.daemon.advance(1s)),
              (Lines{"renamed sub/deep/c.txt > sub/deep/z.txt", "deleted document-3"}));
}

TEST(WatchEvents, HalfOfARenameIsCompletedFromTheIndex) {
    Watched watched;
    watched.move("other/d.txt", "other/e.txt");
    watched.tell({watched.about("other/e.txt", itemRenamed)});
    watched.daemon.fileIdentification->listingCounts.clear();
    EXPECT_EQ(watched.lines(watched.daemon.advance(1s)), Lines{"renamed other/d.txt > other/e.txt"});
    // The other end might have been anywhere.
    EXPECT_EQ(watched.daemon.fileIdentification->listingCounts.size(), 2U);

    watched.move("other", "another");
    watched.tell(watched.renamed("other", "another"));
    watched.move("another/e.txt", "another/f.txt");
    watched.tell({watched.about("another/f.txt", itemRenamed)});
    EXPECT_EQ(watched.lines(watched.daemon.advance(1s)), Lines{"renamed another/e.txt > another/f.txt"});
}

TEST(WatchEvents, MutationsCarryTheIDsThatTheClientKnows) {
    Watched watched;
    watched.have("sub/x");
    watched.daemon.loadChildren(watched.path(), watched.path("sub"));
    watched.move("a.txt", "z.txt");
    watched.move("sub/b.txt", "../outside/b.txt");
    EventStreamBatch batch = watched.renamed("a.txt", "z.txt");
    batch.push_back(watched.about("sub/b.txt", itemRemoved));
    std::map<std::string, std::string> nodeIDs;
    for (const auto& envelope : watched.daemon.notify(batch)) {
        if (!envelope.workspaceMutation) continue;
        nodeIDs[watched.line(envelope)] = envelope.workspaceMutation->itemNodeID.value_or("none");
        EXPECT_EQ(envelope.workspaceMutation->isDirectory, false);
    }
    EXPECT_EQ(nodeIDs, (std::map<std::string, std::string>{
                           {"renamed a.txt > z.txt", Watched::nodeID(watched.rootListing, "a.txt")},
                           {"deleted sub/b.txt", Watched::nodeID(watched.subListing, "b.txt")}}));

    // The file that was renamed is another by the time it is listed.
    for (const auto& change : {&Watched::renamed, &Watched::newHalf}) {
        const auto before = *watched.daemon.loadChildren(watched.path(), watched.path("sub")).workspaceDirectory;
        watched.move("sub/x", "sub/y");
        const EventStreamBatch rename = (watched.*change)("sub/x", "sub/y");
        watched.have("sub/z");
        watched.move("sub/z", "sub/y");
        watched.daemon.notify(rename);
        watched.daemon.advance(1s);
        const auto after = *watched.daemon.loadChildren(watched.path(), watched.path("sub")).workspaceDirectory;
        EXPECT_EQ(Watched::nodeID(after, "y"), Watched::nodeID(before, "x"));
        watched.move("sub/y", "sub/x");
        watched.daemon.notify(watched.renamed("sub/y", "sub/x"));
    }

    // A listing that was not loaded at the time of a move shows the item under its old ID.
    watched.move("sub/deep", "other/deep");
    watched.daemon.notify(watched.renamed("sub/deep", "other/deep"));
    const auto other = *watched.daemon.loadChildren(watched.path(), watched.path("other")).workspaceDirectory;
    EXPECT_EQ(Watched::nodeID(other, "deep"), Watched::nodeID(watched.subListing, "deep"));
}

TEST(WatchEvents, EventsWaitForTheIndexButDocumentsDoNot) {
    Watched watched(Watched::Index::notYetBuilt);
    watched.have("n");
    watched.move("a.txt", "z.txt");
    EventStreamBatch batch = watched.renamed("a.txt", "z.txt");
    batch.push_back(watched.about("n", itemCreated));
    EXPECT_EQ(watched.tell(batch), Lines{"updated document-1 v2 z.txt"});
    watched.have("z.txt", "new");
    EXPECT_EQ(watched.tell({watched.about("z.txt", itemModified)}), Lines{"updated document-1 v3 z.txt"});
    EXPECT_EQ(watched.lines(watched.daemon.buildIndexes()),
              (Lines{"children .: other/ sub/ n z.txt", "createdFile n", "renamed a.txt > z.txt"}));
    EXPECT_EQ(watched.lines(watched.daemon.buildIndexes()), Lines{});
}

TEST(WatchEvents, AnEventIsNoNewsAfterTheListingThatShowedItsChange) {
    Watched watched;
    watched.have("n");
    watched.lose("sub/b.txt");
    EXPECT_EQ(watched.tell({watched.somewhereIn(""), watched.somewhereIn("sub")}),
              (Lines{"children .: other/ sub/ a.txt n", "children sub: deep/", "createdFile n", "deleted sub/b.txt"}));
    const EventStreamBatch late{watched.about("n", itemCreated), watched.about("sub/b.txt", itemRemoved)};
    EXPECT_EQ(watched.tell(late), Lines{"deleted document-2"});
    // The same once more is another change.
    EXPECT_EQ(watched.tell({watched.about("n", itemCreated)}), Lines{"createdFile n"});
}

TEST(WatchEvents, ADocumentBetweenTwoStepsOfASaveIsNotGone) {
    Watched watched;
    watched.move("a.txt", "a.txt~");
    watched.have("other/n");
    const EventStreamBatch nearby{watched.about("other/n", itemCreated), watched.somewhereIn("")};
    EXPECT_EQ(watched.tell(nearby),
              (Lines{"children .: other/ sub/ a.txt~", "renamed a.txt > a.txt~", "createdFile other/n"}));
    watched.have("a.txt", "new");
    EXPECT_EQ(watched.tell({watched.about("a.txt", itemModified)}),
              (Lines{"children .: other/ sub/ a.txt a.txt~", "createdFile a.txt", "updated document-1 v2 a.txt"}));
    EXPECT_EQ(watched.lines(watched.daemon.advance(1s)), Lines{});

    // Another program has emptied the file and is about to write it.
    watched.have("a.txt", "");
    EXPECT_EQ(watched.tell({watched.somewhereIn("")}), Lines{});
    watched.have("a.txt", "newer");
    EXPECT_EQ(watched.tell({watched.about("a.txt", itemModified)}), Lines{"updated document-1 v3 a.txt"});

    // Nobody saw it go.
    watched.lose("sub/b.txt");
    EXPECT_EQ(watched.tell({watched.somewhereIn("sub")}), (Lines{"children sub: deep/", "deleted sub/b.txt"}));
    EXPECT_EQ(watched.lines(watched.daemon.advance(1s)), Lines{"deleted document-2"});
}

TEST(WatchEvents, WhatFailsForWantOfMemoryIsToldAnewOnceItCanBe) {
    Watched watched;
    const auto failQuestions = [&](std::initializer_list<int> calls) {
        const int asked = watched.daemon.fileManager->callCount(FileOperation::isDirectory);
        for (const int call : calls) {
            watched.daemon.fileManager->beforeCall(FileOperation::isDirectory, asked + call,
                                                   [] { throw std::bad_alloc(); });
        }
    };
    watched.have("n");
    const EventStreamBatch batch{watched.about("n", itemCreated)};
    failQuestions({1, 3}); // the third is that of the next listing, after one for the watched roots
    EXPECT_EQ(watched.tell(batch), Lines{});
    EXPECT_EQ(watched.lines(watched.daemon.advance(100ms)), Lines{}) << "it failed again";
    EXPECT_EQ(watched.lines(watched.daemon.advance(199ms)), Lines{});
    EXPECT_EQ(watched.lines(watched.daemon.advance(1ms)),
              (Lines{"children .: other/ sub/ a.txt n", "children sub: deep/ b.txt"}));
    EXPECT_EQ(watched.lines(watched.daemon.advance(1h)), Lines{});

    watched.have("a.txt", "new");
    const int read = watched.daemon.fileManager->callCount(FileOperation::contentsOfFile);
    watched.daemon.fileManager->beforeCall(FileOperation::contentsOfFile, read + 1, [] { throw std::bad_alloc(); });
    EXPECT_EQ(watched.tell({watched.about("a.txt", itemModified)}),
              Lines{"unavailable document-1: The file needs more memory than there is."});
    EXPECT_EQ(watched.tell({watched.about("a.txt", itemModified)}), Lines{"updated document-1 v2 a.txt"});

    watched.have("m");
    failQuestions({4}); // when the request is answered and the folder is to be listed again
    const auto told = watched.daemon.exchange(
        {.command = EditorDocumentRequestCommand::createWorkspaceFile, .rootPath = watched.path(), .name = "own"});
    EXPECT_EQ(told.size(), 2U) << "a request is answered once";
    EXPECT_EQ(watched.lines(watched.daemon.advance(100ms)).at(0), "children .: other/ sub/ a.txt m n own");
}

TEST(WatchEvents, ALostRootIsToldOnceAndNoLongerWatched) {
    Watched watched;
    writeFile(watched.daemon.directory.path("v/x"), "");
    watched.daemon.openWorkspace(watched.daemon.directory.path("v"));
    watched.daemon.buildIndexes();
    std::filesystem::remove_all(watched.path());
    std::filesystem::remove_all(watched.daemon.directory.path("v"));
    EXPECT_EQ(watched.tell({watched.about("", rootChanged),
                            {.path = watched.daemon.directory.path("v"), .flags = rootChanged},
                            watched.about("", rootChanged)}),
              (Lines{"workspaceRootUnavailable " + watched.daemon.directory.path("v"), "workspaceRootUnavailable .",
                     "deleted document-1", "deleted document-2", "deleted document-3"}));
    EXPECT_FALSE(watched.daemon.eventStreams->isRunning());
    // The documents stay open, and may come back.
    EXPECT_EQ(watched.daemon.eventStreams->awaitedPaths,
              (Lines{watched.path(), watched.path("sub"), watched.path("sub/deep")}));
    watched.have("sub/b.txt", "back");
    EXPECT_EQ(watched.lines(watched.daemon.notifyAppeared()), Lines{"updated document-2 v3 sub/b.txt"});
    EXPECT_EQ(watched.daemon.eventStreams->roots, (Lines{watched.path(), watched.path("sub")}));
}

TEST(WatchEvents, ARootThatCannotBeListedIsLostWithItsError) {
    Watched watched;
    std::filesystem::remove_all(watched.path());
    EXPECT_EQ(watched.tell({watched.about("a.txt", itemRemoved)}),
              (Lines{"workspaceRootUnavailable .: The requested directory is unavailable.", "deleted document-3",
                     "deleted document-2", "deleted document-1"}));
    EXPECT_FALSE(watched.daemon.eventStreams->isRunning());
}

TEST(WatchEvents, AReplacedRootIsListedAnewAndIndexedAnew) {
    Watched watched;
    std::filesystem::rename(watched.path(), watched.daemon.directory.path("old"));
    watched.have("sub/n");
    watched.have("new/n");
    watched.have("a.txt", "new");
    EXPECT_EQ(watched.tell({watched.about("", rootChanged), watched.somewhereIn(""), watched.somewhereIn("sub"),
                            watched.somewhereIn("sub/deep")}),
              (Lines{"children .: new/ sub/ a.txt", "children sub: n", "createdFolder new", "deleted other",
                     "deleted sub/b.txt", "deleted sub/deep", "createdFile sub/n", "updated document-1 v2 a.txt",
                     "deleted document-2", "deleted document-3"}));
    EXPECT_EQ(watched.lines(watched.daemon.buildIndexes()), Lines{});

    watched.move("new/n", "new/m");
    watched.tell({watched.about("new/m", itemRenamed)});
    EXPECT_EQ(watched.lines(watched.daemon.advance(1s)), Lines{"renamed new/n > new/m"});
}

TEST(WatchEvents, AWorkspaceWithinAnotherIsToldInBoth) {
    Watched watched;
    watched.daemon.openWorkspace(watched.path("sub"));
    watched.daemon.buildIndexes();
    watched.have("sub/n");
    EXPECT_EQ(watched.tell({watched.about("sub/n", itemCreated)}),
              (Lines{"children sub: deep/ b.txt n", "createdFile sub/n", "sub: children sub: deep/ b.txt n",
                     "sub: createdFile sub/n"}));
    watched.daemon.openWorkspace(watched.path("sub/deep"));
    watched.daemon.buildIndexes();
    watched.lose("sub/deep");
    EXPECT_EQ(watched.tell({watched.about("sub/deep", rootChanged)}),
              (Lines{"workspaceRootUnavailable sub/deep", "children sub: b.txt n", "deleted sub/deep",
                     "sub: children sub: b.txt n", "sub: deleted sub/deep", "deleted document-3"}));
}

TEST(WatchEvents, AWorkspaceThatWasOpenedMeanwhileIsToldToo) {
    Watched watched;
    // The events are on their way, for the outer root, when the inner one is listed, just before the change.
    watched.daemon.eventStreams->send({{.path = watched.path("other/n"), .flags = itemCreated | itemIsFile}});
    watched.daemon.openWorkspace(watched.path("other"));
    watched.have("other/n");
    EXPECT_EQ(watched.lines(watched.daemon.buildIndexes()),
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

    std::filesystem::rename(path, path + "2");
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
    watched.have("x/y/z/n");
    EventStreamBatch batch;
    for (const char* name : {"x", "x/y", "x/y/z"}) batch.push_back(watched.about(name, itemCreated));
    watched.daemon.directoryWalking->walkCounts.clear();
    watched.tell(batch);
    EXPECT_EQ(watched.daemon.directoryWalking->walkCounts, (std::map<std::string, int>{{watched.path("x"), 1}}));

    // What has taken the place of a removed folder since was not walked with it.
    batch = {watched.about("x", itemCreated), watched.about("x", itemRemoved), watched.about("x/y", itemCreated)};
    watched.daemon.directoryWalking->walkCounts.clear();
    watched.tell(batch);
    EXPECT_EQ(watched.daemon.directoryWalking->walkCounts,
              (std::map<std::string, int>{{watched.path("x"), 1}, {watched.path("x/y"), 1}}));
}

TEST(WatchEvents, ManyChangesCostInProportion) {
    constexpr int count = 50'000;
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

    std::filesystem::remove_all(rootPath + "/many");
    std::filesystem::create_directory(rootPath + "/many");
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
    const int questionsBefore = questions();
    daemon.fileIdentification->listingCounts.clear();
    const Envelopes told = daemon.notify(std::move(batch));

    EXPECT_LE(questions() - questionsBefore, 6 * count);
    EXPECT_EQ(daemon.fileIdentification->listingCounts,
              (std::map<std::string, int>{{rootPath, 1}, {rootPath + "/many", 1}}));
    ASSERT_EQ(told.size(), std::size_t{count + 1});
    EXPECT_EQ(told[0].workspaceDirectory->nodes.size(), 0U);
    for (std::size_t position = 0; position < count; ++position) {
        ASSERT_EQ(told[position + 1].workspaceMutation->itemNodeID, listing.nodes[position].nodeID) << position;
    }
}

} // namespace
