#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The words of a command line, as in a shell: separated by blanks, held together by quotes, with backslashes that take
// a character as it is. \x1B is a byte and \u{202E} a character, as printable() shows them, so that every file can be
// named. Absent when a quote or an escape is not complete.
std::optional<std::vector<std::string>> wordsOf(std::string_view line);

// The one word again.
std::string quotedWord(std::string_view word);

// Whether the character at the position belongs to a word though it is a blank: a backslash takes it as it is.
bool isEscapedAt(std::string_view line, std::size_t position);
