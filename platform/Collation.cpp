#include "platform/Collation.h"

#include <algorithm>
#include <utility>

std::vector<std::size_t> sortedOrder(const Collation& collation, std::span<const std::string_view> names) {
    std::vector<std::pair<std::string, std::size_t>> keyedPositions;
    keyedPositions.reserve(names.size());
    for (const std::string_view name : names)
        keyedPositions.emplace_back(collation.sortKey(name), keyedPositions.size());
    std::ranges::sort(keyedPositions);

    std::vector<std::size_t> order;
    order.reserve(names.size());
    for (const auto& [key, position] : keyedPositions) order.push_back(position);
    return order;
}
