#pragma once

#include <cstdint>
#include <optional>

// The numeric values by which encodings are known, and the converter that speaks each. Values without a converter
// (NEXTSTEP, Symbol, escaped ASCII) are unknown.

struct StringEncoding {
    static constexpr std::uint64_t utf8 = 4;
    static constexpr std::uint64_t utf16 = 10;
    static constexpr std::uint64_t iso2022JP = 21;
    static constexpr std::uint64_t utf16BigEndian = 0x90000100;
    static constexpr std::uint64_t utf16LittleEndian = 0x94000100;
    static constexpr std::uint64_t utf32 = 0x8C000100;
    static constexpr std::uint64_t utf32BigEndian = 0x98000100;
    static constexpr std::uint64_t utf32LittleEndian = 0x9C000100;
};

// Absent for unknown values, and for the two whose byte order only a mark can tell.
std::optional<const char*> converterName(std::uint64_t encodingRawValue);
