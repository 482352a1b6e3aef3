#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/NodeTable.h"
#include "platform/linux/watch/FolderTree.h"

// The folders of a tree by their watches. The kernel has one watch for a folder, however many paths lead to it and
// however many folders of the tree are thought to be there, so that several may have the same. Watches are numbers that
// only ever grow, so no table could have a place for each.
class FoldersByWatch {
public:
    explicit FoldersByWatch(const FolderTree& folderTree) : tree(folderTree) {}

    // The folder's watch stays the same as long as it is entered.
    void enter(FolderNode* folder);
    void remove(FolderNode* folder);

    std::vector<FolderNode*> all(int watch) const;
    bool contains(int watch) const;
    std::size_t size() const { return numbers.size(); }

private:
    const FolderTree& tree;
    NodeTable numbers{};
};
