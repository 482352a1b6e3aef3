#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "identity/ByteArena.h"
#include "identity/PathTree.h"
#include "identity/StableNodeKey.h"
#include "platform/NodeTable.h"

// The IDs of all items that were listed, path first and file second: a name keeps its ID while it stays occupied, by
// whatever file, so that a save which replaces the file is no event in the client's tree; and a file whose name is gone
// takes its ID along to the name under which it is found again. No two names ever have the same ID.
// Paths are in normal form.
class StableNodeIDTable {
public:
    using ItemExists = std::function<bool(const std::string& path)>;

    // The ID of the item with this key that was just seen at the path.
    std::string nodeID(const std::string& path, const StableNodeKey& key, const ItemExists& itemExists);

    // The ID of the item that was last seen at the path.
    std::optional<std::string> knownNodeID(std::string_view path) const;

    // The item at the path was renamed or moved. Names that are known at the new place already keep their IDs.
    void carry(std::string_view fromPath, std::string_view toPath);
    void removeAtOrWithin(std::string_view path);
    // Forgets what is at or within the root, unless it is also at or within one of the roots that stay open.
    void closeRoot(const std::string& rootPath, const std::vector<std::string>& openRootPaths);

    std::size_t size() const { return count; } // names that have an ID

private:
    using Node = PathTree::Node;
    using Entry = std::uint32_t;

    static constexpr Entry none = 0;

    // What is known of one name. Those with the same key form a list, whose head the table of keys knows.
    struct Record {
        Node node{};
        ByteArena::Reference key{};    // of the item that was last seen there
        ByteArena::Reference origin{}; // the key of which the ID is made; the same reference while it is the same key
        Entry previousWithKey{};
        Entry nextWithKey{};
    };

    Entry entryOf(Node node) const { return static_cast<Entry>(tree.value(node)); }
    std::string_view keyOf(Entry entry) const { return bytes.view(records[entry].key); }
    std::string_view originOf(Entry entry) const { return bytes.view(records[entry].origin); }
    Node enter(std::string_view path);
    Entry firstWithKey(std::string_view key) const;
    bool isOrigin(std::string_view key) const;
    Entry vacated(std::string_view key, const ItemExists& itemExists) const;

    Entry make(const StableNodeKey& key);
    void drop(Entry entry);
    void changeKey(Entry entry, std::string_view key);
    void place(Entry entry, Node node);
    void enterKey(Entry entry);
    void leaveKey(Entry entry);
    void indexKey(Entry entry);

    void discard(Node subtree);
    void mergeBelow(Node source, Node target);

    PathTree tree{"/"}; // a node's value is its entry
    ByteArena bytes{};
    std::vector<Record> records = std::vector<Record>(1);
    std::vector<Entry> freeEntries{};
    NodeTable headsByKey{};
    NodeTable entriesByOrigin{};
    std::string lastDirectoryPath{}; // of the item that was entered last: a listing enters one item after the other
    Node lastDirectory = PathTree::none;
    std::uint32_t lastNumber = 0;
    std::size_t count = 0;
};
