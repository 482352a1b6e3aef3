#include "shared/Whitespace.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<std::string_view, 19> whitespaceBeyondASCII{
    "\u0085", "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",
    "\u2007", "\u2008", "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000",
};

bool isASCIIWhitespace(char byte) {
    return byte == ' ' || ('\t' <= byte && byte <= '\r');
}
bool isASCII(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

std::size_t whitespaceLengthAtFront(std::string_view text) {
    if (isASCII(text.front())) return isASCIIWhitespace(text.front()) ? 1 : 0;
    const auto found = std::ranges::find_if(whitespaceBeyondASCII, [&](auto space) { return text.starts_with(space); });
    return found == whitespaceBeyondASCII.end() ? 0 : found->size();
}

std::size_t whitespaceLengthAtBack(std::string_view text) {
    if (isASCII(text.back())) return isASCIIWhitespace(text.back()) ? 1 : 0;
    const auto found = std::ranges::find_if(whitespaceBeyondASCII, [&](auto space) { return text.ends_with(space); });
    return found == whitespaceBeyondASCII.end() ? 0 : found->size();
}

} // namespace

std::string_view trimmed(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = whitespaceLengthAtFront(text);
        if (length == 0) break;
        text.remove_prefix(length);
    }
    while (!text.empty()) {
        const std::size_t length = whitespaceLengthAtBack(text);
        if (length == 0) break;
        text.remove_suffix(length);
    }
    return text;
}
