#include "tools/PrintableText.h"

#include <gtest/gtest.h>

#include "tools/console/CommandWords.h"

namespace {

TEST(PrintableText, LeavesTheTerminalAlone) {
    struct Case {
        std::string name;
        std::string_view text;
        std::string_view shown;
        std::string_view shownInASCII;
    };
    const Case cases[] = {
        {"words", "Grüße, 日本.txt", "Grüße, 日本.txt", "Gr\\u{FC}\\u{DF}e, \\u{65E5}\\u{672C}.txt"},
        {"escape sequence", "\x1B[31mred", "\\x1B[31mred", "\\x1B[31mred"},
        {"line ends and tabs", "a\nb\r\tc\x7F", "a\\x0Ab\\x0D\\x09c\\x7F", "a\\x0Ab\\x0D\\x09c\\x7F"},
        {"NUL", std::string_view("a\0b", 3), "a\\x00b", "a\\x00b"},
        {"control of eight bits, as a character",
         "\xC2\x9B"
         "31m",
         "\\u{9B}31m", "\\u{9B}31m"},
        {"control of eight bits, as a byte",
         "\x9B"
         "31m",
         "\\x9B31m", "\\x9B31m"},
        {"writing from right to left", "a\u202Etxt.exe", "a\\u{202E}txt.exe", "a\\u{202E}txt.exe"},
        {"isolates and marks", "\u2066\u200F\u061C", "\\u{2066}\\u{200F}\\u{61C}", "\\u{2066}\\u{200F}\\u{61C}"},
        {"invisible", "a\u200Bb\uFEFF", "a\\u{200B}b\\u{FEFF}", "a\\u{200B}b\\u{FEFF}"},
        {"line separators", "\u0085\u2028", "\\u{85}\\u{2028}", "\\u{85}\\u{2028}"},
        {"not UTF-8", "caf\xE9 \xF0\x9F", "caf\\xE9 \\xF0\\x9F", "caf\\xE9 \\xF0\\x9F"},
        {"private characters", "\uE000", "\\u{E000}", "\\u{E000}"},
        {"accent of its own", "e\u0301", "e\u0301", "e\\u{301}"},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(printable(row.text), row.shown) << row.name;
        EXPECT_EQ(printable(row.text, TerminalCharacters::ascii), row.shownInASCII) << row.name;
    }
}

TEST(PrintableText, FitsIntoItsColumns) {
    EXPECT_EQ(columnCount("Grüße"), 5U);
    EXPECT_EQ(columnCount("日本"), 4U);
    EXPECT_EQ(columnCount("e\u0301"), 1U);
    EXPECT_EQ(fittingLength("日本", 3), 3U);
    EXPECT_EQ(fittingLength("日本", 1), 3U) << "one character at least, or nobody gets on";
    EXPECT_EQ(fittingLength("e\u0301x", 1), 3U);
}

TEST(CommandWords, AreReadAsInAShell) {
    using Words = std::vector<std::string>;
    struct Case {
        std::string line;
        std::optional<Words> words;
    };
    const Case cases[] = {
        {"", Words{}},
        {"  open \t a.txt ", Words{"open", "a.txt"}},
        {"a 'b c' \"d  e\"", Words{"a", "b c", "d  e"}},
        {R"(two\ words a\\b \'q\' 'b\c')", Words{"two words", "a\\b", "'q'", "b\\c"}},
        {"x'y z'w ''", Words{"xy zw", ""}},
        {R"(\x1B\xff \u{e9}\u{1F600})", Words{"\x1B\xFF", "é😀"}},
        {"'open", std::nullopt},
        {"open\\", std::nullopt},
        {R"(\xg1)", std::nullopt},
        {R"(\x1)", std::nullopt},
        {R"(\u{})", std::nullopt},
        {R"(\u{12)", std::nullopt},
        {R"(\u{D800})", std::nullopt},
        {R"(\u{110000})", std::nullopt},
    };
    for (const Case& row : cases) EXPECT_EQ(wordsOf(row.line), row.words) << row.line;
}

TEST(CommandWords, NameEveryFile) {
    for (const std::string word :
         {"a b", "", "it's", "\"", "\\", "\\x1B", "\x1B[1m\n", "\xFF\xC3", "é", "\u202E", "~"}) {
        EXPECT_EQ(wordsOf(quotedWord(word)), std::vector{word}) << quotedWord(word);
        EXPECT_EQ(printable(quotedWord(word)), quotedWord(word));
    }
}

} // namespace
