#include "shared/UTF8.h"

#include <simdjson.h>

namespace {

struct ByteRange {
    unsigned char first, last;
    bool contains(char byte) const {
        const auto value = static_cast<unsigned char>(byte);
        return first <= value && value <= last;
    }
};

constexpr ByteRange continuation{0x80, 0xBF};

std::size_t lengthAnnouncedBy(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead <= 0xF4 ? 4 : 0;
}

// Narrower than other continuation bytes where it would make an overlong form, a surrogate or too large a character.
ByteRange secondByteRange(unsigned char lead) {
    switch (lead) {
        case 0xE0:
            return {0xA0, 0xBF};
        case 0xED:
            return {0x80, 0x9F};
        case 0xF0:
            return {0x90, 0xBF};
        case 0xF4:
            return {0x80, 0x8F};
        default:
            return continuation;
    }
}

} // namespace

bool isWellFormedUTF8(std::string_view text) {
    return simdjson::validate_utf8(text.data(), text.size());
}

std::size_t wellFormedSequenceLength(std::string_view text) {
    if (text.empty()) return 0;
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lengthAnnouncedBy(lead);
    if (length > text.size()) return 0;
    if (length > 1 && !secondByteRange(lead).contains(text[1])) return 0;
    for (std::size_t index = 2; index < length; ++index) {
        if (!continuation.contains(text[index])) return 0;
    }
    return length;
}

std::size_t wellFormedPrefixLength(std::string_view text) {
    if (isWellFormedUTF8(text)) return text.size();
    std::size_t prefixLength = 0;
    while (const std::size_t length = wellFormedSequenceLength(text.substr(prefixLength))) prefixLength += length;
    return prefixLength;
}
