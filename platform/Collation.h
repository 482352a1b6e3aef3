#pragma once

#include <compare>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The order in which a desktop file browser shows names: that of the user's language, numbers by value, case only where
// nothing else differs. Names are byte strings, well-formed or not. The order is total: only a name and itself are
// equal. An object serves one queue; it is not to be shared between threads.
class Collation {
public:
    virtual ~Collation() = default;

    // Names are ordered as the bytes of their keys are. Appended, because whoever sorts many names keeps all keys in
    // one place.
    virtual void appendSortKey(std::string& keys, std::string_view name) const = 0;

    std::string sortKey(std::string_view name) const {
        std::string key;
        appendSortKey(key, name);
        return key;
    }

    // For a few names; whoever sorts many makes each key once.
    std::strong_ordering compare(std::string_view left, std::string_view right) const {
        return sortKey(left) <=> sortKey(right);
    }
};

// The positions of the names in their order; equal names keep theirs. About a hundred bytes per name while it runs.
std::vector<std::size_t> sortedOrder(const Collation& collation, std::span<const std::string_view> names);
