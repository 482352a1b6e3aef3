#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "identity/PathTree.h"
#include "platform/NodeTable.h"

// For every item of a workspace the path at which it was last known, found by the item's event node ID hint. It answers
// a rename of which only the new place is told: where was this item before?
//
// It behaves like a map from hint to path in which the hint stored last wins, but is held as a tree of names, so that
// renaming a directory is one step whatever lies below it. A hint is nearly always "number:" and a file number; any
// other text works as well and costs more. It differs from a map only in what is no longer true: a path at which an
// item has just been seen forgets the item that was there before, and paths outside the root are never held. One "/" at
// the end of a path is ignored.
class EventNodePathIndex {
public:
    explicit EventNodePathIndex(std::string rootPath) : EventNodePathIndex(PathTree(std::move(rootPath))) {}
    // From a tree that was filled by PathTree::appendChild with file numbers as values. Where a number comes twice, the
    // node that was appended last has it.
    explicit EventNodePathIndex(PathTree filledTree);

    EventNodePathIndex(EventNodePathIndex&&) = default;
    EventNodePathIndex& operator=(EventNodePathIndex&&) = default;

    struct NumberedName {
        std::string_view name{};
        std::uint64_t fileNumber{};
    };

    const std::string& rootPath() const { return tree.rootPath(); }
    std::optional<std::string> path(std::string_view hint) const;
    std::size_t size() const { return count; }
    bool isEmpty() const { return count == 0; }
    std::size_t nodeCount() const { return tree.size(); } // what memory goes with: items and the directories above them

    void set(std::string_view hint, std::string_view path);
    // As set() for each item that a listing of a directory has shown, but looks the directory up only once. Its path is
    // in normal form.
    void setChildren(std::string_view directoryPath, const std::vector<NumberedName>& children);
    // Sets all that the index of a directory within the root holds.
    void setAll(const EventNodePathIndex& subtree);
    void removeAtOrWithin(std::string_view path);
    // What is at or within the old path is from now on at or within the new one; what is there already stays.
    void remap(std::string_view fromPath, std::string_view toPath);
    // Takes over what a walk through the same root has found. Where both know a hint, the built index is believed. The
    // cost goes with the smaller of the two.
    void merge(EventNodePathIndex built);

    void forEach(const std::function<void(const std::string& hint, const std::string& path)>& visit) const;

private:
    using Node = PathTree::Node;

    Node onlyNode(std::string_view path) const;
    bool setWhereNothingElseChanges(Node directory, const NumberedName& child);
    std::optional<Node> nodeOf(std::string_view hint) const;
    std::optional<Node> nodeOfNumber(std::uint64_t number) const;
    std::string hintOf(Node node) const;
    void give(Node node, std::string_view hint);
    void giveNumber(Node node, std::uint64_t number);
    void take(Node node);
    void removeTrimmed(std::string_view path);
    void addBesideOthers(std::string_view hint, std::string_view path);

    PathTree tree; // a node's value is the file number of the item there, 0 when none is known
    NodeTable nodesByNumber{};
    // Hints that are no file number between 1 and 2^64 - 2. Their nodes have the number 2^64 - 1.
    std::unordered_map<std::string, Node> nodesByOtherHint{};
    std::unordered_map<Node, std::string> otherHints{};
    std::size_t count = 0;
};
