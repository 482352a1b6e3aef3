#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

// A hash table of 32-bit numbers that stand for records kept elsewhere; five bytes and a little air for each. Only the
// owner knows the records: it passes the hash of what it looks for, and functions that compare and hash a record.
// Equal records may be in it side by side.
//
// The table is made of shards, chosen by the upper bits of the hash, which grow one at a time and divide when they have
// become large: no insertion ever rearranges more than a few thousand records, however many there are.
class NodeTable {
public:
    using Node = std::uint32_t;
    using HashOf = std::function<std::uint64_t(Node)>;

    // The first record with this hash for which matches(node) is true.
    template <class Matches>
    std::optional<Node> find(std::uint64_t hash, const Matches& matches) const {
        const Shard& shard = shards[shardIndex(hash)];
        if (shard.capacity == 0) return std::nullopt;
        const std::uint8_t* tags = shard.tags();
        for (std::uint32_t slot = shard.firstSlot(hash); tags[slot] != empty; slot = shard.slotAfter(slot)) {
            if (tags[slot] == tagOf(hash) && matches(shard.nodes[slot])) return shard.nodes[slot];
        }
        return std::nullopt;
    }

    // hashOf is asked for records that are in the table, when these have to move.
    template <class Hash>
    void insert(std::uint64_t hash, Node node, const Hash& hashOf) {
        while (shards[shardIndex(hash)].isFull()) makeRoom(hash, HashOf(std::cref(hashOf)));
        shards[shardIndex(hash)].place(hash, node);
        ++total;
    }

    // The node must be in the table under this hash.
    void erase(std::uint64_t hash, Node node);

    std::size_t size() const { return total; }

    // Makes an empty table as large as so many nodes need.
    void reserve(std::size_t count);

private:
    static constexpr std::uint8_t empty = 0;
    static constexpr std::uint8_t erased = 1;

    // Open addressing. Eight bits of the hash beside each node spare nearly all needless looks at a record.
    struct Shard {
        Shard() = default;
        Shard(std::size_t expectedNodes, unsigned sharedBits);

        std::uint8_t* tags() const { return reinterpret_cast<std::uint8_t*>(nodes.get() + capacity); }
        std::uint32_t firstSlot(std::uint64_t hash) const {
            return static_cast<std::uint32_t>((hash >> 8 & 0xFFFFFFFF) * capacity >> 32);
        }
        std::uint32_t slotAfter(std::uint32_t slot) const { return slot + 1 == capacity ? 0 : slot + 1; }
        std::uint32_t slotBefore(std::uint32_t slot) const { return slot == 0 ? capacity - 1 : slot - 1; }
        bool isFull() const { return (used + 1) * std::uint64_t{100} > capacity * std::uint64_t{90}; }
        void place(std::uint64_t hash, Node node);
        void erase(std::uint64_t hash, Node node);

        std::unique_ptr<std::uint32_t[]> nodes{}; // the nodes, and behind them the tags
        std::uint32_t capacity = 0;
        std::uint32_t live = 0;
        std::uint32_t used = 0; // live or erased
        unsigned depth = 0;     // so many upper bits of the hash are the same for all nodes
    };

    static std::uint8_t tagOf(std::uint64_t hash) { return static_cast<std::uint8_t>(2 + (hash & 0xFF) % 254); }

    std::uint32_t shardIndex(std::uint64_t hash) const { return directory[depth == 0 ? 0 : hash >> (64 - depth)]; }
    bool mayDivide(const Shard& shard) const;
    void makeRoom(std::uint64_t hash, const HashOf& hashOf);
    void grow(Shard& shard, const HashOf& hashOf);
    void divide(std::uint64_t hash, const HashOf& hashOf);
    void doubleDirectory();

    std::vector<Shard> shards = std::vector<Shard>(1);
    std::vector<std::uint32_t> directory{0}; // the upper `depth` bits of a hash -> its shard
    unsigned depth = 0;
    std::size_t total = 0;
};
