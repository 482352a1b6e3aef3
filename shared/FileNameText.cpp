#include "shared/FileNameText.h"

#include <algorithm>

#include "shared/UTF8.h"

namespace {

constexpr std::string_view commonPrefixOfEscapes = "\xF4\x8F";

// U+10F880 to U+10F8FF is F4 8F A2 80 to F4 8F A3 BF.
bool beginsWithEscape(std::string_view text) {
    return text.size() >= 4 && text.starts_with(commonPrefixOfEscapes) && (text[2] == '\xA2' || text[2] == '\xA3') &&
           (static_cast<unsigned char>(text[3]) & 0xC0) == 0x80;
}

void appendEscape(std::string& text, char byte) {
    const auto value = static_cast<unsigned char>(byte);
    text += commonPrefixOfEscapes;
    text += value < 0xC0 ? '\xA2' : '\xA3';
    text += static_cast<char>(0x80 | (value & 0x3F));
}

char escapedByte(std::string_view escape) {
    const unsigned high = escape[2] == '\xA2' ? 0x80 : 0xC0;
    return static_cast<char>(high | (static_cast<unsigned char>(escape[3]) & 0x3F));
}

} // namespace

bool isItsOwnText(std::string_view fileName) {
    if (!isWellFormedUTF8(fileName)) return false;
    for (auto at = fileName.find(commonPrefixOfEscapes); at != std::string_view::npos;
         at = fileName.find(commonPrefixOfEscapes, at + 1)) {
        if (beginsWithEscape(fileName.substr(at))) return false;
    }
    return true;
}

std::string textFromFileName(std::string_view fileName) {
    if (isItsOwnText(fileName)) return std::string{fileName};
    std::string text;
    while (!fileName.empty()) {
        const bool isEscape = beginsWithEscape(fileName);
        const std::size_t length = wellFormedSequenceLength(fileName);
        const std::string_view piece = fileName.substr(0, std::max<std::size_t>(length, 1));
        if (length > 0 && !isEscape) {
            text += piece;
        } else {
            for (const char byte : piece) appendEscape(text, byte);
        }
        fileName.remove_prefix(piece.size());
    }
    return text;
}

std::string fileNameFromText(std::string_view text) {
    std::string fileName;
    while (!text.empty()) {
        if (beginsWithEscape(text)) {
            fileName += escapedByte(text);
            text.remove_prefix(4);
        } else {
            const std::string_view piece = text.substr(0, text.find(commonPrefixOfEscapes, 1));
            fileName += piece;
            text.remove_prefix(piece.size());
        }
    }
    return fileName;
}
