#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

// A strict check of JSON's grammar that builds nothing and needs no stack of its own depth.

inline constexpr std::size_t maximumJSONDepth = 512; // objects and arrays open at the same time

inline constexpr std::string_view utf8ByteOrderMark = "\xEF\xBB\xBF";

struct JSONFault {
    std::size_t offset{};           // in bytes
    std::string_view description{}; // what is wrong there

    bool operator==(const JSONFault&) const = default;
};

// The first fault of a whole message: one value, with white space around it and a byte order mark before it permitted.
std::optional<JSONFault> findJSONFault(std::string_view message);

// Where the value ends that begins at the offset, inside as many containers as the depth says; absent when it is not
// valid or the next that follows it cannot follow a value in a container. Whether strings are UTF-8 is not looked at.
std::optional<std::size_t> endOfJSONValue(std::string_view text, std::size_t offset, std::size_t depth);
