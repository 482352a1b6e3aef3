#include "tools/PrintableText.h"

#include <langinfo.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cstdio>

#include "shared/UTF8.h"

namespace {

std::string byteEscape(unsigned value) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\x%02X", value & 0xFF);
    return text.data();
}

std::string characterEscape(UChar32 character) {
    if (character < 0x80) return byteEscape(static_cast<unsigned>(character));
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "\\u{%X}", static_cast<unsigned>(character));
    return text.data();
}

UChar32 characterIn(std::string_view sequence) {
    UChar32 character = 0;
    U8_GET(reinterpret_cast<const std::uint8_t*>(sequence.data()), 0, 0, static_cast<std::int32_t>(sequence.size()),
           character);
    return character;
}

bool isVisible(UChar32 character) {
    constexpr std::uint32_t invisible =
        U_GC_CC_MASK | U_GC_CF_MASK | U_GC_CN_MASK | U_GC_CO_MASK | U_GC_CS_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK;
    return (U_GET_GC_MASK(character) & invisible) == 0;
}

std::size_t columnsOf(UChar32 character) {
    if ((U_GET_GC_MASK(character) & (U_GC_MN_MASK | U_GC_ME_MASK)) != 0) return 0;
    const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::string_view takeCharacter(std::string_view& text) {
    const std::string_view taken = text.substr(0, std::max<std::size_t>(wellFormedSequenceLength(text), 1));
    text.remove_prefix(taken.size());
    return taken;
}

} // namespace

TerminalCharacters charactersOfTerminal() {
    std::setlocale(LC_CTYPE, "");
    return std::string_view(::nl_langinfo(CODESET)) == "UTF-8" ? TerminalCharacters::all : TerminalCharacters::ascii;
}

std::string printable(std::string_view text, TerminalCharacters characters) {
    std::string result;
    while (!text.empty()) {
        const bool isText = wellFormedSequenceLength(text) > 0;
        const std::string_view piece = takeCharacter(text);
        if (!isText) {
            result += byteEscape(static_cast<unsigned char>(piece.front()));
            continue;
        }
        const UChar32 character = characterIn(piece);
        const bool isShown = isVisible(character) && (character < 0x80 || characters == TerminalCharacters::all);
        result += isShown ? std::string(piece) : characterEscape(character);
    }
    return result;
}

std::size_t columnCount(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) columns += columnsOf(characterIn(takeCharacter(text)));
    return columns;
}

std::size_t fittingLength(std::string_view text, std::size_t columns) {
    std::size_t length = 0, used = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view piece = takeCharacter(rest);
        used += columnsOf(characterIn(piece));
        if (used > columns && length > 0) break;
        length += piece.size();
    }
    return length;
}
