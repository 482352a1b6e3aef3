#include "tools/console/WorkspaceTree.h"

#include <gtest/gtest.h>

namespace {

EditorDocumentDaemonEnvelope listing(const std::string& directoryPath, const std::vector<std::string>& names) {
    WorkspaceBrowserDirectoryPayload directory{.rootPath = "/p", .directoryPath = directoryPath};
    for (const std::string& name : names) {
        const bool isDirectory = name.ends_with('/');
        const std::string plain = name.substr(0, name.size() - (isDirectory ? 1 : 0));
        directory.nodes.push_back({.path = directoryPath + "/" + plain, .name = plain, .isDirectory = isDirectory});
    }
    return {.workspaceRootPath = "/p", .workspaceDirectory = directory};
}

std::string shown(const WorkspaceTree& tree) {
    std::string text;
    for (const TreeRow& row : tree.rows()) text += treeLine(row) + "\n";
    return text;
}

TEST(WorkspaceTree, FollowsTheListings) {
    WorkspaceTree tree;
    tree.apply(listing("/p", {"a/", "b/", "c"}));
    tree.apply(listing("/p/a", {"x/"}));
    tree.apply(listing("/p/a/x", {"deep"}));
    const std::string expanded = "- /p/\n  - a/\n    - x/\n        deep\n  + b/\n    c\n";
    EXPECT_EQ(shown(tree), expanded);

    tree.collapse("/p/a");
    tree.apply(listing("/p/a/x", {"deep", "new"}));
    EXPECT_EQ(shown(tree), "- /p/\n  + a/\n  + b/\n    c\n");

    // A folder that left takes what is below it along, and comes back folded up.
    tree.apply(listing("/p", {"b/", "c"}));
    tree.apply(listing("/p", {"a/"}));
    EXPECT_EQ(shown(tree), "- /p/\n  + a/\n");
    tree.apply(listing("/p/a", {}));
    EXPECT_EQ(shown(tree), "- /p/\n  - a/\n");

    // A file in the place of a folder.
    tree.apply(listing("/p", {"a"}));
    EXPECT_EQ(shown(tree), "- /p/\n    a\n");

    auto ofAnotherRoot = listing("/q", {"y"});
    ofAnotherRoot.workspaceDirectory->rootPath = "/q";
    tree.apply(ofAnotherRoot);
    tree.apply({.event = EditorDocumentEventKind::workspaceRootUnavailable, .workspaceRootPath = "/q"});
    EXPECT_EQ(shown(tree), "- /p/\n    a\n");
    tree.apply({.event = EditorDocumentEventKind::workspaceRootUnavailable, .workspaceRootPath = "/p"});
    EXPECT_EQ(shown(tree), "");
}

} // namespace
