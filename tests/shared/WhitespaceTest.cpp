#include "shared/Whitespace.h"

#include <gtest/gtest.h>

namespace {

TEST(Whitespace, trimmed) {
    struct Case {
        const char* name;
        std::string_view text;
        std::string_view expected;
    };
    const Case cases[] = {
        {"nothing", "", ""},
        {"only white space", " \t\r\n\u00A0\u2028", ""},
        {"both ends", "\t a b \r\n", "a b"},
        {"ASCII controls", "\v\fa\x1F\v", "a\x1F"},
        {"byte before TAB", "\ba", "\ba"},
        {"next line", "\u0085a\u0085", "a"},
        {"space separators", "\u00A0\u1680\u2000\u200A\u202F\u205F\u3000a\u3000\u205F\u202F\u2007\u1680\u00A0", "a"},
        {"separators", "\u2028\u2029a\u2029\u2028", "a"},
        {"no white space: zero width, byte order mark", "\u200Ba\uFEFF", "\u200Ba\uFEFF"},
        {"kept inside", "a\u3000b", "a\u3000b"},
        {"last byte looks like one", "\u0105", "\u0105"},
        {"lone bytes", "\x85 a \xA0", "\x85 a \xA0"},
        {"invalid bytes beside white space", " \xFF\u3000", "\xFF"},
        {"a sequence cut off", "\xE2\x80", "\xE2\x80"},
    };
    for (const auto& [name, text, expected] : cases) EXPECT_EQ(trimmed(text), expected) << name;
}

} // namespace
