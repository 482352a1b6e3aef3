#include "platform/Collation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

struct Keys {
    std::string bytes{};
    std::vector<std::size_t> ends{0}; // before the first key, and behind each

    std::size_t count() const { return ends.size() - 1; }
    std::string_view operator[](std::size_t position) const {
        return std::string_view(bytes).substr(ends[position], ends[position + 1] - ends[position]);
    }
};

// The first bytes in which the keys are not all alike decide nearly always between two, and need no look at the keys.
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

Keys keysOf(std::span<const std::string_view> names, const Collation& collation) {
    Keys keys;
    keys.ends.reserve(names.size() + 1);
    for (const std::string_view name : names) {
        collation.appendSortKey(keys.bytes, name);
        keys.ends.push_back(keys.bytes.size());
    }
    return keys;
}

// How many bytes all keys have in common at their beginning, as those of paths in one directory do.
std::size_t commonLength(const Keys& keys) {
    if (keys.count() == 0) return 0;
    std::string_view common = keys[0];
    for (std::size_t position = 1; position < keys.count() && !common.empty(); ++position) {
        const auto end = std::ranges::mismatch(common, keys[position]).in1;
        common = common.substr(0, static_cast<std::size_t>(end - common.begin()));
    }
    return common.size();
}

} // namespace

std::vector<std::size_t> sortedOrder(const Collation& collation, std::span<const std::string_view> names) {
    const Keys keys = keysOf(names, collation);
    const std::size_t common = commonLength(keys);
    std::vector<KeyedPosition> keyedPositions;
    keyedPositions.reserve(names.size());
    for (std::size_t position = 0; position < names.size(); ++position) {
        keyedPositions.push_back({firstBytesOf(keys[position].substr(common)), position});
    }
    std::ranges::sort(keyedPositions, [&](const KeyedPosition& left, const KeyedPosition& right) {
        if (left.firstBytes != right.firstBytes) return left.firstBytes < right.firstBytes;
        const auto comparison = keys[left.position] <=> keys[right.position];
        return comparison != 0 ? comparison < 0 : left.position < right.position;
    });

    std::vector<std::size_t> order;
    order.reserve(names.size());
    for (const KeyedPosition& keyed : keyedPositions) order.push_back(keyed.position);
    return order;
}
