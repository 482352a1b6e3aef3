#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/FileIdentifier.h"

// What an item is recognised by, and what its stable node ID is made of.
class StableNodeKey {
public:
    explicit StableNodeKey(const FileIdentifier& identifier);
    // For an item that has nothing better than its numbers.
    StableNodeKey(std::uint64_t fileSystemNumber, std::uint64_t fileNumber);

    // Another key of the same form, for an item that must have an ID of its own.
    StableNodeKey numbered(std::uint32_t number) const;

    std::string nodeID() const { return nodeIDOf(form); }
    std::string_view stored() const { return form; }

    // From what stored() gave.
    static std::string nodeIDOf(std::string_view stored);

private:
    explicit StableNodeKey(std::string storedForm) : form(std::move(storedForm)) {}

    std::string form; // the ID; of one with "data:" the bytes are not yet in base64
};
