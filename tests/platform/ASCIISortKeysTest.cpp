#include "platform/linux/text/ASCIISortKeys.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>

namespace {

using OwnedCollator = std::unique_ptr<UCollator, decltype(&ucol_close)>;

OwnedCollator collatorOf(const char* locale) {
    UErrorCode error = U_ZERO_ERROR;
    OwnedCollator collator(ucol_open(locale, &error), &ucol_close);
    ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
    ucol_setAttribute(collator.get(), UCOL_STRENGTH, UCOL_SECONDARY, &error);
    EXPECT_TRUE(U_SUCCESS(error));
    return collator;
}

class ASCIISortKeysTest : public testing::Test {
protected:
    std::string keyByICU(const std::string& name) const {
        const std::u16string wide(name.begin(), name.end());
        std::string key(4096, '\0');
        key.resize(static_cast<std::size_t>(
            ucol_getSortKey(collator.get(), wide.data(), static_cast<std::int32_t>(wide.size()),
                            reinterpret_cast<std::uint8_t*>(key.data()), static_cast<std::int32_t>(key.size()))));
        return key;
    }

    bool isICUs(const std::string& name) const {
        std::string key = "before";
        return keys->append(key, name) && key == "before" + keyByICU(name);
    }

    const OwnedCollator collator = collatorOf("");
    const std::optional<ASCIISortKeys> keys = ASCIISortKeys::of(collator.get());
};

TEST_F(ASCIISortKeysTest, AreThoseOfLanguagesWithoutRulesOfTheirOwn) {
    for (const char* locale : {"", "en_US", "de_DE", "fr_FR", "it_IT"}) {
        EXPECT_TRUE(ASCIISortKeys::of(collatorOf(locale).get())) << locale;
    }
    // "aa", "ch", "cs", "dž" are letters there; Cyrillic comes first; capitals do.
    for (const char* locale : {"da_DK", "cs_CZ", "hu_HU", "hr_HR", "ru_RU", "en_US_POSIX"}) {
        EXPECT_FALSE(ASCIISortKeys::of(collatorOf(locale).get())) << locale;
    }
}

TEST_F(ASCIISortKeysTest, AreICUsForAllNumbersThatAreTaken) {
    ASSERT_TRUE(keys);
    for (int number = 0; number < 1'000'000; ++number) ASSERT_TRUE(isICUs(std::to_string(number))) << number;
}

TEST_F(ASCIISortKeysTest, AreICUsForAllNamesOfThreeCharacters) {
    ASSERT_TRUE(keys);
    for (char first = ' '; first <= '~'; ++first) {
        for (char second = ' '; second <= '~'; ++second) {
            for (char third = ' '; third <= '~'; ++third) {
                const std::string name{first, second, third};
                ASSERT_TRUE(isICUs(name)) << name;
            }
        }
    }
}

TEST_F(ASCIISortKeysTest, AreICUsForRandomNamesOfAnyLength) {
    ASSERT_TRUE(keys);
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (std::size_t length = 1; length <= 255; ++length) {
        for (int round = 0; round < 200; ++round) {
            std::string name;
            while (name.size() < length) {
                const bool mayBeDigit = name.size() < 6 || round % 2 == 0;
                const char character = static_cast<char>(' ' + random() % 95);
                if (mayBeDigit || character < '0' || '9' < character) name += character;
            }
            std::string key;
            if (!keys->append(key, name)) continue;
            ASSERT_EQ(key, keyByICU(name)) << name;
        }
    }
}

TEST_F(ASCIISortKeysTest, LeaveTheRestToICU) {
    ASSERT_TRUE(keys);
    struct Row {
        const char* name;
        std::string text;
        bool isTaken;
    };
    const std::vector<Row> rows = {
        {"empty", "", false},
        {"as long as a name can be", std::string(255, 'a'), true},
        {"longer", std::string(256, 'a'), false},
        {"six digits", "a999999", true},
        {"seven digits", "a1000000", false},
        {"zeros before them", "a" + std::string(200, '0') + "999999", true},
        {"zeros alone", std::string(200, '0'), true},
        {"a control character", "a\x1F", false},
        {"delete", "a\x7F", false},
        {"a NUL", std::string("a\0b", 3), false},
        {"another letter", "é", false},
        {"no text", "a\xFF", false},
    };
    for (const Row& row : rows) {
        std::string key = "before";
        EXPECT_EQ(keys->append(key, row.text), row.isTaken) << row.name;
        EXPECT_EQ(key, row.isTaken ? "before" + keyByICU(row.text) : "before") << row.name;
    }
}

} // namespace
