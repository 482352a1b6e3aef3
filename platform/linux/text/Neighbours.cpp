#include "platform/linux/text/Neighbours.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <string_view>

namespace {

constexpr float asciiLetterBits = 5, asciiOtherBits = 2;
constexpr float strangeTypography = 9, strangeLetter = 14, strangeSymbol = 14, strangeMark = 17, notForText = 24;
constexpr float mixedScripts = 8, capitalWithin = 7, capitalAfterCapital = 1.5F, letterBesideDigit = 2;

Sign::Kind kindOf(char16_t unit) {
    if (unit >= '0' && unit <= '9') return Sign::Kind::digit;
    switch (u_charType(unit)) {
        case U_UPPERCASE_LETTER:
        case U_TITLECASE_LETTER:
            return Sign::Kind::capitalLetter;
        case U_LOWERCASE_LETTER:
            return Sign::Kind::smallLetter;
        case U_OTHER_LETTER:
        case U_MODIFIER_LETTER:
            return Sign::Kind::plainLetter;
        default:
            return Sign::Kind::other;
    }
}

bool isLetter(const Sign& sign) {
    return sign.kind >= Sign::Kind::smallLetter;
}

constexpr std::u16string_view typography =
    u"\u00A0\u00A7\u00A9\u00AB\u00B0\u00B7\u00BB\u2013\u2014\u2018\u2019\u201A\u201C"
    u"\u201D\u201E\u2022\u2026\u20AC\u2116\u2122\u3000\u3001\u3002";

float strangenessOf(char16_t unit) {
    if (typography.find(unit) != std::u16string_view::npos) return strangeTypography;
    switch (u_charType(unit)) {
        case U_UPPERCASE_LETTER:
        case U_TITLECASE_LETTER:
        case U_LOWERCASE_LETTER:
        case U_OTHER_LETTER:
        case U_MODIFIER_LETTER:
            return strangeLetter;
        case U_NON_SPACING_MARK:
        case U_COMBINING_SPACING_MARK:
            return strangeMark;
        case U_UNASSIGNED:
        case U_PRIVATE_USE_CHAR:
        case U_SURROGATE:
        case U_CONTROL_CHAR:
        case U_FORMAT_CHAR:
            return notForText;
        default:
            return strangeSymbol;
    }
}

std::uint8_t scriptOf(char16_t unit) {
    UErrorCode error = U_ZERO_ERROR;
    const auto script = uscript_getScript(unit, &error);
    const bool mixesWithHan = script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA || script == USCRIPT_HANGUL;
    return static_cast<std::uint8_t>(mixesWithHan ? USCRIPT_HAN : script);
}

float oddityBits(const Sign& first, const Sign& second) {
    using enum Sign::Kind;
    if (isLetter(first) && isLetter(second)) {
        float bits = 0;
        if (first.script != second.script && first.script != USCRIPT_HAN && second.script != USCRIPT_HAN)
            bits += mixedScripts;
        if (first.kind == smallLetter && second.kind == capitalLetter) bits += capitalWithin;
        if (first.kind == capitalLetter && second.kind == capitalLetter) bits += capitalAfterCapital;
        return bits;
    }
    const bool besideDigit = (first.kind == digit && isLetter(second)) || (isLetter(first) && second.kind == digit);
    return besideDigit ? letterBesideDigit : 0;
}

} // namespace

Sign signOf(char16_t unit) {
    if (unit < 0x80) {
        const Sign::Kind kind = kindOf(unit);
        const bool letter = kind >= Sign::Kind::smallLetter;
        return {.folded = letter ? static_cast<char16_t>(unit | 0x20) : u' ',
                .kind = kind,
                .script = scriptOf(unit),
                .strangeness = letter ? asciiLetterBits : asciiOtherBits};
    }
    // A few letters beyond ASCII have a small form within; they stay what they are.
    const auto small = static_cast<char16_t>(u_tolower(unit));
    return {.folded = small < 0x80 ? unit : small,
            .kind = kindOf(unit),
            .script = scriptOf(unit),
            .strangeness = strangenessOf(unit)};
}

float oddityBits(std::span<const Neighbours> text) {
    float bits = 0;
    for (const Neighbours& pair : text) bits += pair.count * oddityBits(pair.first, pair.second);
    return bits;
}
