#include "tools/console/CommandWords.h"

#include <unicode/utf8.h>

#include <array>
#include <charconv>
#include <cstdint>

#include "shared/UTF8.h"
#include "tools/PrintableText.h"

namespace {

// False for what is no character.
bool appendCharacter(std::string& text, unsigned character) {
    std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
    std::int32_t length = 0;
    UBool isError = 0;
    U8_APPEND(bytes.data(), length, U8_MAX_LENGTH, static_cast<UChar32>(character), isError);
    text.append(reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(length));
    return !isError;
}

std::optional<unsigned> takeHexadecimal(std::string_view& text, std::size_t length) {
    unsigned value = 0;
    if (length == 0 || length > text.size()) return std::nullopt;
    const auto [end, error] = std::from_chars(text.data(), text.data() + length, value, 16);
    if (error != std::errc() || end != text.data() + length) return std::nullopt;
    text.remove_prefix(length);
    return value;
}

// What follows a backslash.
bool takeEscape(std::string_view& line, std::string& word) {
    if (line.empty()) return false;
    if (line.starts_with('x')) {
        line.remove_prefix(1);
        const auto byte = takeHexadecimal(line, 2);
        if (byte) word += static_cast<char>(*byte);
        return byte.has_value();
    }
    if (line.starts_with("u{")) {
        line.remove_prefix(2);
        const auto character = takeHexadecimal(line, line.find('}'));
        if (!character || !appendCharacter(word, *character)) return false;
    } else {
        word += line.front();
    }
    line.remove_prefix(1);
    return true;
}

} // namespace

std::optional<std::vector<std::string>> wordsOf(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    bool isInWord = false;
    char quote = '\0';
    while (!line.empty()) {
        const char next = line.front();
        line.remove_prefix(1);
        if (next == '\\' && quote != '\'') {
            if (!takeEscape(line, word)) return std::nullopt;
            isInWord = true;
        } else if (next == quote) {
            quote = '\0';
        } else if (quote == '\0' && (next == '"' || next == '\'')) {
            quote = next;
            isInWord = true;
        } else if (quote == '\0' && (next == ' ' || next == '\t')) {
            if (isInWord) words.push_back(std::move(word));
            word.clear();
            isInWord = false;
        } else {
            word += next;
            isInWord = true;
        }
    }
    if (isInWord) words.push_back(std::move(word));
    if (quote != '\0') return std::nullopt;
    return words;
}

std::string quotedWord(std::string_view word) {
    std::string result;
    while (!word.empty()) {
        const std::size_t length = wellFormedSequenceLength(word);
        const std::string_view piece = word.substr(0, length > 0 ? length : 1);
        word.remove_prefix(piece.size());
        if (piece.find_first_of(" '\"\\") != piece.npos) result += '\\';
        result += printable(piece);
    }
    return result.empty() ? "''" : result;
}

bool isEscapedAt(std::string_view line, std::size_t position) {
    std::size_t backslashes = 0;
    while (backslashes < position && line[position - 1 - backslashes] == '\\') ++backslashes;
    return backslashes % 2 == 1;
}
