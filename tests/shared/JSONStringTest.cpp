#include "shared/JSONString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

std::string escaped(std::string_view text) {
    std::string output;
    appendEscaped(output, text);
    return output;
}

std::optional<std::string> unescaped(std::string_view escapedText) {
    const std::string source = std::string{escapedText} + "\",\"further\"";
    std::string output;
    const auto length = appendUnescaped(output, source);
    if (!length) return std::nullopt;
    EXPECT_EQ(*length, escapedText.size() + 1);
    return output;
}

// What lies around the copy stays as it is.
bool copiedAsPlainASCII(std::string_view text) {
    std::string place(text.size() + 2, '#');
    const bool isPlain = copyPlainASCII(place.data() + 1, text);
    EXPECT_EQ(place.front(), '#');
    EXPECT_EQ(place.back(), '#');
    if (isPlain) {
        EXPECT_EQ(place.substr(1, text.size()), text);
    }
    return isPlain;
}

struct Case {
    const char* name;
    std::string text;
    std::string escaped;
};

const Case cases[] = {
    {"quote", "\"", "\\\""},
    {"backslash", "\\", "\\\\"},
    {"slash as it is", "/", "/"},
    {"short forms", "\b\f\n\r\t", "\\b\\f\\n\\r\\t"},
    {"NUL", std::string(1, '\0'), "\\u0000"},
    {"vertical tab", "\v", "\\u000b"},
    {"last control character", "\x1F", "\\u001f"},
    {"space", " ", " "},
    {"delete", "\x7F", "\\u007f"},
    {"next line", "\u0085", "\\u0085"},
    {"neighbours of next line", "\u0084\u0086\u00C5", "\u0084\u0086\u00C5"},
    {"line separators", "\u2028\u2029", "\\u2028\\u2029"},
    {"neighbours of line separators", "\u2027\u202A\u2068\u2128", "\u2027\u202A\u2068\u2128"},
    {"0x85 and 0xA8 inside other characters", "ŅĨ\u3028\U00012028", "ŅĨ\u3028\U00012028"},
    {"characters of every length", "aé€🙂", "aé€🙂"},
    {"many escapes", std::string(100, '\x01'),
     [] {
         std::string result;
         for (int count = 0; count < 100; ++count) result += "\\u0001";
         return result;
     }()},
};

// Each case at every distance from the beginning and the end, so that it lies across each border of the scan.
TEST(JSONString, escapesWhereverTheyStand) {
    for (const auto& [name, text, expected] : cases) {
        SCOPED_TRACE(name);
        const bool isPlain = text == expected && std::ranges::all_of(text, [](char byte) { return byte > 0; });
        for (std::size_t before = 0; before <= 70; ++before) {
            for (const std::size_t after : {0u, 1u, 2u, 61u, 62u, 63u, 64u, 130u}) {
                const std::string head(before, 'h'), tail(after, 't');
                ASSERT_EQ(escaped(head + text + tail), head + expected + tail) << before << " " << after;
                ASSERT_EQ(copiedAsPlainASCII(head + text + tail), isPlain) << before << " " << after;
                ASSERT_EQ(unescaped(head + expected + tail), head + text + tail) << before << " " << after;
            }
        }
    }
}

// In the smallest room that is allowed, the pieces begin everywhere.
TEST(JSONString, piecesAreTheWhole) {
    for (const auto& [name, text, expected] : cases) {
        SCOPED_TRACE(name);
        std::string longText, longExpected, pieces;
        for (std::size_t count = 0; longText.size() < 5'000; ++count) {
            (longText += text) += std::string(count % 70, 'x');
            (longExpected += expected) += std::string(count % 70, 'x');
        }
        std::array<char, smallestEscapeRoom + 3> room;
        for (std::string_view rest = longText; !rest.empty();) {
            const EscapedPiece piece = escapePiece(rest, room);
            ASSERT_GT(piece.consumed, 0);
            ASSERT_LE(piece.written, room.size());
            pieces.append(room.data(), piece.written);
            rest.remove_prefix(piece.consumed);
        }
        ASSERT_EQ(pieces, longExpected);
    }
}

TEST(JSONString, refusesWhatIsNoString) {
    std::string output;
    for (const std::string_view text : {"", "abc", "a\nb\"", "\\", "\\\"", "\\x\"", "\\u12\"", "\\uD800\"", "\\uDC00\"",
                                        "\\uDC00\\uDC00\"", "\\uD800\\u0041\"", "\\uD800\\uD800\"", "\\u00g0\""}) {
        EXPECT_EQ(appendUnescaped(output, text), std::nullopt) << text;
    }
}

} // namespace
