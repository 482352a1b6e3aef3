#pragma once

#include <span>
#include <string_view>

// How common characters beyond ASCII are in the languages of the world's text files, and how common it is that two
// characters stand next to each other: the evidence by which legacy encodings are told apart. Letters are small;
// whatever is ASCII and no letter counts as a space. East Asian languages have characters but no pairs.

struct Frequency {
    int bits{};                    // minus the logarithm, to the base 2, of the share in a text
    std::u16string_view entries{}; // characters, or pairs of characters, one after the other
};

struct LanguageFrequencies {
    std::string_view name{};
    std::span<const Frequency> letters{};
    std::span<const Frequency> pairs{};
    std::span<const Frequency> plainPairs{}; // in ASCII; of languages in Latin script only
};

std::span<const LanguageFrequencies> languageFrequencies();
