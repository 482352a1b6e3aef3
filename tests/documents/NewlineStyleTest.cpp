#include "documents/NewlineStyle.h"

#include <gtest/gtest.h>

namespace {

using Style = EditorDocumentNewlineStyle;

TEST(NewlineStyle, DetectsByPrecedence) {
    const std::pair<std::string, Style> cases[] = {
        {"", Style::lf},     {"a", Style::lf},           {"a\nb", Style::lf},    {"a\r\nb\nc", Style::crlf},
        {"a\rb", Style::cr}, {"a\rb\r\nc", Style::crlf}, {"a\rb\nc", Style::cr}, {"a\n\rb", Style::cr},
        {"a\r", Style::cr},  {"\u2028", Style::lf},
    };
    for (const auto& [text, style] : cases) EXPECT_EQ(detectNewlineStyle(text), style) << testing::PrintToString(text);
}

TEST(NewlineStyle, ConvertsEveryLineEnd) {
    const struct {
        std::string text;
        std::string lf;
        std::string crlf;
        std::string cr;
    } cases[] = {
        {"", "", "", ""},
        {"a", "a", "a", "a"},
        {"a\r\nb\rc\nd", "a\nb\nc\nd", "a\r\nb\r\nc\r\nd", "a\rb\rc\rd"},
        {"\r\r\n\n", "\n\n\n", "\r\n\r\n\r\n", "\r\r\r"},
        {"a\r", "a\n", "a\r\n", "a\r"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(convertingNewlines(row.text, Style::lf), row.lf);
        EXPECT_EQ(convertingNewlines(row.text, Style::crlf), row.crlf);
        EXPECT_EQ(convertingNewlines(row.text, Style::cr), row.cr);
    }
}

} // namespace
