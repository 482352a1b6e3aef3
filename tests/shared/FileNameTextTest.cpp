#include "shared/FileNameText.h"

#include <gtest/gtest.h>

#include <vector>

#include "shared/UTF8.h"

namespace {

TEST(FileNameText, examples) {
    struct Case {
        const char* name;
        std::string fileName;
        std::string text;
    };
    const Case cases[] = {
        {"nothing", "", ""},
        {"plain", "/home/é/日本🙂", "/home/é/日本🙂"},
        {"Latin 1", "caf\xE9.txt", "caf\U0010F8E9.txt"},
        {"first and last byte", "\x80\xFF", "\U0010F880\U0010F8FF"},
        {"sequence cut off by the end", "a\xE2\x82", "a\U0010F8E2\U0010F882"},
        {"sequence cut off by a letter", "\xE2\x82z", "\U0010F8E2\U0010F882z"},
        {"overlong", "\xC0\xAF", "\U0010F8C0\U0010F8AF"},
        {"surrogate", "\xED\xA0\x80", "\U0010F8ED\U0010F8A0\U0010F880"},
        {"an escape that stands in a name", "\U0010F880", "\U0010F8F4\U0010F88F\U0010F8A2\U0010F880"},
        {"neighbours of the escapes", "\U0010F87F\U0010F900", "\U0010F87F\U0010F900"},
        {"the last characters of all", "\U0010FFFF", "\U0010FFFF"},
    };
    for (const auto& [name, fileName, text] : cases) {
        EXPECT_EQ(textFromFileName(fileName), text) << name;
        EXPECT_EQ(fileNameFromText(text), fileName) << name;
        EXPECT_EQ(isItsOwnText(fileName), text == fileName) << name;
    }
    EXPECT_EQ(fileNameFromText("\U0010F8C3\U0010F8A9"), "é") << "escapes that form a character are that character";
}

// An exact way back for every name implies that no two names share a text.
TEST(FileNameText, everyShortNameOfCriticalBytesComesBack) {
    constexpr char critical[] = {'a',    '\x7F', '\x80', '\x8F', '\x90', '\x9F', '\xA0', '\xA2', '\xA3',
                                 '\xBF', '\xC0', '\xC2', '\xE0', '\xED', '\xF0', '\xF4', '\xFF'};
    std::vector<std::string> names{""};
    std::size_t begin = 0;
    for (int length = 1; length <= 4; ++length) {
        const std::size_t end = names.size();
        for (; begin < end; ++begin) {
            for (const char byte : critical) names.push_back(names[begin] + byte);
        }
    }
    for (const std::string& name : names) {
        const std::string text = textFromFileName(name);
        ASSERT_TRUE(isWellFormedUTF8(text)) << testing::PrintToString(name);
        ASSERT_EQ(fileNameFromText(text), name);
        ASSERT_EQ(isItsOwnText(name), text == name);
    }
}

} // namespace
