#pragma once

#include <cstddef>
#include <string_view>

// Whether all of the text is well-formed UTF-8.
bool isWellFormedUTF8(std::string_view text);

// The length in bytes of the well-formed UTF-8 sequence that the text begins with; 0 when it begins with none.
std::size_t wellFormedSequenceLength(std::string_view text);

// How many bytes of the text come before the first one that belongs to no well-formed sequence.
std::size_t wellFormedPrefixLength(std::string_view text);
