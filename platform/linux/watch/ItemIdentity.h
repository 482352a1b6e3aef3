#pragma once

#include <cstdint>

enum class ItemType : std::uint8_t { none, file, directory, symbolicLink };

// What stands at a name; nothing, if the type is none.
struct ItemIdentity {
    std::uint64_t inode{};
    ItemType type{};

    explicit operator bool() const { return type != ItemType::none; }
    bool isDirectory() const { return type == ItemType::directory; }

    bool operator==(const ItemIdentity&) const = default;
};
