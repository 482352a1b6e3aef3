#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// The inside of JSON strings, in both directions.

// Appends the text as it stands between the quotes of a JSON string. The text must be well-formed UTF-8. Beyond what
// JSON asks for, U+007F, U+0085, U+2028 and U+2029 are escaped, because there are readers that split lines there.
void appendEscaped(std::string& output, std::string_view text);

// The same, as far as there is room; what is left is for the next piece.
struct EscapedPiece {
    std::size_t consumed{}; // bytes of the text
    std::size_t written{};
};
inline constexpr std::size_t smallestEscapeRoom = 512;
EscapedPiece escapePiece(std::string_view text, std::span<char> room);

// Copies the text, which nearly always is ASCII that stands between the quotes as it is. False when it is anything
// else; what was copied is then to be dropped.
bool copyPlainASCII(char* to, std::string_view text);

// Appends what the JSON string says whose opening quote stands just before the given text, and returns how many bytes
// it takes up, closing quote included. Absent when it does not end or holds a control character or a bad escape.
std::optional<std::size_t> appendUnescaped(std::string& output, std::string_view text);

// How many bytes come before the first quote, backslash or control character.
std::size_t plainLength(std::string_view text);

// The escape sequence that the text begins with, from the backslash on; two of them when they form a surrogate pair.
struct JSONEscape {
    std::size_t length{};
    char32_t character{};
};
std::optional<JSONEscape> readEscape(std::string_view text);
