#include "identity/EventNodePathIndexBuild.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "identity/StableNodeID.h"
#include "platform/PlatformError.h"
#include "workspace/PathComponents.h"

namespace {

using Node = PathTree::Node;

std::optional<FileAttributes> attributesOf(const std::string& path, const FileManager& fileManager) {
    try {
        return fileManager.attributesOfItem(path, FollowLinks::no);
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

// Depth first, without recursion: a tree may be deeper than any stack.
void fillBelow(Node top, PathTree& tree, DirectoryWalk& walk) {
    std::vector<Node> pendingDirectories;
    const auto read = [&](Node directory) {
        walk.forEachEntry([&tree, &pendingDirectories, directory](const WalkedEntry& entry) {
            const Node child = tree.appendChild(directory, entry.name, entry.fileNumber);
            if (entry.type == FileType::directory) pendingDirectories.push_back(child);
        });
    };
    read(top);
    Node present = top;
    while (!pendingDirectories.empty()) {
        const Node next = pendingDirectories.back();
        pendingDirectories.pop_back();
        for (; present != tree.parent(next); present = tree.parent(present)) walk.leave();
        if (!walk.enter(std::string(tree.name(next)))) continue;
        present = next;
        read(present);
    }
}

EventNodePathIndex builtIndex(const std::string& rootPath, std::optional<std::uint64_t> rootNumber,
                              DirectoryWalk* walk) {
    PathTree tree(rootPath);
    const Node root = tree.appendChild(PathTree::top, "", rootNumber.value_or(0));
    if (walk) fillBelow(root, tree, *walk);
    return EventNodePathIndex(std::move(tree));
}

} // namespace

EventNodePathIndex buildWorkspaceEventNodePathIndex(const std::string& rootPath, const DirectoryWalking& walking,
                                                    const FileManager& fileManager) {
    const auto attributes = attributesOf(rootPath, fileManager);
    const auto walk = walking.walk(rootPath, FollowLinks::yes);
    return builtIndex(rootPath, attributes ? attributes->fileNumber : std::nullopt, walk.get());
}

void indexWorkspaceEventNodePathSubtree(const std::string& path, EventNodePathIndex& index,
                                        const DirectoryWalking& walking, const FileManager& fileManager) {
    if (!isAtOrWithin(path, index.rootPath())) return;
    const auto attributes = attributesOf(path, fileManager);
    if (!attributes || !attributes->fileNumber) return;
    if (attributes->type != FileType::directory) return index.set(eventNodeIDHint(*attributes->fileNumber), path);
    const auto walk = walking.walk(path, FollowLinks::no);
    index.setAll(builtIndex(path, attributes->fileNumber, walk.get()));
}

std::chrono::milliseconds eventNodeIndexDelay(const std::optional<std::string>& value) {
    if (!value) return {};
    std::string_view digits = *value;
    if (digits.starts_with('+')) digits.remove_prefix(1);
    if (digits.starts_with('-')) return {};
    std::int64_t milliseconds = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), milliseconds);
    if (error != std::errc() || end != digits.data() + digits.size()) return {};
    // Longer than anybody waits, and short enough for every clock.
    constexpr std::chrono::milliseconds longest = std::chrono::hours(24 * 365);
    return std::min(std::chrono::milliseconds(milliseconds), longest);
}
