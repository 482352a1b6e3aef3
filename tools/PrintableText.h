#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Text from elsewhere, made fit for a terminal: nothing in it can move the cursor, change colours or the direction of
// writing, or end a line. What is no visible character stands as \x1B or \u{202E}, and so does a byte that is not
// UTF-8.

enum class TerminalCharacters { ascii, all };

// What the terminal understands by LC_ALL, LC_CTYPE or LANG. Sets the locale of the process for characters.
TerminalCharacters charactersOfTerminal();

std::string printable(std::string_view text, TerminalCharacters characters = TerminalCharacters::all);

// The columns that printable text takes up.
std::size_t columnCount(std::string_view text);

// How many bytes at the beginning of printable text fit into the columns; whole characters, one at least.
std::size_t fittingLength(std::string_view text, std::size_t columns);
