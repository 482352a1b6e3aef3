#include "watch/RefreshKeys.h"

#include <gtest/gtest.h>

#include "tests/support/WorkspaceTest.h"

namespace {

using Kind = WorkspaceWatchEventKind;

class RefreshKeys : public WorkspaceTest {
protected:
    std::string keys(const std::string& loaded, const WorkspaceWatchEvent& event) const {
        ManagedWorkspace workspace(root);
        for (const auto& directory : wordsOf(loaded)) workspace.loadedDirectoryPaths.insert(path(directory));
        Lines keys;
        for (const auto& key : refreshKeys(workspace, event, *daemon.fileManager)) {
            EXPECT_EQ(key.rootPath, root);
            keys.push_back(relative(key.directoryPath));
        }
        return joined(keys);
    }
};

TEST_F(RefreshKeys, AncestorsEndWithTheRoot) {
    const struct {
        std::string start;
        std::string root;
        std::string ancestors;
    } cases[] = {
        {"/w/a/b", "/w", "/w/a/b /w/a /w"},
        {"/w/./a/", "/w", "/w/a /w"},
        {"/w", "/w", "/w"},
        {"/w2/a", "/w", "/w"},
        {"/", "/w", "/w"},
        {"/a/b", "/", "/a/b /a /"},
        {"/", "/", "/"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(joined(ancestorPaths(row.start, row.root, *daemon.fileManager)), row.ancestors) << row.start;
    }
}

TEST_F(RefreshKeys, OfEveryKindOfEvent) {
    make("a/b/c/f a/x d/e/f .logs/");
    const std::string all = ". a a/b d d/e";
    const struct {
        const char* name;
        std::string loaded;
        Kind kind;
        std::string path;
        std::optional<std::string> relatedPath;
        std::string keys;
    } cases[] = {
        {"a file, up to the root", all, Kind::itemModified, "a/x", {}, ". a"},
        {"a folder itself", all, Kind::itemCreated, "a/b", {}, ". a a/b"},
        {"a folder that is gone", all, Kind::itemRemoved, "a/gone", {}, ". a"},
        {"from a folder that is not loaded", all, Kind::itemCreated, "a/b/c/f", {}, ". a a/b"},
        {"nothing loaded on the way", "d", Kind::changeInDirectory, "a/x", {}, ""},
        {"the root instead of nothing", ". d", Kind::itemChangedOwner, "a/x", {}, "."},
        {"the root itself", all, Kind::itemModified, ".", {}, "."},
        {"the root that changed", "d", Kind::rootChanged, ".", {}, "."},
        {"outside", all, Kind::itemModified, "../x", {}, "."},
        {"a rename within a folder", all, Kind::itemRenamed, "d/e/f", "d/e/g", ". d d/e"},
        {"a move", all, Kind::itemRenamed, "a/b/c/f", "d/e/f", ". a a/b d d/e"},
        {"a renamed folder is listed as a child only", all, Kind::itemRenamed, "a/b2", "a/b", ". a"},
        {"a rename of which one end is unknown", all, Kind::itemRenamed, "d/x", {}, ". a a/b d d/e"},
        {"ignored", all, Kind::itemModified, ".logs/x", {}, ""},
        {"ignored below", all, Kind::rootChanged, "a/.marblefern", {}, ""},
        {"ignored at the other end", all, Kind::itemRenamed, "a/x", ".logs/x", ""},
    };
    for (const auto& row : cases) {
        WorkspaceWatchEvent event{.rootPath = root, .path = path(row.path), .kind = row.kind};
        if (row.relatedPath) event.relatedPath = path(*row.relatedPath);
        EXPECT_EQ(keys(row.loaded, event), row.keys) << row.name;
    }
}

TEST_F(RefreshKeys, TheDiskIsAskedWhereTheEventDoesNotTell) {
    make("a/b/ l>a");
    const struct {
        const char* name;
        Kind kind;
        std::string path;
        bool isRegularFile;
        std::string keys;
    } cases[] = {
        {"a link to a folder", Kind::itemCreated, "l", false, ". l"},
        {"no longer the file that came", Kind::itemCreated, "a/b", true, ". a"},
        {"no longer the file that was written", Kind::itemModified, "a/b", true, ". a"},
        {"what came after the file that went", Kind::itemRemoved, "a/b", true, ". a a/b"},
    };
    for (const auto& row : cases) {
        const WorkspaceWatchEvent event{
            .rootPath = root, .path = path(row.path), .kind = row.kind, .isRegularFile = row.isRegularFile};
        EXPECT_EQ(keys(". a a/b l", event), row.keys) << row.name;
    }
}

} // namespace
