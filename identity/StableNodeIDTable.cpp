#include "identity/StableNodeIDTable.h"

#include <functional>
#include <utility>

#include "workspace/PathComponents.h"

namespace {

// A file with thousands of hard links must not cost thousands of questions for each.
constexpr int mostVacatedAsked = 16;

std::uint64_t hashOf(std::string_view key) {
    return std::hash<std::string_view>()(key);
}

} // namespace

std::string StableNodeIDTable::nodeID(const std::string& path, const StableNodeKey& key, const ItemExists& itemExists) {
    if (!tree.contains(path)) return key.nodeID();
    const Node node = enter(path);
    Entry entry = entryOf(node);
    if (entry != none) {
        changeKey(entry, key.stored());
    } else {
        entry = vacated(key.stored(), itemExists);
        if (entry == none) entry = make(key);
        place(entry, node);
    }
    return StableNodeKey::nodeIDOf(originOf(entry));
}

// The directory cannot go away by way of nodeID(): it holds the node that is being entered.
StableNodeIDTable::Node StableNodeIDTable::enter(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    if (slash == 0 || path == tree.rootPath()) return tree.enter(path);
    const std::string_view directoryPath = path.substr(0, slash);
    if (lastDirectory == PathTree::none || directoryPath != lastDirectoryPath) {
        lastDirectory = PathTree::none;
        lastDirectoryPath = directoryPath;
        lastDirectory = tree.enter(directoryPath);
    }
    const std::string_view name = path.substr(slash + 1);
    const Node known = tree.child(lastDirectory, name);
    return known != PathTree::none ? known : tree.addChild(lastDirectory, name);
}

std::optional<std::string> StableNodeIDTable::knownNodeID(std::string_view path) const {
    if (!tree.contains(path)) return std::nullopt;
    const Node node = tree.find(path);
    if (node == PathTree::none || entryOf(node) == none) return std::nullopt;
    return StableNodeKey::nodeIDOf(originOf(entryOf(node)));
}

void StableNodeIDTable::carry(std::string_view fromPath, std::string_view toPath) {
    if (fromPath == toPath || fromPath == tree.rootPath()) return;
    lastDirectory = PathTree::none;
    const Node source = tree.find(fromPath);
    if (source == PathTree::none) return;
    const Node directory = tree.parent(source);
    tree.detach(source);
    if (const Node target = tree.find(toPath); target != PathTree::none) {
        mergeBelow(source, target);
        discard(source);
    } else {
        tree.attach(source, toPath);
    }
    tree.prune(directory);
}

void StableNodeIDTable::removeAtOrWithin(std::string_view path) {
    lastDirectory = PathTree::none;
    const Node node = tree.find(path);
    if (node == PathTree::none) return;
    const Node directory = tree.parent(node);
    tree.detach(node);
    discard(node);
    tree.prune(directory);
}

void StableNodeIDTable::closeRoot(const std::string& rootPath, const std::vector<std::string>& openRootPaths) {
    for (const std::string& open : openRootPaths) {
        if (isAtOrWithin(rootPath, open)) return;
    }
    lastDirectory = PathTree::none;
    std::vector<std::pair<Node, std::string>> kept;
    for (const std::string& open : openRootPaths) {
        if (!isAtOrWithin(open, rootPath)) continue;
        const Node node = tree.find(open);
        if (node == PathTree::none) continue;
        tree.detach(node);
        kept.emplace_back(node, open);
    }
    removeAtOrWithin(rootPath);
    // An inner root that was taken out before an outer one finds its place in it again.
    for (auto outer = kept.rbegin(); outer != kept.rend(); ++outer) tree.attach(outer->first, outer->second);
}

StableNodeIDTable::Entry StableNodeIDTable::firstWithKey(std::string_view key) const {
    return headsByKey.find(hashOf(key), [&](Entry entry) { return keyOf(entry) == key; }).value_or(none);
}

bool StableNodeIDTable::isOrigin(std::string_view key) const {
    return entriesByOrigin.find(hashOf(key), [&](Entry entry) { return originOf(entry) == key; }).has_value();
}

// The name of an item with this key that is no longer there.
StableNodeIDTable::Entry StableNodeIDTable::vacated(std::string_view key, const ItemExists& itemExists) const {
    Entry entry = firstWithKey(key);
    for (int asked = 0; entry != none && asked < mostVacatedAsked; ++asked) {
        if (!itemExists(tree.path(records[entry].node))) return entry;
        entry = records[entry].nextWithKey;
    }
    return none;
}

StableNodeIDTable::Entry StableNodeIDTable::make(const StableNodeKey& key) {
    // A hard link, or the old file of a name that got a new one: the ID that the key would give belongs to another
    // name.
    StableNodeKey origin = key;
    while (isOrigin(origin.stored())) origin = key.numbered(++lastNumber);

    Entry entry = static_cast<Entry>(records.size());
    if (freeEntries.empty()) {
        records.emplace_back();
    } else {
        entry = freeEntries.back();
        freeEntries.pop_back();
    }
    Record& record = records[entry];
    record = {};
    record.origin = bytes.add(origin.stored());
    record.key = origin.stored() == key.stored() ? record.origin : bytes.add(key.stored());
    enterKey(entry);
    entriesByOrigin.insert(hashOf(originOf(entry)), entry, [this](Entry other) { return hashOf(originOf(other)); });
    ++count;
    return entry;
}

void StableNodeIDTable::drop(Entry entry) {
    leaveKey(entry);
    entriesByOrigin.erase(hashOf(originOf(entry)), entry);
    const Record& record = records[entry];
    if (record.key != record.origin) bytes.remove(record.key);
    bytes.remove(record.origin);
    tree.setValue(record.node, none);
    freeEntries.push_back(entry);
    --count;
}

void StableNodeIDTable::changeKey(Entry entry, std::string_view key) {
    if (keyOf(entry) == key) return;
    leaveKey(entry);
    Record& record = records[entry];
    if (record.key != record.origin) bytes.remove(record.key);
    record.key = originOf(entry) == key ? record.origin : bytes.add(key);
    enterKey(entry);
}

void StableNodeIDTable::place(Entry entry, Node node) {
    const Node former = std::exchange(records[entry].node, node);
    tree.setValue(node, entry);
    if (former == PathTree::none) return;
    tree.setValue(former, none);
    tree.prune(former);
}

// Into the second place of the list, so that the table needs no change.
void StableNodeIDTable::enterKey(Entry entry) {
    const Entry head = firstWithKey(keyOf(entry));
    if (head == none) return indexKey(entry);
    Record& record = records[entry];
    record.previousWithKey = head;
    record.nextWithKey = records[head].nextWithKey;
    if (record.nextWithKey != none) records[record.nextWithKey].previousWithKey = entry;
    records[head].nextWithKey = entry;
}

void StableNodeIDTable::leaveKey(Entry entry) {
    Record& record = records[entry];
    const Entry previous = std::exchange(record.previousWithKey, none);
    const Entry next = std::exchange(record.nextWithKey, none);
    if (next != none) records[next].previousWithKey = previous;
    if (previous != none) {
        records[previous].nextWithKey = next;
        return;
    }
    headsByKey.erase(hashOf(keyOf(entry)), entry);
    if (next != none) indexKey(next);
}

void StableNodeIDTable::indexKey(Entry entry) {
    headsByKey.insert(hashOf(keyOf(entry)), entry, [this](Entry other) { return hashOf(keyOf(other)); });
}

void StableNodeIDTable::discard(Node subtree) {
    tree.discard(subtree, [this](Node node) {
        if (const Entry entry = entryOf(node); entry != none) drop(entry);
    });
}

// Moves all that the target lacks; what remains below the source is known at the new place already.
void StableNodeIDTable::mergeBelow(Node sourceTop, Node targetTop) {
    std::vector<std::pair<Node, Node>> pending{{sourceTop, targetTop}};
    while (!pending.empty()) {
        const auto [source, target] = pending.back();
        pending.pop_back();
        const Entry entry = entryOf(source);
        if (entry != none && entryOf(target) == none) {
            tree.setValue(source, none);
            tree.setValue(target, entry);
            records[entry].node = target;
        }
        for (Node child = tree.firstChild(source); child != PathTree::none;) {
            const Node next = tree.nextSibling(child);
            const std::string_view name = tree.name(child);
            if (const Node same = tree.child(target, name); same != PathTree::none) {
                pending.emplace_back(child, same);
            } else {
                tree.detach(child);
                tree.attach(child, target, name);
            }
            child = next;
        }
    }
}
