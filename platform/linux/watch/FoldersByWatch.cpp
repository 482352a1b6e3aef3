#include "platform/linux/watch/FoldersByWatch.h"

namespace {

// Watches follow one another, and the table goes by all bits of the hash.
std::uint64_t hashOf(int watch) {
    std::uint64_t mixed = (static_cast<std::uint64_t>(watch) + 1) * 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ mixed >> 32) * 0xD6E8FEB86659FD93U;
    return mixed ^ mixed >> 32;
}

} // namespace

void FoldersByWatch::enter(FolderNode* folder) {
    numbers.insert(hashOf(folder->watch), folder->number,
                   [this](std::uint32_t number) { return hashOf(tree.node(number)->watch); });
}

void FoldersByWatch::remove(FolderNode* folder) {
    numbers.erase(hashOf(folder->watch), folder->number);
}

std::vector<FolderNode*> FoldersByWatch::all(int watch) const {
    std::vector<FolderNode*> folders;
    numbers.find(hashOf(watch), [&](std::uint32_t number) {
        if (tree.node(number)->watch == watch) folders.push_back(tree.node(number));
        return false;
    });
    return folders;
}

bool FoldersByWatch::contains(int watch) const {
    return numbers.find(hashOf(watch), [&](std::uint32_t number) { return tree.node(number)->watch == watch; })
        .has_value();
}
