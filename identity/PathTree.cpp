#include "identity/PathTree.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <limits>
#include <stdexcept>

#include "workspace/PathComponents.h"

PathTree::PathTree(std::string rootPath) : root(std::move(rootPath)) {
    allocate(); // none
    allocate(); // top
    live = 0;
}

bool PathTree::contains(std::string_view path) const {
    return isAtOrWithin(path, root);
}

PathTree::Node PathTree::find(std::string_view path) const {
    Node node = top;
    for (const std::string_view component : components(path)) {
        node = child(node, component);
        if (node == none) return none;
    }
    return node;
}

std::vector<PathTree::Node> PathTree::findAll(std::string_view path) const {
    std::vector<Node> nodes{top};
    std::vector<Node> below;
    for (const std::string_view component : components(path)) {
        below.clear();
        for (const Node directory : nodes) {
            forEachChild(directory, component, [&](Node node) { below.push_back(node); });
        }
        nodes.swap(below);
    }
    return nodes;
}

PathTree::Node PathTree::child(Node directory, std::string_view childName) const {
    const auto isMeant = [&](Node node) { return parent(node) == directory && name(node) == childName; };
    return nodesByName.find(hash(directory, childName), isMeant).value_or(none);
}

PathTree::Node PathTree::enter(std::string_view path) {
    const auto parts = components(path);
    return descend(top, parts, parts.size());
}

PathTree::Node PathTree::add(std::string_view path) {
    const auto parts = components(path);
    return addChild(descend(top, parts, parts.size() - 1), parts.back());
}

PathTree::Node PathTree::addChild(Node directory, std::string_view childName) {
    const Node node = appendChild(directory, childName, 0);
    insertName(node);
    return node;
}

PathTree::Node PathTree::appendChild(Node directory, std::string_view childName, std::uint64_t value) {
    const ByteArena::Reference storedName = names.add(childName);
    const Node node = allocate();
    record(node) = {.name = storedName};
    setValue(node, value);
    link(node, directory);
    return node;
}

void PathTree::indexNames() {
    nodesByName.reserve(live);
    for (Node node = top + 1; node < allocated; ++node) insertName(node);
}

void PathTree::setValue(Node node, std::uint64_t value) {
    record(node).lowerHalf = static_cast<std::uint32_t>(value);
    const auto upperHalf = static_cast<std::uint32_t>(value >> 32);
    auto& upperHalves = upperHalvesByBlock[node / recordsInBlock];
    if (!upperHalves && upperHalf == 0) return;
    if (!upperHalves) upperHalves = std::make_unique<std::uint32_t[]>(recordsInBlock);
    upperHalves[node % recordsInBlock] = upperHalf;
}

std::string PathTree::path(Node node) const {
    std::vector<std::string_view> parts;
    std::size_t size = root.size();
    for (; parent(node) != top; node = parent(node)) {
        parts.push_back(name(node));
        size += 1 + parts.back().size();
    }
    std::string path;
    path.reserve(size);
    path = root == "/" && !parts.empty() ? "" : root;
    for (auto part = parts.rbegin(); part != parts.rend(); ++part) (path += '/') += *part;
    return path;
}

PathTree::Node PathTree::nextInSubtree(Node node, Node subtree) const {
    if (firstChild(node) != none) return firstChild(node);
    while (node != subtree && nextSibling(node) == none) node = parent(node);
    return node == subtree ? none : nextSibling(node);
}

void PathTree::detach(Node node) {
    Record& detached = record(node);
    nodesByName.erase(hash(detached.parent, name(node)), node);
    if (detached.previous != none) {
        record(detached.previous).next = detached.next;
    } else {
        record(detached.parent).firstChild = detached.next;
    }
    if (detached.next != none) record(detached.next).previous = detached.previous;
    detached.parent = detached.previous = detached.next = none;
}

void PathTree::attach(Node node, Node directory, std::string_view newName) {
    if (name(node) != newName) {
        const ByteArena::Reference stored = names.add(newName);
        names.remove(record(node).name);
        record(node).name = stored;
    }
    link(node, directory);
    insertName(node);
}

void PathTree::attach(Node node, std::string_view path) {
    const auto parts = components(path);
    attach(node, descend(top, parts, parts.size() - 1), parts.back());
}

void PathTree::prune(Node node) {
    // A node that is gone already has no parent, and is left alone.
    while (parent(node) != none && firstChild(node) == none && value(node) == 0) {
        const Node directory = parent(node);
        detach(node);
        free(node);
        node = directory;
    }
}

// The root's own component is empty: it is a name below `top` like any other, and so the root needs no special case.
std::vector<std::string_view> PathTree::components(std::string_view path) const {
    assert(contains(path));
    std::vector<std::string_view> parts{""};
    if (path == root) return parts;
    path.remove_prefix(root == "/" ? 1 : root.size() + 1);
    parts.reserve(2 + static_cast<std::size_t>(std::ranges::count(path, '/')));
    for (std::size_t slash = path.find('/'); slash != path.npos; slash = path.find('/')) {
        parts.push_back(path.substr(0, slash));
        path.remove_prefix(slash + 1);
    }
    parts.push_back(path);
    return parts;
}

PathTree::Node PathTree::descend(Node node, const std::vector<std::string_view>& parts, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const Node existing = child(node, parts[i]);
        node = existing != none ? existing : addChild(node, parts[i]);
    }
    return node;
}

std::uint64_t PathTree::hash(Node directory, std::string_view childName) const {
    std::uint64_t mixed = std::hash<std::string_view>()(childName) + directory * 0x9E3779B97F4A7C15U;
    mixed = (mixed ^ mixed >> 32) * 0xD6E8FEB86659FD93U;
    return mixed ^ mixed >> 32;
}

PathTree::Node PathTree::allocate() {
    ++live;
    if (firstFree != none) {
        const Node node = firstFree;
        firstFree = record(node).next;
        return node;
    }
    if (allocated == std::numeric_limits<Node>::max()) throw std::length_error("too many paths");
    if (allocated % recordsInBlock == 0) {
        upperHalvesByBlock.resize(allocated / recordsInBlock + 1);
        blocks.push_back(std::make_unique_for_overwrite<Record[]>(recordsInBlock));
    }
    record(allocated) = {};
    return allocated++;
}

void PathTree::free(Node node) {
    names.remove(record(node).name);
    record(node) = {.next = firstFree};
    firstFree = node;
    --live;
}

void PathTree::link(Node node, Node directory) {
    Record& linked = record(node);
    linked.parent = directory;
    linked.previous = none;
    linked.next = record(directory).firstChild;
    if (linked.next != none) record(linked.next).previous = node;
    record(directory).firstChild = node;
}

void PathTree::insertName(Node node) {
    nodesByName.insert(hash(parent(node), name(node)), node,
                       [this](Node other) { return hash(parent(other), name(other)); });
}
