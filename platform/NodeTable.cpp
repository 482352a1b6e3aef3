#include "platform/NodeTable.h"

#include <cassert>
#include <utility>

namespace {

constexpr std::size_t nodesBeforeDivision = 3072;
constexpr std::size_t nodesInReservedShard = 2048;
constexpr unsigned deepest = 24; // the hash bits below are for the place in the shard

std::size_t capacityFor(std::size_t nodes) {
    return nodes * 6 / 5 + 8;
}

std::size_t withRoomToGrow(std::size_t nodes) {
    return nodes * 7 / 5;
}

} // namespace

NodeTable::Shard::Shard(std::size_t expectedNodes, unsigned sharedBits)
    : nodes(std::make_unique<std::uint32_t[]>(capacityFor(expectedNodes) + (capacityFor(expectedNodes) + 3) / 4)),
      capacity(static_cast<std::uint32_t>(capacityFor(expectedNodes))),
      depth(sharedBits) {}

void NodeTable::Shard::place(std::uint64_t hash, Node node) {
    std::uint32_t slot = firstSlot(hash);
    while (tags()[slot] > erased) slot = slotAfter(slot);
    if (tags()[slot] == empty) ++used;
    ++live;
    tags()[slot] = tagOf(hash);
    nodes[slot] = node;
}

void NodeTable::Shard::erase(std::uint64_t hash, Node node) {
    std::uint32_t slot = firstSlot(hash);
    while (tags()[slot] <= erased || nodes[slot] != node) {
        assert(tags()[slot] != empty);
        slot = slotAfter(slot);
    }
    tags()[slot] = erased;
    --live;
    // No search goes on past an empty slot, so the erased ones in front of it can be empty as well.
    if (tags()[slotAfter(slot)] != empty) return;
    for (; tags()[slot] == erased; slot = slotBefore(slot), --used) tags()[slot] = empty;
}

void NodeTable::erase(std::uint64_t hash, Node node) {
    Shard& shard = shards[shardIndex(hash)];
    shard.erase(hash, node);
    --total;
    if (shard.live > 0) return;
    const unsigned shardDepth = shard.depth;
    shard = Shard();
    shard.depth = shardDepth;
}

void NodeTable::reserve(std::size_t count) {
    assert(total == 0);
    depth = 0;
    while (depth < deepest && count >> depth > nodesInReservedShard) ++depth;
    shards.clear();
    directory.clear();
    for (std::uint32_t index = 0; index < std::uint32_t{1} << depth; ++index) {
        shards.emplace_back(count >> depth, depth);
        directory.push_back(index);
    }
}

// Nodes of one and the same hash cannot be divided. The bound on the depth keeps them, should there ever be many, from
// doubling the directory again and again.
bool NodeTable::mayDivide(const Shard& shard) const {
    return shard.live >= nodesBeforeDivision && shard.depth < deepest &&
           total >> shard.depth >= nodesBeforeDivision / 8;
}

void NodeTable::makeRoom(std::uint64_t hash, const HashOf& hashOf) {
    Shard& shard = shards[shardIndex(hash)];
    mayDivide(shard) ? divide(hash, hashOf) : grow(shard, hashOf);
}

void NodeTable::grow(Shard& shard, const HashOf& hashOf) {
    Shard larger(withRoomToGrow(shard.live), shard.depth);
    for (std::uint32_t slot = 0; slot < shard.capacity; ++slot) {
        if (shard.tags()[slot] > erased) larger.place(hashOf(shard.nodes[slot]), shard.nodes[slot]);
    }
    shard = std::move(larger);
}

void NodeTable::divide(std::uint64_t hash, const HashOf& hashOf) {
    const std::uint32_t lowerIndex = shardIndex(hash);
    const unsigned wholeDepth = shards[lowerIndex].depth;
    if (wholeDepth == depth) doubleDirectory();
    const std::size_t sharing = std::size_t{1} << (depth - wholeDepth);
    const std::size_t first = (hash >> (64 - depth)) / sharing * sharing;
    const auto upperIndex = static_cast<std::uint32_t>(shards.size());
    for (std::size_t i = first + sharing / 2; i < first + sharing; ++i) directory[i] = upperIndex;

    std::vector<std::pair<std::uint64_t, Node>> lower;
    std::vector<std::pair<std::uint64_t, Node>> upper;
    const Shard& whole = shards[lowerIndex];
    for (std::uint32_t slot = 0; slot < whole.capacity; ++slot) {
        if (whole.tags()[slot] <= erased) continue;
        const std::uint64_t nodeHash = hashOf(whole.nodes[slot]);
        const bool isUpper = (nodeHash >> (63 - wholeDepth) & 1) != 0;
        (isUpper ? upper : lower).emplace_back(nodeHash, whole.nodes[slot]);
    }
    shards[lowerIndex] = Shard(withRoomToGrow(lower.size()), wholeDepth + 1);
    shards.emplace_back(withRoomToGrow(upper.size()), wholeDepth + 1);
    for (const auto& [nodeHash, node] : lower) shards[lowerIndex].place(nodeHash, node);
    for (const auto& [nodeHash, node] : upper) shards[upperIndex].place(nodeHash, node);
}

void NodeTable::doubleDirectory() {
    std::vector<std::uint32_t> doubled;
    doubled.reserve(directory.size() * 2);
    for (const std::uint32_t index : directory) doubled.insert(doubled.end(), 2, index);
    directory = std::move(doubled);
    ++depth;
}
