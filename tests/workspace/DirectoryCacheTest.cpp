#include "workspace/DirectoryCache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "workspace/PathComponents.h"

namespace {

using namespace std::string_literals;

// A listing from words: "a/" is a folder, all others are files. The ID of a node is its path, unless told otherwise.
WorkspaceDirectoryListing listing(const std::string& directoryPath, const std::string& words) {
    WorkspaceDirectoryListing result{.payload = {.rootPath = "/w", .directoryPath = directoryPath}};
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
        const bool isDirectory = word.ends_with('/');
        if (isDirectory) word.pop_back();
        const std::string path = appendingPathComponent(directoryPath, word);
        result.payload.nodes.push_back(
            {.nodeID = path, .path = path, .parentPath = directoryPath, .name = word, .isDirectory = isDirectory});
        result.fileNumbers.push_back(result.payload.nodes.size());
    }
    return result;
}

template <typename Paths, typename PathOf>
std::string sorted(const Paths& paths, PathOf pathOf) {
    std::vector<std::string> result;
    for (const auto& entry : paths) result.push_back(pathOf(entry));
    std::sort(result.begin(), result.end());
    std::string text;
    for (const std::string& path : result) text += (text.empty() ? "" : " ") + path;
    return text;
}

std::string loaded(const ManagedWorkspace& workspace) {
    return sorted(workspace.loadedDirectoryPaths, [](const auto& path) { return path; });
}

std::string listed(const ManagedWorkspace& workspace) {
    return sorted(workspace.childNodeIDsByDirectoryPath, [](const auto& entry) { return entry.first; });
}

std::string cached(const ManagedWorkspace& workspace) {
    return sorted(workspace.cachedNodesByID, [](const auto& entry) { return entry.first; });
}

ManagedWorkspace workspaceWithListings() {
    ManagedWorkspace workspace("/w");
    cacheWorkspaceDirectoryPayload(listing("/w", "d/ f"), workspace);
    cacheWorkspaceDirectoryPayload(listing("/w/d", "e/ x"), workspace);
    cacheWorkspaceDirectoryPayload(listing("/w/d/e", "y"), workspace);
    return workspace;
}

TEST(DirectoryCache, GivesBackTheLastListing) {
    ManagedWorkspace workspace = workspaceWithListings();
    EXPECT_EQ(cachedWorkspaceDirectoryPayload("/w", "/w/d", workspace), listing("/w/d", "e/ x").payload);
    cacheWorkspaceDirectoryPayload(listing("/w/d", "z x"), workspace);
    EXPECT_EQ(cachedWorkspaceDirectoryPayload("/w", "/w/d", workspace), listing("/w/d", "z x").payload);
    EXPECT_EQ(cachedWorkspaceDirectoryPayload("/w", "/w/no", workspace), listing("/w/no", "").payload);
    workspace.cachedNodesByID.erase("/w/d/z");
    EXPECT_EQ(cachedWorkspaceDirectoryPayload("/w", "/w/d", workspace), listing("/w/d", "x").payload);
}

TEST(DirectoryCache, AListingIsCachedAsItIsOnlyIfEveryNodeIs) {
    ManagedWorkspace workspace = workspaceWithListings();
    const auto isCached = [&](const std::string& words) {
        return isCachedAsItIs(listing("/w/d", words).payload, workspace);
    };
    EXPECT_TRUE(isCached("e/ x"));
    for (const std::string other : {"", "e/", "x e/", "e x", "e/ y", "e/ x y"}) EXPECT_FALSE(isCached(other)) << other;
    EXPECT_FALSE(isCachedAsItIs(listing("/w/no", "").payload, workspace));
    workspace.cachedNodesByID.erase("/w/d/x");
    EXPECT_FALSE(isCached("e/ x"));
    EXPECT_FALSE(isCached("e/"));
}

TEST(DirectoryCache, ListedChildrenAreIndexedByTheirFileNumber) {
    ManagedWorkspace workspace("/w");
    auto numbered = listing("/w", "a b");
    numbered.fileNumbers = {7, std::nullopt};
    cacheWorkspaceDirectoryPayload(numbered, workspace);
    EXPECT_EQ(workspace.knownPathsByEventNodeID.path("number:7"), "/w/a");
    EXPECT_EQ(workspace.knownPathsByEventNodeID.size(), 1U);
}

TEST(DirectoryCache, PruningTakesTwoStepsForADirectoryThatIsGone) {
    ManagedWorkspace workspace = workspaceWithListings();
    pruneWorkspaceCache(workspace);
    EXPECT_EQ(loaded(workspace), "/w /w/d /w/d/e") << "nothing to prune";

    cacheWorkspaceDirectoryPayload(listing("/w", "f"), workspace);
    pruneWorkspaceCache(workspace);
    EXPECT_EQ(loaded(workspace), "/w /w/d/e");
    EXPECT_EQ(listed(workspace), "/w /w/d/e");
    EXPECT_EQ(cached(workspace), "/w/d/e /w/d/e/y /w/d/x /w/f") << "the children of the directory are still there";

    pruneWorkspaceCache(workspace);
    EXPECT_EQ(loaded(workspace), "/w");
    EXPECT_EQ(cached(workspace), "/w/d/e/y /w/f");
    pruneWorkspaceCache(workspace);
    EXPECT_EQ(cached(workspace), "/w/f");
}

TEST(DirectoryCache, PruningDropsADirectoryThatBecameAFile) {
    ManagedWorkspace workspace = workspaceWithListings();
    cacheWorkspaceDirectoryPayload(listing("/w", "d f"), workspace);
    pruneWorkspaceCache(workspace);
    EXPECT_EQ(listed(workspace), "/w /w/d/e");
}

TEST(DirectoryCache, RemovingLoadedDirectories) {
    const struct {
        const char* name;
        std::string atOrWithin;
        std::string left;
    } cases[] = {
        {"a directory and those below it", "/w/d", "/w /w/d2"},
        {"one below", "/w/d/e", "/w /w/d /w/d2"},
        {"what is not loaded", "/w/d/e/y", "/w /w/d /w/d/e /w/d2"},
        {"the root", "/w", ""},
        {"everything", "/", ""},
    };
    for (const auto& row : cases) {
        ManagedWorkspace workspace = workspaceWithListings();
        cacheWorkspaceDirectoryPayload(listing("/w/d2", ""), workspace);
        removeLoadedWorkspaceDirectory(row.atOrWithin, workspace);
        EXPECT_EQ(loaded(workspace), row.left) << row.name;
        EXPECT_EQ(listed(workspace), row.left) << row.name;
    }
}

TEST(DirectoryListing, IgnoredPaths) {
    const struct {
        std::string path;
        std::string root;
        bool isIgnored;
    } cases[] = {
        {"/w/.logs", "/w", true},
        {"/w/.logs/x", "/w", true},
        {"/w/a/.marblefern", "/w", true},
        {"/w/a/.marblefernlogs/b/c", "/w", true},
        {"/w", "/w", false},
        {"/w/a/.DS_Store", "/w", false},
        {"/w/.logs2/x", "/w", false},
        {"/w/x.logs", "/w", false},
        {"/v/.logs", "/w", false},
        {"/w2/.logs", "/w", false},
        {"/.logs/w", "/.logs/w", false},
        {"/.logs/w/a", "/.logs/w", false},
        {"/.logs/w/.logs", "/.logs/w", true},
        {"/.logs", "/", true},
        {"/a/.logs/b", "/", true},
        {"/", "/", false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(shouldIgnoreWorkspacePath(row.path, row.root), row.isIgnored) << row.path << " in " << row.root;
    }
}

} // namespace
