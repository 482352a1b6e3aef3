#include "identity/EventNodePathIndex.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <limits>
#include <vector>

#include "identity/EventNodeIDHint.h"
#include "workspace/PathComponents.h"

namespace {

constexpr std::uint64_t noNumber = 0;
constexpr std::uint64_t otherHint = std::numeric_limits<std::uint64_t>::max();

// Only the form that eventNodeIDHint writes: hints that look different are different, whatever their value.
std::optional<std::uint64_t> fileNumberInHint(std::string_view hint) {
    constexpr std::string_view prefix = "number:";
    if (!hint.starts_with(prefix)) return std::nullopt;
    const std::string_view digits = hint.substr(prefix.size());
    if (digits.empty() || digits[0] < '1' || digits[0] > '9') return std::nullopt;
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || number == otherHint) return std::nullopt;
    return number;
}

std::uint64_t hashOfNumber(std::uint64_t number) {
    number = (number ^ number >> 32) * 0xD6E8FEB86659FD93U;
    number = (number ^ number >> 32) * 0xD6E8FEB86659FD93U;
    return number ^ number >> 32;
}

std::string_view withoutFinalSlash(std::string_view path) {
    if (path.size() >= 2 && path.ends_with('/')) path.remove_suffix(1);
    return path;
}

} // namespace

EventNodePathIndex::EventNodePathIndex(PathTree filledTree) : tree(std::move(filledTree)) {
    tree.indexNames();
    nodesByNumber.reserve(tree.size());
    const auto end = static_cast<Node>(PathTree::top + 1 + tree.size());
    for (Node node = PathTree::top + 1; node < end; ++node) {
        const std::uint64_t number = tree.value(node);
        if (number == noNumber) continue;
        if (number == otherHint) {
            tree.setValue(node, noNumber);
            give(node, eventNodeIDHint(number));
            continue;
        }
        if (const auto overtaken = nodeOfNumber(number)) take(*overtaken);
        giveNumber(node, number);
    }
}

std::optional<std::string> EventNodePathIndex::path(std::string_view hint) const {
    const auto node = nodeOf(hint);
    if (!node) return std::nullopt;
    return tree.path(*node);
}

void EventNodePathIndex::set(std::string_view hint, std::string_view path) {
    path = withoutFinalSlash(path);
    if (!tree.contains(path)) return;
    const auto former = nodeOf(hint);
    const std::vector<Node> there = tree.findAll(path);
    const bool isThere = former && std::ranges::find(there, *former) != there.end();
    for (const Node node : there) {
        if (node != former) take(node);
    }
    if (!isThere) {
        if (former) take(*former);
        give(there.empty() ? tree.enter(path) : there.front(), hint);
        if (former) tree.prune(*former);
    }
    for (const Node node : there) tree.prune(node);
}

void EventNodePathIndex::setChildren(std::string_view directoryPath, const std::vector<NumberedName>& children) {
    Node directory = PathTree::none;
    for (const NumberedName& child : children) {
        // With its first child the directory gets its node.
        if (directory == PathTree::none) directory = onlyNode(directoryPath);
        if (directory != PathTree::none && setWhereNothingElseChanges(directory, child)) continue;
        set(eventNodeIDHint(child.fileNumber), appendingPathComponent(directoryPath, child.name));
        directory = PathTree::none; // its node may have gone with the number that was the child's
    }
}

// None also where there are several.
EventNodePathIndex::Node EventNodePathIndex::onlyNode(std::string_view path) const {
    if (!tree.contains(path)) return PathTree::none;
    const std::vector<Node> nodes = tree.findAll(path);
    return nodes.size() == 1 ? nodes[0] : PathTree::none;
}

// A name that is new with a number that is new, or one that has its number already. False for all else.
bool EventNodePathIndex::setWhereNothingElseChanges(Node directory, const NumberedName& child) {
    if (child.fileNumber == noNumber || child.fileNumber == otherHint) return false;
    Node there = PathTree::none;
    bool isAmbiguous = false;
    tree.forEachChild(directory, child.name, [&](Node node) {
        isAmbiguous = there != PathTree::none;
        there = node;
    });
    if (isAmbiguous) return false;
    const auto former = nodeOfNumber(child.fileNumber);
    if (former || there != PathTree::none) return former == there;
    giveNumber(tree.addChild(directory, child.name), child.fileNumber);
    return true;
}

void EventNodePathIndex::setAll(const EventNodePathIndex& subtree) {
    subtree.forEach([this](const std::string& hint, const std::string& path) { set(hint, path); });
}

void EventNodePathIndex::removeAtOrWithin(std::string_view path) {
    removeTrimmed(withoutFinalSlash(path));
}

void EventNodePathIndex::removeTrimmed(std::string_view path) {
    if (isAtOrWithin(rootPath(), path)) path = rootPath();
    if (!tree.contains(path)) return;
    for (const Node node : tree.findAll(path)) {
        const Node directory = tree.parent(node);
        tree.detach(node);
        tree.discard(node, [this](Node removed) { take(removed); });
        tree.prune(directory);
    }
}

void EventNodePathIndex::remap(std::string_view fromPath, std::string_view toPath) {
    fromPath = withoutFinalSlash(fromPath);
    toPath = withoutFinalSlash(toPath);
    if (fromPath == toPath) return;
    if (!tree.contains(fromPath) || !tree.contains(toPath)) return removeTrimmed(fromPath);

    // All are taken out before one is put back, since the new path may lead through the old one.
    const std::vector<Node> nodes = tree.findAll(fromPath);
    std::vector<Node> directories;
    for (const Node node : nodes) {
        directories.push_back(tree.parent(node));
        tree.detach(node);
    }
    for (const Node node : nodes) tree.attach(node, toPath);
    for (const Node directory : directories) tree.prune(directory);
}

void EventNodePathIndex::merge(EventNodePathIndex built) {
    assert(built.rootPath() == rootPath());
    const bool builtIsLarger = built.size() >= size();
    if (builtIsLarger) std::swap(*this, built);
    built.forEach([&](const std::string& hint, const std::string& path) {
        const auto known = nodeOf(hint);
        if (known && builtIsLarger) return;
        if (known) {
            take(*known);
            tree.prune(*known);
        }
        addBesideOthers(hint, path);
    });
}

void EventNodePathIndex::forEach(
    const std::function<void(const std::string& hint, const std::string& path)>& visit) const {
    for (Node node = tree.nextInSubtree(PathTree::top, PathTree::top); node != PathTree::none;
         node = tree.nextInSubtree(node, PathTree::top)) {
        if (tree.value(node) != noNumber) visit(hintOf(node), tree.path(node));
    }
}

std::optional<EventNodePathIndex::Node> EventNodePathIndex::nodeOf(std::string_view hint) const {
    if (const auto number = fileNumberInHint(hint)) return nodeOfNumber(*number);
    if (nodesByOtherHint.empty()) return std::nullopt;
    const auto found = nodesByOtherHint.find(std::string(hint));
    if (found == nodesByOtherHint.end()) return std::nullopt;
    return found->second;
}

std::optional<EventNodePathIndex::Node> EventNodePathIndex::nodeOfNumber(std::uint64_t number) const {
    return nodesByNumber.find(hashOfNumber(number), [&](Node node) { return tree.value(node) == number; });
}

std::string EventNodePathIndex::hintOf(Node node) const {
    const std::uint64_t number = tree.value(node);
    return number == otherHint ? otherHints.at(node) : eventNodeIDHint(number);
}

void EventNodePathIndex::give(Node node, std::string_view hint) {
    if (const auto number = fileNumberInHint(hint)) return giveNumber(node, *number);
    nodesByOtherHint.emplace(hint, node);
    otherHints.emplace(node, hint);
    tree.setValue(node, otherHint);
    ++count;
}

void EventNodePathIndex::giveNumber(Node node, std::uint64_t number) {
    tree.setValue(node, number);
    nodesByNumber.insert(hashOfNumber(number), node, [this](Node other) { return hashOfNumber(tree.value(other)); });
    ++count;
}

// The node may be left with nothing to say; whoever takes its hint prunes it.
void EventNodePathIndex::take(Node node) {
    const std::uint64_t number = tree.value(node);
    if (number == noNumber) return;
    if (number == otherHint) {
        nodesByOtherHint.erase(otherHints.at(node));
        otherHints.erase(node);
    } else {
        nodesByNumber.erase(hashOfNumber(number), node);
    }
    tree.setValue(node, noNumber);
    --count;
}

void EventNodePathIndex::addBesideOthers(std::string_view hint, std::string_view path) {
    for (const Node node : tree.findAll(path)) {
        if (tree.value(node) == noNumber) return give(node, hint);
    }
    give(tree.add(path), hint);
}
