#pragma once

#include <string>
#include <string_view>

// What uchardet takes the sample for, by the name of the character set; empty when it has no idea.
std::string charsetGuess(std::string_view sample);

bool namesSameCharset(const std::string& guess, const char* converterName);
