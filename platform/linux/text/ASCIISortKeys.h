#pragma once

#include <unicode/ucol.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The sort keys of names in plain ASCII, byte for byte as ICU makes them, at a tenth of the cost. They are put together
// from what ICU says of single characters, by the rules by which it puts them together itself.
class ASCIISortKeys {
public:
    // Expects a collator that compares numbers by value, and letters without regard to case. Absent when it has rules
    // of a language, for there are languages in which two letters count as one, or when ICU's own rules are others than
    // those that are known here.
    static std::optional<ASCIISortKeys> of(const UCollator* collator);

    // Appends what ucol_getSortKey gives. False, with nothing appended, for a name that is left to ICU: an empty or
    // long one, or one with anything but printable ASCII in it, or with a number of more than six digits.
    bool append(std::string& keys, std::string_view name) const;

private:
    // What stands in a key for one character, or for one number.
    struct Weight {
        std::array<char, 4> bytes{};
        std::uint32_t length{};
    };

    ASCIISortKeys() = default;

    static Weight weightOfNumber(char firstByte, std::uint32_t number);
    bool learn(const UCollator* collator);
    bool agrees(const UCollator* collator) const;

    std::array<Weight, 128> weights{}; // of a digit only the first byte, which all numbers share
};
