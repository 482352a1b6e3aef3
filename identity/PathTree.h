#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "identity/ByteArena.h"
#include "platform/NodeTable.h"

// Paths in large numbers, as a tree of names below a root. A node costs its name, 24 bytes, and some six bytes in a
// table by which a directory finds its children. Moving a subtree relinks one node; leaving one out visits only it.
//
// A node carries a value that belongs to the tree's owner; 0 says that the path as such means nothing. Several nodes
// may stand for the same path when the owner wants that. Paths are byte strings, cut at each "/" and not looked at
// further; the functions that take one expect it at or within the root.
class PathTree {
public:
    using Node = std::uint32_t;

    static constexpr Node none = 0;

    explicit PathTree(std::string rootPath);

    const std::string& rootPath() const { return root; }
    bool contains(std::string_view path) const; // at or within the root, be there a node or not

    Node find(std::string_view path) const; // none when there is no such node
    std::vector<Node> findAll(std::string_view path) const;
    Node child(Node parent, std::string_view name) const;
    // Calls the visitor with every child of that name.
    template <class Visit>
    void forEachChild(Node directory, std::string_view childName, const Visit& visit) const {
        nodesByName.find(hash(directory, childName), [&](Node node) {
            if (parent(node) == directory && name(node) == childName) visit(node);
            return false;
        });
    }

    // The node for the path, made with all that is missing above it.
    Node enter(std::string_view path);
    // One more node for the path, whether or not there is one.
    Node add(std::string_view path);
    Node addChild(Node parent, std::string_view name);

    // For filling an empty tree quickly: nodes are numbered upwards from top + 1, and cannot be found by name before
    // indexNames() is called, which must be done once and before anything else is asked of the tree.
    Node appendChild(Node parent, std::string_view name, std::uint64_t value);
    void indexNames();

    std::uint64_t value(Node node) const {
        const auto& upperHalves = upperHalvesByBlock[node / recordsInBlock];
        const std::uint64_t upperHalf = upperHalves ? upperHalves[node % recordsInBlock] : 0;
        return upperHalf << 32 | record(node).lowerHalf;
    }
    void setValue(Node node, std::uint64_t value);
    std::string path(Node node) const;
    std::string_view name(Node node) const { return names.view(record(node).name); } // valid while the node is

    Node parent(Node node) const { return record(node).parent; }
    Node firstChild(Node node) const { return record(node).firstChild; }
    Node nextSibling(Node node) const { return record(node).next; }
    // The node that follows in a walk through the subtree of top that meets parents before children; none at its end.
    Node nextInSubtree(Node node, Node top) const;
    // The parent of all nodes for the root path. It stands for no path itself.
    static constexpr Node top = 1;

    // Takes the node with all below it out of its directory. It must then be attached or discarded.
    void detach(Node node);
    void attach(Node node, Node parent, std::string_view name);
    // To where the path says; directories that are missing above it are made.
    void attach(Node node, std::string_view path);

    // Removes a detached node and all below it. removed(node) is called for each before it goes, children first.
    template <class Removed>
    void discard(Node subtree, const Removed& removed) {
        Node node = subtree;
        while (true) {
            while (firstChild(node) != none) node = firstChild(node);
            removed(node);
            const Node directory = parent(node);
            if (node != subtree) detach(node);
            free(node);
            if (node == subtree) return;
            node = directory;
        }
    }
    // Removes the node if it has neither a value nor children, and what thereby becomes useless above it. It may be
    // called for a node that an earlier call has removed, as long as none was made since.
    void prune(Node node);

    std::size_t size() const { return live; } // nodes

private:
    struct Record {
        Node parent{};
        Node firstChild{};
        Node previous{};
        Node next{};
        ByteArena::Reference name{};
        std::uint32_t lowerHalf{}; // of the value
    };
    static constexpr std::size_t recordsInBlock = 1024;

    Record& record(Node node) { return blocks[node / recordsInBlock][node % recordsInBlock]; }
    const Record& record(Node node) const { return blocks[node / recordsInBlock][node % recordsInBlock]; }
    std::vector<std::string_view> components(std::string_view path) const;
    Node descend(Node from, const std::vector<std::string_view>& names, std::size_t count);
    std::uint64_t hash(Node parent, std::string_view name) const;
    Node allocate();
    void free(Node node);
    void link(Node node, Node parent);
    void insertName(Node node);

    std::string root;
    std::vector<std::unique_ptr<Record[]>> blocks{};
    // Few file systems have file numbers of more than 32 bits; a block has these only once there is one in it.
    std::vector<std::unique_ptr<std::uint32_t[]>> upperHalvesByBlock{};
    ByteArena names{};
    NodeTable nodesByName{};
    Node allocated = 0;    // every node ever made is below this
    Node firstFree = none; // a list through `next`
    std::size_t live = 0;
};
