#include "platform/Collation.h"

#include <gtest/gtest.h>
#include <unicode/uclean.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <set>

#include "platform/linux/text/ICUCollation.h"
#include "tests/support/VariableEnvironment.h"

using namespace std::string_literals;

namespace {

std::vector<std::string> sorted(const Collation& collation, const std::vector<std::string>& names) {
    const std::vector<std::string_view> views(names.begin(), names.end());
    std::vector<std::string> result;
    for (const std::size_t position : sortedOrder(collation, views)) result.push_back(names[position]);
    return result;
}

TEST(Collation, OrdersNames) {
    struct Row {
        const char* name;
        const char* locale;
        std::vector<std::string> inOrder;
    };
    const std::string manyLetters(70'000, 'a');
    std::string longKey;
    while (longKey.size() < 300) longKey += "\uE000a";
    const std::vector<Row> rows = {
        {"numbers by value", "", {"A", "a2", "a10", "b.txt"}},
        {"each number by itself", "", {"file1.5", "file1.10", "file2.1"}},
        {"numbers behind signs", "", {"IMG_9.png", "IMG_10.png"}},
        {"numbers beyond any type", "", {"a" + std::string(300, '8'), "a" + std::string(300, '9')}},
        {"signs, digits, letters", "", {"_x", ".hidden", "1e3", "9", "10", "a"}},
        {"case does not matter before the end", "", {"alpha", "Beta", "gamma", "README", "readme.md", "Zoe"}},
        {"an accent matters after the letters", "", {"apfel", "Äpfel", "az", "cote", "Coté"}},
        {"scripts", "", {"z", "Жук", "日本"}},
        {"case alone", "", {"AAA", "AAa", "aAA", "aaa"}},
        {"leading zeros alone", "", {"a002", "a02", "a2", "a3"}},
        {"width alone", "", {"az", "ａz", "b"}},
        {"composition alone", "", {"e\xCC\x81t", "\xC3\xA9t"}},
        {"invisible characters alone", "", {"x", "x\x01", "x\x7F", "x\xE2\x80\x8B"}},
        {"a NUL is one of them", "", {"a", "a\0"s, "a\0b"s, "ab"}},
        {"the empty name", "", {"", "\x01", " "}},
        {"bytes that are not UTF-8", "", {"日", "\xC3", "\xFE", "\xFF", "\xFEz"}},
        {"behind characters with long keys", "", {longKey + "a", longKey + "B"}},
        {"behind any length", "", {manyLetters + "A", manyLetters + "a", manyLetters + "b"}},
        {"root: a-ring is an a", "", {"a", "å", "z"}},
        {"Swedish: a-ring is a letter after z", "sv_SE", {"a", "z", "å", "ä", "ö"}},
        {"German: a variant asked for behind @ is left aside", "de_DE@collation=phonebook", {"ä", "ad"}},
        {"Danish: aa is a letter after z", "da_DK", {"ab", "z", "aa"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const VariableEnvironment environment(VariableEnvironment::Variables{{"LANG", row.locale}});
        const ICUCollation collation(environment);
        EXPECT_EQ(sorted(collation, {row.inOrder.rbegin(), row.inOrder.rend()}), row.inOrder);
    }
}

TEST(Collation, FindsTheLocale) {
    struct Row {
        const char* name;
        std::map<std::string, std::string> variables;
        bool isSwedish;
    };
    const std::vector<Row> rows = {
        {"nothing set", {}, false},
        {"the language", {{"LANG", "sv_SE"}}, true},
        {"with a character set", {{"LANG", "sv_SE.UTF-8"}}, true},
        {"with a modifier", {{"LANG", "sv@euro"}}, true},
        {"a territory that does not exist", {{"LANG", "sv_XX"}}, true},
        {"LC_COLLATE before LANG", {{"LC_COLLATE", "sv_SE"}, {"LANG", "de_DE"}}, true},
        {"LC_ALL before LC_COLLATE", {{"LC_ALL", "de_DE"}, {"LC_COLLATE", "sv_SE"}}, false},
        {"empty ones passed over", {{"LC_ALL", ""}, {"LC_COLLATE", ""}, {"LANG", "sv_SE"}}, true},
        {"C is a choice", {{"LC_ALL", "C"}, {"LANG", "sv_SE"}}, false},
        {"C with a character set", {{"LC_ALL", "C.UTF-8"}, {"LANG", "sv_SE"}}, false},
        {"POSIX", {{"LANG", "POSIX"}}, false},
        {"unknown", {{"LANG", "xx_YY"}}, false},
        {"only a character set", {{"LC_ALL", ".UTF-8"}, {"LANG", "sv_SE"}}, false},
        {"a path", {{"LANG", "../../sv"}}, false},
        {"longer than ICU takes", {{"LANG", std::string(5000, 'x')}}, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const VariableEnvironment environment(row.variables);
        const ICUCollation collation(environment);
        EXPECT_EQ(collation.compare("z", "å") < 0, row.isSwedish);
        EXPECT_TRUE(collation.compare("a", "B") < 0);
    }
}

TEST(Collation, KeepsEqualNamesInPlace) {
    const VariableEnvironment environment;
    const std::vector<std::string_view> names = {"b", "a", "b", "a", "B"};
    EXPECT_EQ(sortedOrder(ICUCollation(environment), names), (std::vector<std::size_t>{1, 3, 4, 0, 2}));
}

TEST(Collation, LooksForTheLocaleAtItsFirstUseAndOnce) {
    VariableEnvironment environment;
    const ICUCollation collation(environment);
    for (const char* locale : {"sv_SE", "C"}) {
        environment.variables["LC_ALL"] = locale;
        EXPECT_TRUE(collation.compare("z", "å") < 0) << locale;
    }
}

// Names that look alike, meet halfway, or are no text at all.
class RandomNames {
public:
    explicit RandomNames(std::mt19937::result_type seed) : random(seed) {}

    std::string next(std::string name = {}) {
        static const std::vector<std::string> pieces = {
            "a",      "A",      "b",      "aa", "ch", "z",    "1",    "0",        "02",           "10",
            "9",      "_",      " ",      ".",  "-",  "\x01", "\x7F", "\0"s,      "\u200B",       "\u0301",
            "\u0323", "\u0308", "ä",      "å",  "é",  "\xFF", "\xC3", "\xE2\x82", "\xED\xA0\x80", "\U0010F8BF",
            "\uFFFE", "\uFFFF", "\uFFFD", "เ",  "ก",  "ᄀ",   "ᅡ",   "가",       "日",           "Ж",
            "١",      "１",     "ａ",     "😀",  "ー"};
        for (auto count = random() % 6; count > 0; --count) name += pieces[random() % pieces.size()];
        return name;
    }

private:
    std::mt19937 random;
};

// In the root order ICU's direct comparison is sound and can judge the keys.
TEST(Collation, AgreesWithTheDirectComparisonOfRandomNames) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomNames names(seed);
    const VariableEnvironment environment;
    const ICUCollation collation(environment);
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UCollator, decltype(&ucol_close)> judge(ucol_open("", &error), &ucol_close);
    ucol_setAttribute(judge.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
    ucol_setAttribute(judge.get(), UCOL_STRENGTH, UCOL_SECONDARY, &error);
    for (int round = 0; round < 20'000; ++round) {
        const std::string start = names.next();
        const std::string left = names.next(start);
        const std::string right = names.next(start);
        const auto direct = ucol_strcollUTF8(judge.get(), left.data(), static_cast<int>(left.size()), right.data(),
                                             static_cast<int>(right.size()), &error);
        const auto expected = direct == UCOL_EQUAL ? left <=> right : static_cast<int>(direct) <=> 0;
        ASSERT_TRUE(U_SUCCESS(error) && collation.compare(left, right) == expected)
            << testing::PrintToString(left) << " and " << testing::PrintToString(right);
    }
}

// Here ICU's direct comparison would fail.
TEST(Collation, IsTotalAndFreeOfContradictionInEveryLocale) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomNames names(seed);
    std::set<std::string> different;
    while (different.size() < 300) different.insert(names.next("02"));
    for (const char* locale : {"", "sv_SE", "da_DK", "fr_CA", "th_TH", "ja_JP"}) {
        const VariableEnvironment environment(VariableEnvironment::Variables{{"LANG", locale}});
        const ICUCollation collation(environment);
        const auto inOrder = sorted(collation, {different.begin(), different.end()});
        for (std::size_t first = 0; first < inOrder.size(); ++first) {
            for (std::size_t second = 0; second < inOrder.size(); ++second) {
                ASSERT_EQ(collation.compare(inOrder[first], inOrder[second]), first <=> second)
                    << locale << ": " << testing::PrintToString(inOrder[first]) << " and "
                    << testing::PrintToString(inOrder[second]);
            }
        }
    }
}

// ICU takes its memory functions only before its first use, hence the process of its own.
[[noreturn]] void orderNamesWithoutICU() {
    UErrorCode error = U_ZERO_ERROR;
    u_setMemoryFunctions(
        nullptr, [](const void*, std::size_t) -> void* { return nullptr; },
        [](const void*, void*, std::size_t) -> void* { return nullptr; }, [](const void*, void*) {}, &error);
    const VariableEnvironment environment(VariableEnvironment::Variables{{"LANG", "sv_SE"}});
    const std::vector<std::string> inOrder = {"", "B", "a10", "a2", "é", "\xFF"};
    const bool isSorted = sorted(ICUCollation(environment), {inOrder.rbegin(), inOrder.rend()}) == inOrder;
    std::exit(U_SUCCESS(error) && isSorted ? 0 : 1);
}

TEST(CollationDeathTest, OrdersByCodePointWithoutICU) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(orderNamesWithoutICU(), testing::ExitedWithCode(0), "");
}

} // namespace
