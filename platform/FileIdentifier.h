#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>

// What a platform may have to say of an item's identity, for as long as the item lives and wherever it is moved.

struct FileIdentifierBytes {
    std::string bytes{};

    bool operator==(const FileIdentifierBytes&) const = default;
};

struct FileIdentifierUUID {
    std::array<std::uint8_t, 16> bytes{};

    bool operator==(const FileIdentifierUUID&) const = default;
};

// A value of a type that is unknown here, described in words.
struct OpaqueFileIdentifier {
    std::string description{};

    bool operator==(const OpaqueFileIdentifier&) const = default;
};

using FileIdentifier =
    std::variant<std::uint64_t, FileIdentifierBytes, std::string, FileIdentifierUUID, OpaqueFileIdentifier>;
