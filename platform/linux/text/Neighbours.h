#pragma once

#include <cstdint>
#include <span>

// A character reduced to what the statistics know of it.
struct Sign {
    enum class Kind : std::uint8_t { other, digit, smallLetter, capitalLetter, plainLetter };

    char16_t folded{}; // small; a space for ASCII that is no letter
    Kind kind{};
    std::uint8_t script{};
    float strangeness{}; // bits in a language that does not use it

    bool operator==(const Sign&) const = default;
};

Sign signOf(char16_t unit);

struct Neighbours {
    Sign first{}, second{};
    float count{};
};

// What no language likes: a capital after a small letter, letters of two scripts in a word, letters beside digits.
float oddityBits(std::span<const Neighbours> text);
