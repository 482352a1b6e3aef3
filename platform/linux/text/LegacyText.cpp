#include "platform/linux/text/LegacyText.h"

#include <algorithm>

#include "platform/linux/text/Converter.h"
#include "platform/linux/text/StringEncodings.h"

bool isForeignToText(char16_t unit) {
    if (unit >= 0x20) return (unit >= 0x7F && unit < 0xA0) || unit >= 0xFFFE;
    return !(unit >= '\b' && unit <= '\r') && unit != 0x1B;
}

std::optional<DetectedText> legacyText(std::string_view data, std::uint64_t encodingRawValue) {
    const auto name = converterName(encodingRawValue);
    const auto converter = name ? Converter::named(*name) : std::nullopt;
    const auto text = converter ? converter->decode(data, EndOfBytes::complete) : std::nullopt;
    if (!text || std::ranges::any_of(*text, isForeignToText)) return std::nullopt;
    if (converter->encode(*text) != data) return std::nullopt;
    auto utf8 = utf8FromUTF16(*text);
    if (!utf8) return std::nullopt;
    return DetectedText{std::move(*utf8), encodingRawValue, ByteOrderMark::none};
}
