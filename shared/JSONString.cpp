#include "shared/JSONString.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "shared/ByteBlock.h"

namespace {

// The text is looked at in windows of 64 bytes, as many as there are bits in a word: the comparison gives a bit for
// each byte at which something must be done, and what lies between those bytes is copied as it stands.
constexpr std::size_t windowSize = 64;
// Copies reach beyond the window, and comparisons look two bytes ahead.
constexpr std::size_t readAhead = windowSize;

// Pieces are put together in a buffer and appended in one go: a string that grows by single characters, or is made
// large beforehand and so filled with zeros, costs more than the copy.
constexpr std::size_t pieceSize = 4096;
constexpr std::size_t longestEscape = 8;
constexpr std::size_t roomOfWindow = windowSize * longestEscape;
static_assert(roomOfWindow <= smallestEscapeRoom);

// A whole window without a question: runs are short, and a wrong guess of the processor costs more than the rest.
char* copyRun(const char* source, std::size_t length, char* end) {
    std::memcpy(end, source, windowSize);
    return end + length;
}

struct Handled {
    std::size_t length; // of the text
    char* end;          // of what was written for it
};

template <typename Comparison>
std::uint64_t bitsOfWindow(const char* window, Comparison comparison) {
    std::uint64_t bits = 0;
    for (std::size_t offset = 0; offset < windowSize; offset += byteBlockSize) {
        bits |= bitsOf(comparison(window + offset)) << offset;
    }
    return bits;
}

// At every byte that the comparison marks, the handler writes what stands for it and answers how many bytes of the text
// it has dealt with; 0 ends the copying. Returns what is left of the text.
template <typename Comparison, typename Handler>
std::string_view copyRuns(std::string& output, std::string_view text, Comparison comparison, Handler handler) {
    std::array<char, pieceSize + roomOfWindow> piece;
    char* end = piece.data();
    bool isStopped = false;
    while (!text.empty() && !isStopped) {
        std::array<char, windowSize + readAhead> lastBytes;
        const char* window = text.data();
        if (text.size() < lastBytes.size()) {
            lastBytes.fill(' ');
            window = std::copy(text.begin(), text.end(), lastBytes.begin()) - text.size();
        }
        const std::size_t windowLength = std::min(text.size(), windowSize);
        std::size_t position = 0;
        std::uint64_t bits = bitsOfWindow(window, comparison);
        while (bits != 0 && !isStopped) {
            const auto marked = static_cast<std::size_t>(std::countr_zero(bits));
            end = copyRun(window + position, marked - position, end);
            const Handled handled = handler(text.substr(marked), end);
            end = handled.end;
            position = marked + handled.length;
            isStopped = handled.length == 0;
            bits = position < windowSize ? bits & ~std::uint64_t{0} << position : 0;
        }
        if (position < windowLength && !isStopped) {
            end = copyRun(window + position, windowLength - position, end);
            position = windowLength;
        }
        text.remove_prefix(position);
        if (end >= piece.data() + pieceSize || text.empty() || isStopped) {
            output.append(piece.data(), static_cast<std::size_t>(end - piece.data()));
            end = piece.data();
        }
    }
    return text;
}

struct WrittenEscape {
    std::array<char, longestEscape> characters{};
    std::uint8_t length{};
};

constexpr WrittenEscape unicodeEscape(unsigned value) {
    constexpr std::string_view digits = "0123456789abcdef";
    return {{'\\', 'u', digits[value >> 12], digits[value >> 8 & 15], digits[value >> 4 & 15], digits[value & 15]}, 6};
}

// Character and letter after the backslash.
constexpr std::pair<char, char> shortForms[] = {{'\b', 'b'}, {'\f', 'f'}, {'\n', 'n'}, {'\r', 'r'},
                                                {'\t', 't'}, {'"', '"'},  {'\\', '\\'}};

constexpr auto writtenEscapes = [] {
    std::array<WrittenEscape, 128> escapes{};
    for (unsigned value = 0; value < 0x20; ++value) escapes[value] = unicodeEscape(value);
    escapes[0x7F] = unicodeEscape(0x7F);
    for (const auto& [character, letter] : shortForms) {
        escapes[static_cast<unsigned char>(character)] = {{'\\', letter}, 2};
    }
    return escapes;
}();

Handled write(const WrittenEscape& escape, std::size_t handledLength, char* end) {
    std::memcpy(end, escape.characters.data(), longestEscape);
    return {handledLength, end + escape.length};
}

constexpr std::string_view nextLine = "\u0085", lineSeparator = "\u2028", paragraphSeparator = "\u2029";

// What is longer than a byte and to be escaped; zero bytes of anything else.
Handled writeLongEscape(std::string_view text, char* end) {
    if (text.starts_with(nextLine)) return write(unicodeEscape(0x85), nextLine.size(), end);
    if (text.starts_with(lineSeparator)) return write(unicodeEscape(0x2028), lineSeparator.size(), end);
    if (text.starts_with(paragraphSeparator)) return write(unicodeEscape(0x2029), paragraphSeparator.size(), end);
    return {0, end};
}

// Also every first byte of what may be longer, 0xC2 and 0xE2: few texts have many others of them.
std::uint64_t bitsThatMayNeedEscape(const char* window) {
    return bitsOfWindow(window, [](const char* bytes) {
        const ByteBlock block = loadBlock(bytes);
        return (block < 0x20) | (block == '"') | (block == '\\') | (block == 0x7F) | ((block & 0xDF) == 0xC2);
    });
}

// One window of the text; length is what of it belongs to the text. Nearly everything that is escaped is one byte, and
// in code every tenth byte is, so that each instruction counts.
Handled escapeWindow(const char* window, std::size_t length, char* end) {
    std::size_t position = 0;
    for (std::uint64_t bits = bitsThatMayNeedEscape(window); bits != 0; bits &= bits - 1) {
        const auto marked = static_cast<std::size_t>(std::countr_zero(bits));
        const auto byte = static_cast<unsigned char>(window[marked]);
        char* const runEnd = copyRun(window + position, marked - position, end);
        const Handled handled = byte < 0x80 ? write(writtenEscapes[byte], 1, runEnd)
                                            : writeLongEscape({window + marked, paragraphSeparator.size()}, runEnd);
        // What was marked in vain is copied with the rest of its run; to end the run there would be slower, no more.
        if (handled.length == 0) continue;
        end = handled.end;
        position = marked + handled.length;
    }
    if (position >= length) return {position, end};
    return {length, copyRun(window + position, length - position, end)};
}

// By the letter after the backslash; zero where no such escape is.
constexpr auto oneLetterEscapes = [] {
    std::array<char, 256> characters{};
    characters['/'] = '/';
    for (const auto& [character, letter] : shortForms) characters[static_cast<unsigned char>(letter)] = character;
    return characters;
}();

std::optional<char32_t> fourHexDigits(std::string_view text) {
    if (text.size() < 4) return std::nullopt;
    char32_t value = 0;
    for (const char digit : text.substr(0, 4)) {
        value <<= 4;
        if ('0' <= digit && digit <= '9')
            value += static_cast<char32_t>(digit - '0');
        else if ('a' <= digit && digit <= 'f')
            value += static_cast<char32_t>(digit - 'a' + 10);
        else if ('A' <= digit && digit <= 'F')
            value += static_cast<char32_t>(digit - 'A' + 10);
        else
            return std::nullopt;
    }
    return value;
}

std::optional<JSONEscape> readUnicodeEscape(std::string_view text) {
    const auto first = fourHexDigits(text.substr(2));
    if (!first || (0xDC00 <= *first && *first <= 0xDFFF)) return std::nullopt;
    if (*first < 0xD800 || *first > 0xDFFF) return JSONEscape{6, *first};
    if (text.substr(6, 2) != "\\u") return std::nullopt;
    const auto second = fourHexDigits(text.substr(8));
    if (!second || *second < 0xDC00 || *second > 0xDFFF) return std::nullopt;
    return JSONEscape{12, 0x10000 + ((*first - 0xD800) << 10) + (*second - 0xDC00)};
}

char* writeUTF8(char32_t character, char* end) {
    const auto put = [&](char32_t byte) { *end++ = static_cast<char>(byte); };
    const auto putContinuation = [&](int shift) { put(0x80 | (character >> shift & 0x3F)); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0 | character >> 6);
        putContinuation(0);
    } else if (character < 0x10000) {
        put(0xE0 | character >> 12);
        putContinuation(6);
        putContinuation(0);
    } else {
        put(0xF0 | character >> 18);
        putContinuation(12);
        putContinuation(6);
        putContinuation(0);
    }
    return end;
}

Handled resolveEscape(std::string_view text, char* end) {
    if (text.size() < 2 || text[0] != '\\') return {0, end};
    if (const char character = oneLetterEscapes[static_cast<unsigned char>(text[1])]) {
        *end = character;
        return {2, end + 1};
    }
    const auto escape = readEscape(text);
    if (!escape) return {0, end};
    return {escape->length, writeUTF8(escape->character, end)};
}

auto endsPlainText(ByteBlock block) {
    return (block < 0x20) | (block == '"') | (block == '\\');
}

auto isNotPlainASCII(ByteBlock block) {
    return endsPlainText(block) | (block >= 0x7F);
}

// As two words, the first and the last.
template <typename Word>
bool copyPlainASCIIAsWords(char* to, std::string_view text) {
    constexpr std::size_t size = sizeof(Word);
    std::array<Word, byteBlockSize / size> words;
    std::memcpy(&words[0], text.data(), size);
    words.fill(words[0]);
    std::memcpy(&words[1], text.data() + text.size() - size, size);
    std::memcpy(to, &words[0], size);
    std::memcpy(to + text.size() - size, &words[1], size);
    return !holdsAnywhere(isNotPlainASCII(std::bit_cast<ByteBlock>(words)));
}

bool copyPlainASCIIShorterThanBlock(char* to, std::string_view text) {
    if (text.size() >= 8) return copyPlainASCIIAsWords<std::uint64_t>(to, text);
    if (text.size() >= 4) return copyPlainASCIIAsWords<std::uint32_t>(to, text);
    if (text.size() >= 2) return copyPlainASCIIAsWords<std::uint16_t>(to, text);
    return text.empty() || copyPlainASCIIAsWords<std::uint8_t>(to, text);
}

} // namespace

EscapedPiece escapePiece(std::string_view text, std::span<char> room) {
    const std::string_view whole = text;
    char* end = room.data();
    const char* const lastBegin = room.data() + room.size() - roomOfWindow;
    while (!text.empty() && end <= lastBegin) {
        std::array<char, windowSize + readAhead> lastBytes;
        const char* window = text.data();
        if (text.size() < lastBytes.size()) {
            lastBytes.fill(' ');
            window = std::copy(text.begin(), text.end(), lastBytes.begin()) - text.size();
        }
        const Handled handled = escapeWindow(window, std::min(text.size(), windowSize), end);
        end = handled.end;
        text.remove_prefix(handled.length);
    }
    return {whole.size() - text.size(), static_cast<std::size_t>(end - room.data())};
}

void appendEscaped(std::string& output, std::string_view text) {
    output.reserve(output.size() + text.size() + text.size() / 8 + 2);
    std::array<char, pieceSize + roomOfWindow> room;
    while (!text.empty()) {
        const EscapedPiece piece = escapePiece(text, room);
        output.append(room.data(), piece.written);
        text.remove_prefix(piece.consumed);
    }
}

// Whatever the length, it is copied in a few large parts that overlap.
bool copyPlainASCII(char* to, std::string_view text) {
    const char* const from = text.data();
    const std::size_t size = text.size();
    if (size < byteBlockSize) return copyPlainASCIIShorterThanBlock(to, text);
    auto isOther = isNotPlainASCII(loadBlock(from + size - byteBlockSize));
    for (std::size_t offset = 0; offset + byteBlockSize < size; offset += byteBlockSize) {
        const ByteBlock block = loadBlock(from + offset);
        isOther |= isNotPlainASCII(block);
        std::memcpy(to + offset, &block, byteBlockSize);
    }
    std::memcpy(to + size - byteBlockSize, from + size - byteBlockSize, byteBlockSize);
    return !holdsAnywhere(isOther);
}

std::optional<std::size_t> appendUnescaped(std::string& output, std::string_view text) {
    // Most strings are short and have no escapes.
    const std::size_t plain = plainLength(text);
    output += text.substr(0, plain);
    if (text.substr(plain).starts_with('"')) return plain + 1;
    const auto endsRun = [](const char* bytes) { return endsPlainText(loadBlock(bytes)); };
    const std::string_view rest =
        copyRuns(output, text.substr(plain), endsRun, [](auto... arguments) { return resolveEscape(arguments...); });
    if (!rest.starts_with('"')) return std::nullopt;
    return text.size() - rest.size() + 1;
}

std::size_t plainLength(std::string_view text) {
    std::size_t length = 0;
    for (; length + byteBlockSize <= text.size(); length += byteBlockSize) {
        const std::uint64_t bits = bitsOf(endsPlainText(loadBlock(text.data() + length)));
        if (bits != 0) return length + static_cast<std::size_t>(std::countr_zero(bits));
    }
    const auto isPlain = [](char byte) {
        return static_cast<unsigned char>(byte) >= 0x20 && byte != '"' && byte != '\\';
    };
    while (length < text.size() && isPlain(text[length])) ++length;
    return length;
}

std::optional<JSONEscape> readEscape(std::string_view text) {
    if (text.size() < 2) return std::nullopt;
    if (text[1] == 'u') return readUnicodeEscape(text);
    const char character = oneLetterEscapes[static_cast<unsigned char>(text[1])];
    if (character == 0) return std::nullopt;
    return JSONEscape{2, static_cast<char32_t>(character)};
}
