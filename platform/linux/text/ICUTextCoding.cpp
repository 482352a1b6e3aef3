#include "platform/linux/text/ICUTextCoding.h"

#include <simdjson.h>

#include <algorithm>

#include "platform/linux/text/ByteOrderMarks.h"
#include "platform/linux/text/Converter.h"
#include "platform/linux/text/LegacyEncodingDetector.h"
#include "platform/linux/text/LegacyText.h"
#include "platform/linux/text/StringEncodings.h"
#include "platform/linux/text/UnmarkedUnicode.h"

namespace {

bool isWellFormedUTF8(std::string_view data) {
    return simdjson::validate_utf8(data.data(), data.size());
}

std::optional<std::string> decodedStrictly(std::string_view bytes, std::uint64_t encodingRawValue) {
    if (encodingRawValue == StringEncoding::utf8) {
        return isWellFormedUTF8(bytes) ? std::optional(std::string(bytes)) : std::nullopt;
    }
    const auto converter = Converter::named(converterName(encodingRawValue).value());
    const auto text = converter ? converter->decode(bytes, EndOfBytes::complete) : std::nullopt;
    return text ? utf8FromUTF16(*text) : std::nullopt;
}

std::optional<std::string> encodedStrictly(std::string_view text, std::uint64_t encodingRawValue) {
    if (encodingRawValue == StringEncoding::utf8) {
        return isWellFormedUTF8(text) ? std::optional(std::string(text)) : std::nullopt;
    }
    const auto name = converterName(encodingRawValue);
    const auto converter = name ? Converter::named(*name) : std::nullopt;
    const auto wide = converter ? utf16FromUTF8(text) : std::nullopt;
    return wide ? converter->encode(*wide) : std::nullopt;
}

std::optional<DetectedText> detectedBehindMark(std::string_view data, const MarkedEncoding& mark) {
    auto text = decodedStrictly(data.substr(mark.bytes.size()), mark.bareEncoding);
    if (!text) return std::nullopt;
    return DetectedText{std::move(*text), mark.encodingRawValue, mark.byteOrderMark};
}

// What is to be known of all data, found out in one passage: a piece is looked at for each while it is in the cache.
struct Survey {
    bool isUTF8 = true;
    bool hasZero = false;
    bool hasEscape = false;
};

// The beginning of the data, which does not end within a character of UTF-8.
std::string_view nextPiece(std::string_view data) {
    constexpr std::size_t pieceSize = 32 * 1024, longestCharacter = 4;
    if (data.size() <= pieceSize) return data;
    std::size_t end = pieceSize;
    while (end > pieceSize - longestCharacter && (static_cast<unsigned char>(data[end]) & 0xC0) == 0x80) --end;
    return data.substr(0, end);
}

Survey survey(std::string_view data) {
    Survey found;
    while (!data.empty()) {
        const std::string_view piece = nextPiece(data);
        found.isUTF8 = found.isUTF8 && isWellFormedUTF8(piece);
        found.hasZero = found.hasZero || piece.find('\0') != std::string_view::npos;
        found.hasEscape = found.hasEscape || piece.find('\x1B') != std::string_view::npos;
        data.remove_prefix(piece.size());
    }
    return found;
}

// Seven-bit mail and news of Japan is well-formed ASCII as well; only the escape sequences give it away.
bool mayBeISO2022JP(std::string_view data) {
    if (data.find("\x1B$B") == std::string_view::npos && data.find("\x1B$@") == std::string_view::npos) return false;
    return std::ranges::all_of(data, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

} // namespace

ICUTextCoding::ICUTextCoding() = default;
ICUTextCoding::~ICUTextCoding() = default;

std::optional<DetectedText> ICUTextCoding::detect(std::string data) const {
    const MarkedEncoding mark = leadingMark(data);
    if (mark.byteOrderMark == ByteOrderMark::utf8) {
        if (auto text = detectedBehindMark(data, mark)) return text;
    } else if (mark.byteOrderMark != ByteOrderMark::none) {
        return detectedBehindMark(data, mark);
    }

    const auto [isUTF8, hasZero, hasEscape] = survey(data);
    if (hasZero) {
        if (auto text = unmarkedUnicodeText(data, isUTF8 ? AlsoUTF8::yes : AlsoUTF8::no)) return text;
    }
    if (isUTF8) {
        auto japanese = hasEscape && mayBeISO2022JP(data) ? legacyText(data, StringEncoding::iso2022JP) : std::nullopt;
        return japanese ? japanese : DetectedText{std::move(data), StringEncoding::utf8, ByteOrderMark::none};
    }
    return legacyEncodings().detect(data);
}

std::optional<std::string> ICUTextCoding::encode(std::string_view text, std::uint64_t encodingRawValue,
                                                 ByteOrderMark byteOrderMark) const {
    const MarkedEncoding target = markForEncoding(encodingRawValue, byteOrderMark);
    auto bytes = encodedStrictly(text, target.bareEncoding);
    if (bytes) bytes->insert(0, target.bytes);
    return bytes;
}

const LegacyEncodingDetector& ICUTextCoding::legacyEncodings() const {
    std::call_once(legacyEncodingsOpened,
                   [this] { openedLegacyEncodings = std::make_unique<const LegacyEncodingDetector>(); });
    return *openedLegacyEncodings;
}
