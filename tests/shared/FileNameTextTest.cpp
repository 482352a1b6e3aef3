#include "shared/FileNameText.h"

#include <gtest/gtest.h>

#include <iostream>
#include <random>
#include <unordered_map>
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
}

TEST(FileNameText, escapesThatFormACharacterAreThatCharacter) {
    EXPECT_EQ(fileNameFromText("\U0010F8C3\U0010F8A9"), "é");
}

void checkName(const std::string& fileName) {
    const std::string text = textFromFileName(fileName);
    ASSERT_TRUE(isWellFormedUTF8(text)) << testing::PrintToString(fileName);
    ASSERT_EQ(fileNameFromText(text), fileName);
    ASSERT_EQ(isItsOwnText(fileName), text == fileName);
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
    for (const std::string& name : names) checkName(name);
}

TEST(FileNameText, randomNamesComeBack) {
    const auto seed = std::random_device{}();
    std::cout << "seed " << seed << std::endl;
    std::mt19937 random{seed};
    const std::string_view pieces[] = {"é", "\U0010F8A2", "\xF4\x8F", "\xF4\x8F\xA3", "\xC3", "a", "日"};
    for (int round = 0; round < 50'000; ++round) {
        std::string name;
        for (auto length = random() % 12; length > 0; --length) {
            if (random() % 2 == 0)
                name += static_cast<char>(random());
            else
                name += pieces[random() % std::size(pieces)];
        }
        checkName(name);
    }
}

} // namespace
