#include "platform/Collation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

// The first bytes of two keys decide nearly always, and need no look at the keys.
struct KeyedPosition {
    std::array<std::uint64_t, 2> firstBytes{};
    std::size_t position{};
};

std::uint64_t numberOf(std::string_view bytes) {
    std::array<char, sizeof(std::uint64_t)> padded{};
    std::memcpy(padded.data(), bytes.data(), std::min(bytes.size(), padded.size()));
    std::uint64_t number = 0;
    for (const char byte : padded) number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

std::array<std::uint64_t, 2> firstBytesOf(std::string_view key) {
    constexpr std::size_t half = sizeof(std::uint64_t);
    return {numberOf(key), numberOf(key.substr(std::min(key.size(), half)))};
}

} // namespace

std::vector<std::size_t> sortedOrder(const Collation& collation, std::span<const std::string_view> names) {
    std::string keys;
    std::vector<std::size_t> keyEnds{0}; // before the first key, and behind each
    std::vector<KeyedPosition> keyedPositions;
    keyEnds.reserve(names.size() + 1);
    keyedPositions.reserve(names.size());
    const auto keyOf = [&](std::size_t position) {
        return std::string_view(keys).substr(keyEnds[position], keyEnds[position + 1] - keyEnds[position]);
    };
    for (std::size_t position = 0; position < names.size(); ++position) {
        collation.appendSortKey(keys, names[position]);
        keyEnds.push_back(keys.size());
        keyedPositions.push_back({firstBytesOf(keyOf(position)), position});
    }
    std::ranges::sort(keyedPositions, [&](const KeyedPosition& left, const KeyedPosition& right) {
        if (left.firstBytes != right.firstBytes) return left.firstBytes < right.firstBytes;
        const auto comparison = keyOf(left.position) <=> keyOf(right.position);
        return comparison != 0 ? comparison < 0 : left.position < right.position;
    });

    std::vector<std::size_t> order;
    order.reserve(names.size());
    for (const KeyedPosition& keyed : keyedPositions) order.push_back(keyed.position);
    return order;
}
