#include "platform/linux/text/UnmarkedUnicode.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>

#include "platform/linux/text/Converter.h"
#include "platform/linux/text/LegacyText.h"
#include "platform/linux/text/StringEncodings.h"

namespace {

struct Reading {
    std::uint64_t encodingRawValue{};
    std::u16string text{};
    std::size_t familiar{};
};

// Printable ASCII, blanks and line ends, and the East Asian rows that serve the same purposes. Read in the wrong byte
// order they land in rows that hardly any text visits.
bool isFamiliar(char16_t unit) {
    return unit < 0x7F || (unit >= 0x3000 && unit < 0x3100);
}

// A letter in the same row of the code as the one before: what every alphabet does and ideographs do by chance only.
bool continuesAlphabet(char16_t unit, char16_t previous) {
    return unit < 0x2000 && (unit ^ previous) < 0x100 && u_isalpha(unit);
}

std::size_t familiarCharacters(std::u16string_view text) {
    std::size_t count = 0;
    char16_t previous = 0;
    for (const char16_t unit : text) {
        if (isFamiliar(unit) || continuesAlphabet(unit, previous)) ++count;
        previous = unit;
    }
    return count;
}

bool holdsOnlyText(std::u16string_view text) {
    std::size_t strange = 0;
    for (std::size_t index = 0; index < text.size();) {
        UChar32 character = 0;
        U16_NEXT(text.data(), index, text.size(), character);
        if (character < 0x10000 && isForeignToText(static_cast<char16_t>(character))) return false;
        const auto type = u_charType(character);
        if (type == U_UNASSIGNED || type == U_PRIVATE_USE_CHAR) ++strange;
    }
    return strange * 50 <= text.size();
}

std::optional<Reading> readingIn(std::uint64_t encodingRawValue, std::string_view data, AlsoUTF8 alsoUTF8) {
    const auto converter = Converter::named(converterName(encodingRawValue).value());
    auto text = converter ? converter->decode(data, EndOfBytes::complete) : std::nullopt;
    if (!text || !holdsOnlyText(*text)) return std::nullopt;
    const std::size_t familiar = familiarCharacters(*text);
    const std::size_t needed = alsoUTF8 == AlsoUTF8::yes ? text->size() / 2 : text->size() / 100;
    if (familiar <= needed) return std::nullopt;
    return Reading{encodingRawValue, std::move(*text), familiar};
}

// The reading that stands alone, or is far more familiar than the other.
std::optional<Reading> clearWinner(std::optional<Reading> one, std::optional<Reading> other) {
    if (!one || !other) return one ? std::move(one) : std::move(other);
    if (one->familiar > 4 * other->familiar) return one;
    if (other->familiar > 4 * one->familiar) return other;
    return std::nullopt;
}

struct Form {
    std::size_t width;
    std::uint64_t littleEndian, bigEndian;
};

constexpr std::array forms{Form{2, StringEncoding::utf16LittleEndian, StringEncoding::utf16BigEndian},
                           Form{4, StringEncoding::utf32LittleEndian, StringEncoding::utf32BigEndian}};

} // namespace

std::optional<DetectedText> unmarkedUnicodeText(std::string_view data, AlsoUTF8 alsoUTF8) {
    if (data.size() < 8) return std::nullopt;
    for (const Form& form : forms) {
        if (data.size() % form.width != 0) continue;
        const auto reading =
            clearWinner(readingIn(form.littleEndian, data, alsoUTF8), readingIn(form.bigEndian, data, alsoUTF8));
        auto text = reading ? utf8FromUTF16(reading->text) : std::nullopt;
        if (text) return DetectedText{std::move(*text), reading->encodingRawValue, ByteOrderMark::none};
    }
    return std::nullopt;
}
