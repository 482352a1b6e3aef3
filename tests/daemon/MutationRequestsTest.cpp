#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/DirectorySnapshot.h"
#include "tests/support/Files.h"
#include "tests/support/WorkspaceTest.h"

namespace {

using namespace std::string_literals;

namespace fs = std::filesystem;

class MutationRequests : public WorkspaceTest {
protected:
    using Request = EditorDocumentDaemonRequest;
    using Field = std::optional<std::string>;

    static Request createFile(Field path = {}, Field name = {}) {
        return {.command = Command::createWorkspaceFile, .path = path, .name = name};
    }
    static Request createFolder(Field path = {}, Field name = {}) {
        return {.command = Command::createWorkspaceFolder, .path = path, .name = name};
    }
    template <Command command>
    static Request change(Field path = {}, Field destinationPath = {}) {
        return {.command = command, .path = path, .destinationPath = destinationPath};
    }
    static Request rename(Field from = {}, Field to = {}) { return change<Command::renameWorkspaceItem>(from, to); }
    static Request move(Field from = {}, Field to = {}) { return change<Command::moveWorkspaceItem>(from, to); }
    static Request copy(Field from = {}, Field to = {}) { return change<Command::copyWorkspaceItem>(from, to); }
    static Request duplicate(Field from = {}, Field to = {}) {
        return change<Command::duplicateWorkspaceItem>(from, to);
    }
    static Request trash(Field path = {}) { return change<Command::trashWorkspaceItem>(path); }
    static Request remove(Field path = {}) { return change<Command::deleteWorkspaceItem>(path); }

    // One request on a fresh tree. A word of it that ends with "/" is a folder that the client has expanded; one that
    // ends with "/." is not expanded.
    struct Case {
        const char* name;
        std::string before;
        Request request;
        std::string lines;
        std::string after;
    };

    void check(const std::vector<Case>& cases) {
        for (const Case& row : cases) {
            SCOPED_TRACE(row.name);
            send({.command = Command::closeWorkspace});
            fs::remove_all(root);
            fs::create_directory(root);
            make(row.before);
            std::string expanded;
            for (const std::string& word : wordsOf(row.before)) {
                if (word.ends_with('/')) expanded += word + ' ';
            }
            load(expanded);
            EXPECT_EQ(joined(send(row.request), "; "), row.lines);
            if (fs::exists(root)) {
                EXPECT_EQ(tree(), row.after);
            }
        }
    }

    // Lets something happen right before the daemon does its next operation of this kind.
    void beforeNext(FileOperation operation, std::function<void()> action) {
        daemon.fileManager->beforeCall(operation, daemon.fileManager->callCount(operation) + 1, std::move(action));
    }
};

TEST_F(MutationRequests, Creating) {
    const std::string outside = "failure: The selected path is outside the active project root.";
    check({
        {"no name", "", createFile(), "createdFile file > untitled (.); listing .: untitled", "untitled"},
        {"beside a file", "a/ a/b.txt", createFile("a/b.txt", "b.txt"),
         "createdFile file > a/b1.txt (a); listing a: b.txt b1.txt", "a/ a/b.txt a/b1.txt"},
        {"missing folder is made", "", createFile("a/b/x", "c"), "createdFile file > a/b/c (a/b); listing .: a/",
         "a/ a/b/ a/b/c"},
        {"bytes", "", createFolder({}, "\xE9"), "createdFolder folder > \xE9 (\xE9); listing .: \xE9/", "\xE9/"},
        {"hidden from listings", "", createFolder({}, ".logs"), "createdFolder folder > .logs (.logs)", ".logs/"},
        {"folder in an expanded one", "d/ d/e/", createFolder("d/e", "f"),
         "createdFolder folder > d/e/f (d/e/f); listing d/e: f/", "d/ d/e/ d/e/f/"},
        {"outside", "", createFile("../x"), outside, ""},
        {"blank path is the current directory", "", createFolder(" "), outside, ""},
        {"name too long", "", createFile({}, std::string(256, 'n')), "failure: Failed to create the file.", ""},
        {"below a file", "f", createFolder("f/x/y"),
         "failure: Cannot create the directory “./f/x/untitled”: Not a directory.", "f"},
    });
}

TEST_F(MutationRequests, RenamingMovingAndCopying) {
    check({
        {"file", "a b", rename("a", "c"), "renamed file a > c (.); listing .: b c", "b c"},
        {"folder that is expanded", "a/ a/b/ a/b/c d", rename("a", "x"),
         "renamed folder a > x (. x); listing .: x/ d; listing x: b/; listing x/b: c", "d x/ x/b/ x/b/c"},
        {"to its own path", "a", rename("a", "./a/"), "renamed file a > a (.)", "a"},
        {"folder to its own path", "a/ a/b", rename("a", "a"), "renamed folder a > a (a)", "a/ a/b"},
        {"into a folder", "d/ a", rename("a", "d"), "renamed file a > d/a (. d); listing .: d/; listing d: a",
         "d/ d/a"},
        {"missing folders", "a", rename("a", "x/y/z"), "renamed file a > x/y/z (. x/y); listing .: x/",
         "x/ x/y/ x/y/z"},
        {"a link that leads nowhere", "l>gone", rename("l", "m"), "renamed file l > m (.); listing .: m", "m>gone"},
        {"a link to a folder", "d/f l>d", rename("l", "m"), "renamed file l > m (. m); listing .: d/ m", "d/ d/f m>d"},
        {"moved between expanded folders", "a/ b/ a/x b/y", move("a/x", "b"),
         "moved file a/x > b/x (a b); listing a:; listing b: x y", "a/ b/ b/x b/y"},
        {"moved folder takes its own along", "a/ a/d/ a/d/e/ b/ a/d/e/f", move("a/d", "b"),
         "moved folder a/d > b/d (a b/d); listing a:; listing b: d/; listing b/d: e/; listing b/d/e: f",
         "a/ b/ b/d/ b/d/e/ b/d/e/f"},
        {"through a link", "a l>d d/.", move("a", "l"), "moved file a > l/a (. l); listing .: d/ l", "d/ d/a l>d"},
        {"link into the folder it leads to", "d/ l>d", move("l", "d"),
         "moved file l > d/l (. d); listing .: d/; listing d: l", "d/ d/l>d"},
        {"copied file", "d/ a", copy("a", "d"), "copied file a > d/a (. d); listing d: a", "a d/ d/a"},
        {"copied folder", "a/ c/ a/b", copy("a", "c/d"), "copied folder a > c/d (a c/d); listing c: d/",
         "a/ a/b c/ c/d/ c/d/b"},
        {"copied link", "l>gone", copy("l", "x/m"), "copied file l > x/m (. x); listing .: x/ l", "l>gone x/ x/m>gone"},
        {"link copied into the folder it leads to", "d/ l>d", copy("l", "d"), "copied file l > d/l (d l); listing d: l",
         "d/ d/l>d l>d"},
        {"duplicate", "notes.txt", duplicate("notes.txt", " "),
         "duplicated file notes.txt > notes copy.txt (.); listing .: notes copy.txt notes.txt",
         "notes copy.txt notes.txt"},
        {"bytes", "\xFF", rename("\xFF", "\xFE\xC3\xA9"), "renamed file \xFF > \xFE\u00E9 (.); listing .: \xFE\u00E9",
         "\xFE\u00E9"},
    });
}

TEST_F(MutationRequests, Refusals) {
    const std::string outside = "failure: The selected path is outside the active project root.";
    const std::string noItem = "failure: Missing item path.";
    const std::string noDestination = "failure: Missing destination path.";
    const std::string sourceGone = "failure: The source item no longer exists.";
    const std::string selectionGone = "failure: The selected item no longer exists.";
    const std::string taken = "failure: A file already exists at the destination.";
    const std::string itself = "failure: “d” cannot be put into itself.";
    make("f g d/e/ d/f l>d gone>nowhere");
    writeFile(path("../x"), "outside");
    load("d");
    const DirectorySnapshot before = snapshotOf(daemon.directory.path());

    for (Request request : {createFile(), createFolder(), rename(), move(), copy(), duplicate(), trash(), remove()}) {
        SCOPED_TRACE(nameOf(request.command));
        request.rootPath = " ";
        EXPECT_EQ(send(request), Lines{"failure: Missing workspace root path."});
        for (const auto& gone : {"f"s, "x"s, "d\0"s}) {
            request.rootPath = path(gone);
            EXPECT_EQ(send(request), Lines{"failure: The selected project root is unavailable."});
        }
    }
    const struct {
        const char* name;
        Request request;
        std::string line;
    } cases[] = {
        {"rename of nothing", rename(), noItem},
        {"move of nothing", move(" \n"), noItem},
        {"copy of nothing", copy(), noItem},
        {"duplicate of nothing", duplicate(), noItem},
        {"trash of nothing", trash(), noItem},
        {"delete of nothing", remove(), noItem},
        {"rename from outside comes before its destination", rename("../x"), outside},
        {"duplicate from outside", duplicate("../x"), outside},
        {"rename to nothing", rename("no"), noDestination},
        {"move to nothing", move("no", " "), noDestination},
        {"copy to nothing", copy("no"), noDestination},
        {"rename to the outside", rename("no", "../y"), outside},
        {"move to the outside", move("f", "d/../../y"), outside},
        {"move to where the item would be the root", move("d/w", ".."), outside},
        {"copy to a neighbour", copy("f", "../w2"), outside},
        {"duplicate to the outside", duplicate("f", "../y"), outside},
        {"rename of what is gone", rename("no", "f"), sourceGone},
        {"rename of what is gone to itself", rename("no", "no"), sourceGone},
        {"move of what is gone", move("no", "f"), sourceGone},
        {"copy of what is gone", copy("no", "f"), sourceGone},
        {"duplicate of what is gone", duplicate("no"), sourceGone},
        {"trash of what is gone", trash("no"), selectionGone},
        {"delete of what is gone", remove("no"), selectionGone},
        {"rename of a path with a NUL", rename("f\0"s, "h"), sourceGone},
        {"rename to a file", rename("f", "g"), taken},
        {"rename to a link that leads nowhere", rename("f", "gone"), taken},
        {"rename into a folder that has one", rename("f", "d"), taken},
        {"move onto itself", move("f", "f"), taken},
        {"move into its own folder", move("d/f", "d"), taken},
        {"copy to a file", copy("f", "g"), taken},
        {"duplicate to a file", duplicate("f", "g"), taken},
        {"duplicate to a link that leads nowhere", duplicate("f", "gone"), taken},
        {"move into itself", move("d", "d/n/m"), itself},
        {"rename into itself", rename("d", "d/e"), itself},
        {"rename into itself through a link", rename("d", "l/n/m"), itself},
        {"copy into itself", copy("d", "d/n"), itself},
        {"copy into itself through a link", copy("d", "l/n/m"), itself},
        {"move of the root into itself", move(".", "n"), "failure: “w” cannot be put into itself."},
        {"move of what holds the root", move("..", "n"),
         "failure: “" + fs::path(daemon.directory.path()).filename().string() + "” cannot be put into itself."},
    };
    for (const auto& row : cases) EXPECT_EQ(send(row.request), Lines{row.line}) << row.name;
    for (const char* destination : {"d/n", "l/n"}) {
        const Lines lines = send(duplicate("d", destination));
        EXPECT_TRUE(lines.size() == 1 && lines[0].starts_with("failure: ")) << testing::PrintToString(lines);
    }
    EXPECT_EQ(snapshotOf(daemon.directory.path()), before) << "a refused request changes nothing";
}

TEST_F(MutationRequests, ADestinationTakenInTheLastMomentIsNotOverwritten) {
    const Lines taken = {"failure: A file already exists at the destination."};
    const struct {
        const char* name;
        Request request;
        FileOperation operation;
        std::string place;
        Lines lines;
    } cases[] = {
        {"rename", rename("a", "b"), FileOperation::moveItem, "b", taken},
        {"move", move("a", "b"), FileOperation::moveItem, "b", taken},
        {"copy", copy("a", "b"), FileOperation::copyItem, "b", taken},
        {"duplicate", duplicate("a", "b"), FileOperation::copyItem, "b", taken},
        {"file", createFile({}, "b"), FileOperation::createFile, "b", {"failure: Failed to create the file."}},
        {"a folder takes the next name",
         createFolder({}, "b"),
         FileOperation::createDirectory,
         "b/inside",
         {"createdFolder folder > b1 (b1)", "listing .: b/ b1/ a"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        fs::remove_all(root);
        fs::create_directory(root);
        make("a");
        load();
        const std::string document = openDocument("a"), node = nodeID("a");
        beforeNext(row.operation, [&] { make(row.place); });
        EXPECT_EQ(send(row.request), row.lines);
        EXPECT_EQ(nodeID("a"), node);
        EXPECT_EQ(readFile(path("a")), "a");
        EXPECT_EQ(readFile(path(row.place)), row.place) << "the other program's file";
        EXPECT_EQ(daemon.save(document, "a", 1).snapshot.value().path, path("a"));
        daemon.close(document);
    }
}

TEST_F(MutationRequests, AFailedMoveLeavesTheItemItsID) {
    make("a");
    load();
    const std::string node = nodeID("a");
    beforeNext(FileOperation::moveItem, [] { throw PlatformError("POSIX", 28, "No space."); });
    EXPECT_EQ(send(rename("a", "b")), Lines{"failure: No space."});
    EXPECT_EQ(nodeID("a"), node);
}

TEST_F(MutationRequests, RemovingTellsOfTheItemFromWhatWasListed) {
    check({
        {"trash a folder", "d/ d/e/ d/e/f g", trash("d"), "trashed folder d (.); listing .: g", "g"},
        {"trash what was never listed", "d/e", trash("d/e"), "trashed d/e (d)", "d/"},
        {"delete a link that leads nowhere", "l>gone", remove("l"), "deleted file l (.); listing .:", ""},
        {"delete in an expanded folder", "d/ d/e/ d/e/f", remove("d/e/f"),
         "deleted file d/e/f (d/e); listing d/e:", "d/ d/e/"},
        {"delete the root", "d/ d/f", remove("."),
         "deleted . (); workspaceRootUnavailable: The requested directory is unavailable.", ""},
    });
    EXPECT_TRUE(fs::exists(daemon.directory.path("home/.local/share/Trash/files/d/e/f")));
}

TEST_F(MutationRequests, ItemsOutsideTheRootAreMovedInCopiedInAndRemoved) {
    make("d/");
    for (const char* name : {"../a/b", "../c", "../t", "../r"}) writeFile(path(name), "outside");
    load("d");
    EXPECT_EQ(send(move("../a", "d")), (Lines{"moved folder ../a > d/a (d/a)", "listing d: a/"}));
    EXPECT_EQ(send(copy("../c", "d")), (Lines{"copied file ../c > d/c (d)", "listing d: a/ c"}));
    EXPECT_EQ(send(trash("../t")), Lines{"trashed ../t ()"});
    EXPECT_EQ(send(remove("../r")), Lines{"deleted ../r ()"});
    EXPECT_EQ(tree(), "d/ d/a/ d/a/b d/c");
    for (const char* gone : {"../a", "../t", "../r"}) EXPECT_FALSE(fs::exists(path(gone))) << gone;
}

TEST_F(MutationRequests, ARootThatIsNotOpenIsChangedWithoutListings) {
    EXPECT_EQ(send(createFile()), Lines{"createdFile file > untitled (.)"});
    EXPECT_EQ(send(remove("untitled")), Lines{"deleted untitled (.)"});
    daemon.advanceIndexing();
    EXPECT_EQ(daemon.directoryWalking->walkedPaths, Lines{});
}

TEST_F(MutationRequests, NodesKeepTheirIDs) {
    make("a d/e/f d/g h/");
    load("d d/e h");
    const std::string file = nodeID("a");
    const std::string folder = nodeID("d");
    const std::string inner = nodeID("d/e");
    const std::string innermost = nodeID("d/e/f");
    send(rename("a", "b"));
    EXPECT_EQ(nodeID("b"), file);
    send(move("d", "h"));
    EXPECT_EQ(nodeID("h/d"), folder);
    EXPECT_EQ(nodeID("h/d/e"), inner);
    EXPECT_EQ(nodeID("h/d/e/f"), innermost);
    EXPECT_EQ(daemon.save(openDocument("h/d/e/f"), "new file", 1).success, true);
    EXPECT_EQ(nodeID("h/d/e/f"), innermost);

    send(copy("b", "a"));
    EXPECT_EQ(nodeID("b"), file);
    EXPECT_NE(nodeID("a"), file) << "a copy at the old name is another item";
    // The file system may give the new file the number of the deleted one.
    send(remove("b"));
    send(createFile({}, "b"));
    EXPECT_NE(nodeID("b"), file);
}

TEST_F(MutationRequests, ThePayloadCarriesTheNodeIDOfTheListing) {
    make("a d/");
    load();
    const std::string file = nodeID("a");
    const std::string folder = nodeID("d");
    const std::pair<Request, std::string> cases[] = {
        {rename(path("a"), path("b")), file},
        {move(path("b"), path("d")), file},
        {rename(path("d"), path("e")), folder},
        {trash(path("e")), folder},
    };
    for (auto [request, nodeID] : cases) {
        request.rootPath = root;
        EXPECT_EQ(daemon.send(request).workspaceMutation.value().itemNodeID, nodeID);
    }
}

TEST_F(MutationRequests, DocumentsFollowWithoutAnEvent) {
    make("a/d/f a/d/g ab/f b/");
    load("a b");
    const std::string first = openDocument("a/d/f");
    const std::string second = openDocument("a/d/g");
    const std::string other = openDocument("ab/f");
    const auto expectAt = [&](const std::string& document, const std::string& place) {
        EXPECT_EQ(daemon.checkDocument(document), Envelopes{});
        const auto saved = daemon.save(document, "saved", 1);
        EXPECT_EQ(saved.snapshot.value().path, path(place));
        EXPECT_EQ(readFile(path(place)), "saved");
        // The path leads to the document, and the old one no longer does.
        EXPECT_EQ(openDocument(place), document);
    };
    EXPECT_EQ(send(rename("a", "a2")).size(), 3U);
    EXPECT_EQ(send(move("a2/d", "b")).size(), 3U);
    expectAt(first, "b/d/f");
    expectAt(second, "b/d/g");
    expectAt(other, "ab/f");
    make("a/d/f");
    EXPECT_NE(openDocument("a/d/f"), first);
    send(copy("b/d/f", "c"));
    EXPECT_EQ(openDocument("b/d/f"), first) << "a copy takes no document along";
}

TEST_F(MutationRequests, AChangeBeforeAMoveIsStillTold) {
    make("a");
    const std::string document = openDocument("a");
    writeFile(path("a"), "changed meanwhile");
    send(rename("a", "b"));
    EXPECT_EQ(told(daemon.checkDocument(document)), Lines{"updated b"});
    // Another file of the same time and size.
    fs::copy_file(path("b"), path("c"));
    fs::last_write_time(path("c"), fs::last_write_time(path("b")));
    fs::rename(path("c"), path("b"));
    send(rename("b", "d"));
    EXPECT_EQ(told(daemon.checkDocument(document)), Lines{"updated d"});
}

TEST_F(MutationRequests, DocumentsOfRemovedItemsAreMissingUntilTheyAreSaved) {
    make("d/a d/e/b c");
    for (const Request& request : {trash("d"), remove("d")}) {
        load();
        const std::string a = openDocument("d/a");
        const std::string b = openDocument("d/e/b");
        const std::string c = openDocument("c");
        EXPECT_EQ(send(request).size(), 2U) << "no event for the documents";
        for (const std::string& document : {a, b, c}) EXPECT_EQ(daemon.checkDocument(document), Envelopes{});
        EXPECT_EQ(daemon.save(a, "x", 1).success, false);
        EXPECT_EQ(daemon.save(a, "x", 2).success, true);
        EXPECT_EQ(daemon.save(b, "x", 2).success, true);
        EXPECT_EQ(daemon.save(c, "x", 1).success, true);
        for (const std::string& document : {a, b, c}) daemon.close(document);
    }
}

} // namespace
