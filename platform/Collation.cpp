#include "platform/Collation.h"

#include <algorithm>
#include <cstdint>

namespace {

// The first bytes of two keys decide nearly always, and need no look at the keys.
struct KeyedPosition {
    std::uint64_t firstBytes{};
    std::size_t keyOffset{};
    std::size_t keySize{};
    std::size_t position{};
};

std::uint64_t firstBytesOf(std::string_view key) {
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        bytes = bytes << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
    }
    return bytes;
}

} // namespace

std::vector<std::size_t> sortedOrder(const Collation& collation, std::span<const std::string_view> names) {
    std::string keys;
    std::vector<KeyedPosition> keyedPositions;
    keyedPositions.reserve(names.size());
    for (const std::string_view name : names) {
        const std::size_t offset = keys.size();
        collation.appendSortKey(keys, name);
        const std::string_view key = std::string_view(keys).substr(offset);
        keyedPositions.push_back({firstBytesOf(key), offset, key.size(), keyedPositions.size()});
    }
    const auto keyOf = [&](const KeyedPosition& keyed) {
        return std::string_view(keys).substr(keyed.keyOffset, keyed.keySize);
    };
    std::ranges::sort(keyedPositions, [&](const KeyedPosition& left, const KeyedPosition& right) {
        if (left.firstBytes != right.firstBytes) return left.firstBytes < right.firstBytes;
        const auto comparison = keyOf(left) <=> keyOf(right);
        return comparison != 0 ? comparison < 0 : left.position < right.position;
    });

    std::vector<std::size_t> order;
    order.reserve(names.size());
    for (const KeyedPosition& keyed : keyedPositions) order.push_back(keyed.position);
    return order;
}
