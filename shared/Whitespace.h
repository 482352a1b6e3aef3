#pragma once

#include <string_view>

// The text without the white space and line breaks at both ends: Unicode's space separators, TAB, LF, VT, FF, CR,
// U+0085, U+2028 and U+2029. Bytes that are not UTF-8 are no white space.
std::string_view trimmed(std::string_view text);
