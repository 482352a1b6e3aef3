#include "watch/DirectoryRefreshPass.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Files.h"
#include "tests/support/WorkspaceTest.h"

namespace {

namespace fs = std::filesystem;

// What the daemon finds when it lists again after changes that it was not told of.
class DirectoryRefresh : public WorkspaceTest {
protected:
    void renameOutside(const std::string& from, const std::string& to) const { fs::rename(path(from), path(to)); }

    // Lists the loaded directories from that of the item up to the root, and what follows from them, at once and after
    // the time in which a save comes to an end.
    Lines refresh(const std::string& item = ".") {
        Lines lines = send({.command = Command::renameWorkspaceItem, .path = item, .destinationPath = item});
        lines.erase(lines.begin());
        for (std::string& line : told(daemon.advance(std::chrono::seconds(1)))) lines.push_back(std::move(line));
        return lines;
    }
};

TEST_F(DirectoryRefresh, ARenamedFolderTakesItsExpandedFoldersAlong) {
    make("a/b/c/f a/g h/");
    load("a a/b a/b/c");
    const std::string folder = nodeID("a");
    const std::string inner = nodeID("a/b/c/f");
    renameOutside("a", "x");
    EXPECT_EQ(refresh(), (Lines{"listing .: h/ x/", "listing x: b/ g", "listing x/b: c/", "listing x/b/c: f"}));
    EXPECT_EQ(nodeID("x/b/c/f"), inner);
    EXPECT_EQ(nodeID("x"), folder);
    EXPECT_EQ(refresh(), Lines{});
    renameOutside("x", "h/y");
    EXPECT_EQ(refresh(), Lines{"listing .: h/"}) << "nothing that is listed shows where it went";
    EXPECT_EQ(nodeID("h/y"), folder);
}

TEST_F(DirectoryRefresh, FoldersThatChangePlacesStayExpandedWhereverTheyAre) {
    make("e/c/x f/f/b/y");
    load("e e/c f f/f f/f/b");
    daemon.buildIndexes();
    renameOutside("e", "../away");
    renameOutside("f/f", "e");
    renameOutside("../away", "f/f");
    // The new upper one is listed, and told, before the lower one shows where the former upper one went.
    using namespace EventStreamFlag;
    daemon.notify({{.path = path("e"), .flags = itemRemoved | itemIsDir},
                   {.path = path("f/f"), .flags = itemRemoved | itemIsDir},
                   {.path = path("e"), .flags = itemCreated | itemIsDir},
                   {.path = path("f/f"), .flags = itemCreated | itemIsDir}});
    for (const std::string folder : {"e", "e/b", "f/f", "f/f/c"}) writeFile(path(folder + "/new"), "");
    EXPECT_EQ(refresh("e"), Lines{"listing e: b/ new"});
    EXPECT_EQ(refresh("f/f/c"), (Lines{"listing f/f: c/ new", "listing f/f/c: new x"}));
}

TEST_F(DirectoryRefresh, DocumentsStayWhereAnotherItemOrNoFileIs) {
    const struct {
        const char* name;
        void (*change)(const std::string& folder);
        bool isMissingBefore;
        Lines lines;
    } cases[] = {
        {"moved away and saved anew",
         [](const std::string& folder) {
             fs::rename(folder + "f", folder + "f~");
             writeFile(folder + "f", "new");
         },
         false,
         {"listing .: f f~"}},
        {"moved and replaced by a folder of its new name",
         [](const std::string& folder) {
             fs::rename(folder + "f", folder + "g");
             fs::create_symlink("/dev/null", folder + "h");
             fs::rename(folder + "h", folder + "g");
         },
         false,
         {"listing .: g"}},
        {"missing before",
         [](const std::string& folder) { fs::rename(folder + "f", folder + "g"); },
         true,
         {"listing .: g"}},
    };
    for (const auto& row : cases) {
        send({.command = Command::closeWorkspace});
        fs::remove_all(root);
        make("f");
        load();
        const std::string document = openDocument("f");
        if (row.isMissingBefore) {
            renameOutside("f", "../f");
            EXPECT_EQ(daemon.checkDocument(document).size(), 1U);
            renameOutside("../f", "f");
        }
        row.change(root + '/');
        EXPECT_EQ(refresh(), row.lines) << row.name;
        const auto saved = daemon.save(document, "text", row.isMissingBefore ? 2 : 1);
        EXPECT_EQ(saved.snapshot.value().path, path("f")) << row.name;
        daemon.close(document);
    }
}

TEST_F(DirectoryRefresh, SwappedFoldersKeepTheirNamesIDs) {
    make("a/x/1 b/y/2 a/k");
    load("a a/x b b/y");
    const std::string a = nodeID("a");
    const std::string b = nodeID("b");
    const std::string x = nodeID("a/x");
    renameOutside("a", "t");
    renameOutside("b", "a");
    renameOutside("t", "b");
    EXPECT_EQ(
        send({.command = Command::moveWorkspaceItem, .path = "b/k", .destinationPath = "a"}),
        (Lines{"moved file b/k > a/k (a b)", "listing a: y/ k", "listing b: x/", "listing a/y: 2", "listing b/x: 1"}));
    EXPECT_EQ(nodeID("a"), a);
    EXPECT_EQ(nodeID("b"), b);
    EXPECT_EQ(nodeID("b/x"), x);
}

TEST_F(DirectoryRefresh, AFolderThatLeftARenamedFolderIsFoundWhereItIs) {
    make("a/x/f a/g");
    load("a a/x");
    openDocument("a/x/f");
    renameOutside("a/x", "x");
    renameOutside("a", "A1");
    EXPECT_EQ(refresh(), (Lines{"updated x/f", "listing .: A1/ x/", "listing A1: g", "listing x: f"}));
    make("x/new");
    EXPECT_EQ(refresh("x"), Lines{"listing x: f new"}) << "it is still expanded";
}

TEST_F(DirectoryRefresh, ADocumentFollowsARenameInsideARenamedFolder) {
    make("a/f a/b/g");
    load("a a/b");
    const std::string f = openDocument("a/f");
    openDocument("a/b/g");
    renameOutside("a/b/g", "a/b/h");
    renameOutside("a/f", "a/e");
    renameOutside("a", "x");
    EXPECT_EQ(refresh(), (Lines{"listing .: x/", "listing x: b/ e", "listing x/b: h", "updated x/b/h", "updated x/e"}));
    EXPECT_EQ(daemon.save(f, "text", 2).snapshot.value().path, path("x/e"));
}

TEST_F(DirectoryRefresh, AMissingFolderIsGivenUpAfterItsAncestorWasListed) {
    make("a/b/c/f d");
    load("a a/b a/b/c");
    fs::remove_all(path("a/b"));
    EXPECT_EQ(refresh("d"), Lines{});
    EXPECT_EQ(refresh("a"), Lines{"listing a:"});
    make("a/b/c/f");
    EXPECT_EQ(refresh("a/b/c/f"), Lines{"listing a: b/"}) << "what comes back is not expanded";

    // It vanishes between the listing of its parent and its own turn.
    load("a/b");
    const int asked = daemon.fileManager->callCount(FileOperation::isDirectory);
    // One question each for the root of the request, the affected and the changed directory, the root's and a's
    // listing.
    daemon.fileManager->beforeCall(FileOperation::isDirectory, asked + 6, [this] { renameOutside("a/b", "a/z"); });
    EXPECT_EQ(refresh("a/b"), Lines{"listing a: z/"}) << "its parent was listed before it went, and is looked at again";
}

TEST_F(DirectoryRefresh, AFolderThatIsAwayForAMomentStaysExpanded) {
    make("a/b/c");
    load("a a/b");
    const int asked = daemon.fileManager->callCount(FileOperation::isDirectory);
    daemon.fileManager->beforeCall(FileOperation::isDirectory, asked + 6, [this] { renameOutside("a/b", "a/z"); });
    daemon.fileManager->beforeCall(FileOperation::isDirectory, asked + 7, [this] {
        renameOutside("a/z", "a/b");
        writeFile(path("a/b/new"), "");
    });
    EXPECT_EQ(refresh("a/b"), Lines{"listing a/b: c new"});
    writeFile(path("a/b/newer"), "");
    EXPECT_EQ(refresh("a/b"), Lines{"listing a/b: c new newer"});

    // Between the question whether it is there and its listing.
    const auto& listing = *daemon.fileIdentification;
    const auto whenListed = [&](int count) -> std::function<void()>& {
        return daemon.fileIdentification->actions[{path("a/b"), listing.listingCounts[path("a/b")] + count}];
    };
    whenListed(1) = [this] { renameOutside("a/b", "a/z"); };
    daemon.fileManager->beforeCall(FileOperation::isDirectory,
                                   daemon.fileManager->callCount(FileOperation::isDirectory) + 7,
                                   [this] { renameOutside("a/z", "a/b"); });
    EXPECT_EQ(refresh("a/b"), Lines{});
    writeFile(path("a/b/newest"), "");
    EXPECT_EQ(refresh("a/b"), Lines{"listing a/b: c new newer newest"});
}

// The inference from listings, which only changes seen from outside ask for.
class ExternalMutations : public WorkspaceTest {
protected:
    static WorkspaceBrowserNodePayload node(const std::string& nodeID, const std::string& path) {
        const bool isDirectory = path.ends_with('/');
        const fs::path bare = isDirectory ? path.substr(0, path.size() - 1) : path;
        return {.nodeID = nodeID,
                .path = bare,
                .parentPath = bare.parent_path(),
                .name = bare.filename(),
                .isDirectory = isDirectory};
    }
    // From words "ID=/path", folders with "/" at the end.
    static std::vector<WorkspaceBrowserNodePayload> nodes(const std::string& words) {
        std::vector<WorkspaceBrowserNodePayload> result;
        for (const std::string& word : wordsOf(words)) {
            const auto equals = word.find('=');
            result.push_back(node(word.substr(0, equals), word.substr(equals + 1)));
        }
        return result;
    }
    static std::string toldShort(const WorkspaceBrowserMutationPayload& mutation) {
        EXPECT_EQ(mutation.rootPath, "/w");
        EXPECT_EQ(mutation.origin, WorkspaceBrowserMutationOrigin::externalWatch);
        return std::string(nameOf(mutation.kind)) + ' ' + mutation.itemNodeID.value() +
               (mutation.isDirectory.value() ? "/ " : " ") + mutation.sourcePath.value_or("-") + '>' +
               mutation.destinationPath.value_or("-") + " (" + joined(mutation.affectedDirectoryPaths) + ')';
    }
};

TEST_F(ExternalMutations, OfOneDirectory) {
    const struct {
        const char* name;
        std::string before;
        std::string after;
        Lines told;
        Lines heldBack;
    } cases[] = {
        {"nothing", "1=/w/a 2=/w/b/", "2=/w/b/ 1=/w/a", {}, {}},
        {"creations", "", "1=/w/a 2=/w/b/", {"createdFile 1 ->/w/a (/w)", "createdFolder 2/ ->/w/b (/w)"}, {}},
        {"rename", "1=/w/a", "1=/w/b", {"renamed 1 /w/a>/w/b (/w)"}, {}},
        {"move with a renamed folder", "1=/w/x/a/", "1=/w/y/a/", {"moved 1/ /w/x/a>/w/y/a (/w/x /w/y)"}, {}},
        {"deletions are held back", "1=/w/a 2=/w/b/", "1=/w/a", {}, {"deleted 2/ /w/b>- (/w)"}},
        {"another item of the same name", "1=/w/a", "2=/w/a", {"createdFile 2 ->/w/a (/w)"}, {"deleted 1 /w/a>- (/w)"}},
        {"swap", "1=/w/a 2=/w/b", "1=/w/b 2=/w/a", {"renamed 1 /w/a>/w/b (/w)", "renamed 2 /w/b>/w/a (/w)"}, {}},
    };
    for (const auto& row : cases) {
        DirectoryRefreshPass pass{.rootPath = "/w"};
        WorkspaceNodesByID before;
        for (auto& child : nodes(row.before)) before.emplace(child.nodeID, child);
        collectWorkspaceExternalMutations(before, {.rootPath = "/w", .directoryPath = "/w", .nodes = nodes(row.after)},
                                          pass, *daemon.fileManager);
        Lines told;
        for (const auto& [key, mutation] : pass.external) {
            EXPECT_EQ(key, workspaceMutationKey(mutation));
            told.push_back(toldShort(mutation));
            const bool isNew = mutation.kind == WorkspaceBrowserMutationKind::createdFile ||
                               mutation.kind == WorkspaceBrowserMutationKind::createdFolder;
            EXPECT_EQ(pass.renamedOrMovedNodeIDs.contains(mutation.itemNodeID.value()), !isNew) << row.name;
        }
        Lines heldBack;
        for (const auto& removal : pass.pendingRemovals) heldBack.push_back(toldShort(removal.payload));
        EXPECT_EQ(told, row.told) << row.name;
        EXPECT_EQ(heldBack, row.heldBack) << row.name;
    }
}

TEST_F(ExternalMutations, ThePassComparesWithTheStateBeforeIt) {
    // The item moved from b, which is listed late, to a, which is listed early.
    ManagedWorkspace workspace("/w");
    const auto listing = [](const std::string& directory, const std::string& words) {
        WorkspaceDirectoryListing result{
            .payload = {.rootPath = "/w", .directoryPath = directory, .nodes = nodes(words)}};
        result.fileNumbers.resize(result.payload.nodes.size());
        return result;
    };
    DirectoryRefreshPass setUp{.rootPath = "/w"};
    for (const auto& before : {listing("/w/a", ""), listing("/w/b", "1=/w/b/x 2=/w/b/y")}) {
        workspace.loadedDirectoryPaths.insert(before.payload.directoryPath);
        cacheRefreshedListing(before, setUp, workspace);
    }
    DirectoryRefreshPass pass{.rootPath = "/w"};
    for (const auto& after : {listing("/w/a", "1=/w/a/x"), listing("/w/b", "2=/w/b/y")}) {
        const auto previous = previousChildNodes(after.payload.directoryPath, pass, workspace);
        collectWorkspaceExternalMutations(previous, after.payload, pass, *daemon.fileManager);
        remapMovedNodes(after.payload, pass, workspace);
        cacheRefreshedListing(after, pass, workspace);
    }
    ASSERT_EQ(pass.pendingRemovals.size(), 1U);
    EXPECT_EQ(toldShort(pass.pendingRemovals[0].payload), "deleted 1 /w/b/x>- (/w/b)");
    EXPECT_EQ(pass.remaps, (std::set<WorkspacePathRemap>{{"/w/b/x", "/w/a/x"}}));
    EXPECT_EQ(pass.changedPayloads.size(), 2U);
}

TEST_F(ExternalMutations, DirectoriesAreListedFromTheRootDown) {
    const struct {
        std::string left;
        std::string right;
        std::string root;
    } ordered[] = {
        {"/w", "/w/a", "/w"},     {"/w/b", "/w/a/a", "/w"}, {"/w/a", "/w/b", "/w"},
        {"/w/a", "/w/a.b", "/w"}, {"/", "/z", "/"},         {"/z", "/a/b", "/"},
    };
    for (const auto& row : ordered) {
        EXPECT_TRUE(ascendingWorkspaceDirectoryPathSort(row.left, row.right, row.root)) << row.left;
        EXPECT_FALSE(ascendingWorkspaceDirectoryPathSort(row.right, row.left, row.root)) << row.left;
        EXPECT_FALSE(ascendingWorkspaceDirectoryPathSort(row.left, row.left, row.root)) << row.left;
    }
}

} // namespace
