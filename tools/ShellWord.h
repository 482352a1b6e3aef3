#pragma once

#include <string>
#include <string_view>

// A word that the shell takes as it is, in quotes where it needs them.
inline std::string shellWord(std::string_view word) {
    constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-+,:@%";
    if (!word.empty() && word.find_first_not_of(plain) == word.npos) return std::string(word);
    std::string result = "'";
    for (const char character : word) result += character == '\'' ? "'\\''" : std::string(1, character);
    return result + "'";
}
