#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/text/Converter.h"
#include "platform/linux/text/ICUTextCoding.h"
#include "platform/linux/text/StringEncodings.h"

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using enum ByteOrderMark;

constexpr auto everyMark = {none, utf8, utf16LittleEndian, utf16BigEndian, utf32LittleEndian, utf32BigEndian};

const ICUTextCoding& coding() {
    static const ICUTextCoding shared;
    return shared;
}

std::string bytes(std::string_view hexadecimal) {
    std::string result;
    for (std::size_t i = 0; i < hexadecimal.size(); i += 2)
        result += static_cast<char>(std::stoi(std::string(hexadecimal.substr(i, 2)), nullptr, 16));
    return result;
}

// Encoding by the table of an independent implementation.

struct EncodingRow {
    const char* name;
    std::uint64_t encodingRawValue;
    const char* text;
    const char* data; // in hexadecimal
};

const EncodingRow encodings[] = {
    {"US-ASCII", 1, "hello\n", "68656C6C6F0A"},
    {"EUC-JP", 3, "日本語、テキスト\n", "C6FCCBDCB8ECA1A2A5C6A5ADA5B9A5C80A"},
    {"UTF-8", 4, "naïve – 日本 😀\n", "6E61C3AF766520E2809320E697A5E69CAC20F09F98800A"},
    {"ISO-8859-1", 5, "Crème brûlée\n", "4372E86D65206272FB6CE9650A"},
    {"Shift_JIS", 8, "表示 C:\\ﾃｷｽﾄ\n", "955C8EA620433A5CC3B7BDC40A"},
    {"ISO-8859-2", 9, "Zażółć gęślą jaźń\n", "5A61BFF3B3E62067EAB66CB1206A61BCF10A"},
    {"windows-1251", 11, "Съешь ещё «булок»\n", "D1FAE5F8FC20E5F9B820ABE1F3EBEEEABB0A"},
    {"windows-1252", 12, "“Crème” – 5 €\n", "934372E86D65942096203520800A"},
    {"windows-1253", 13, "Ελληνικά ‘Άλφα’\n", "C5EBEBE7EDE9EADC2091A2EBF6E1920A"},
    {"windows-1254", 14, "İstanbul ığdır – 5 €\n", "DD7374616E62756C20FDF064FD722096203520800A"},
    {"windows-1250", 15, "Příliš žluťoučký „kůň“\n", "50F8ED6C699A209E6C759D6F75E86BFD20846BF9F2930A"},
    {"ISO-2022-JP", 21, "日本語 text\n漢字\n", "1B2442467C4B5C386C1B284220746578740A1B244234413B7A1B28420A"},
    {"macintosh", 30, "Señor “Ångström” † π\n", "5365966F7220D2816E677374729A6DD320A020B90A"},
    {"x-mac-greek", 0x80000006, "Ελληνικά Ά\n", "B6ECECE8EEE9EBC020CD0A"},
    {"x-mac-cyrillic", 0x80000007, "Съешь ещё «булок»\n", "91FAE5F8FC20E5F9DE20C7E1F3EBEEEAC80A"},
    {"x-mac-centraleurroman", 0x8000001D, "Příliš žluťoučký\n", "50DE926C69E420EC6C75E96F758B6BF90A"},
    {"x-mac-turkish", 0x80000023, "İstanbul ığdır şu\n", "DC7374616E62756C20DDDB64DD7220DF750A"},
    {"ISO-8859-3", 0x80000203, "Ĉiuĵaŭde ĥoro\n", "C66975BC61FD646520B66F726F0A"},
    {"ISO-8859-4", 0x80000204, "Šķērsām ģērbtuve\n", "A9F3BA7273E06D20BBBA7262747576650A"},
    {"ISO-8859-5", 0x80000205, "Съешь ещё љубав\n", "C1EAD5E8EC20D5E9F120F9E3D1D0D20A"},
    {"ISO-8859-6", 0x80000206, "مرحبا بالعالم\n", "E5D1CDC8C720C8C7E4D9C7E4E50A"},
    {"ISO-8859-7", 0x80000207, "Ελληνικά Άλφα\n", "C5EBEBE7EDE9EADC20B6EBF6E10A"},
    {"ISO-8859-8", 0x80000208, "שלום עולם\n", "F9ECE5ED20F2E5ECED0A"},
    {"ISO-8859-9", 0x80000209, "İstanbul ığdır şu\n", "DD7374616E62756C20FDF064FD7220FE750A"},
    {"ISO-8859-10", 0x8000020A, "Sámi ŋŧđ Þórður\n", "53E16D6920BFBBB920DEF372F075720A"},
    {"ISO-8859-11", 0x8000020B, "ภาษาไทย\n", "C0D2C9D2E4B7C20A"},
    {"ISO-8859-13", 0x8000020D, "Ąžuolas šviečia ķ\n", "C0FE756F6C617320F0766965E8696120ED0A"},
    {"ISO-8859-14", 0x8000020E, "Ŵythnos ŷ Ḃḃ\n", "D07974686E6F7320FE20A1A20A"},
    {"ISO-8859-15", 0x8000020F, "œuvre à 5 € Žš\n", "BD7576726520E0203520A420B4A80A"},
    {"IBM437", 0x80000400, "Crème ╔═╗ α\n", "43728A6D6520C9CDBB20E00A"},
    {"IBM737", 0x80000405, "Ελληνικά Άλφα\n", "84A2A29EA4A0A1E120EAA2AD980A"},
    {"IBM775", 0x80000406, "Ąžuolas šviečia\n", "B5D8756F6C617320D5766965D169610A"},
    {"IBM850", 0x80000410, "Crème Ð ╔═╗ ©\n", "43728A6D6520D120C9CDBB20B80A"},
    {"IBM851", 0x80000411, "Ελληνικά Çé\n", "A8E5E5E1E7E3E49B2080820A"},
    {"IBM852", 0x80000412, "Příliš žluťoučký\n", "50FDA16C69E720A76C759C6F759F6BEC0A"},
    {"IBM855", 0x80000413, "Съешь ещё љубав\n", "E49EA8F5ED20A8F9842090E7A2A0EB0A"},
    {"IBM857", 0x80000414, "İstanbul ığdır\n", "987374616E62756C208DA7648D720A"},
    {"IBM860", 0x80000415, "São ação õ\n", "53846F206187846F20940A"},
    {"IBM861", 0x80000416, "Þórður ð\n", "8DA2728C7572208C0A"},
    {"IBM862", 0x80000417, "שלום ╔═╗\n", "998C858D20C9CDBB0A"},
    {"IBM863", 0x80000418, "Forêt À Ê\n", "466F728874208E20920A"},
    {"IBM864", 0x80000419, "ﺡﻭﻝ\n", "AEE8FB0A"},
    {"IBM865", 0x8000041A, "Blåbær ¤ ø\n", "426C8662917220AF209B0A"},
    {"IBM866", 0x8000041B, "Съешь ещё ╔═╗\n", "91EAA5E8EC20A5E9F120C9CDBB0A"},
    {"IBM869", 0x8000041C, "Ελληνικά Άλφα\n", "A8E5E5E1E7E3E49B2086E5F3D60A"},
    {"windows-874", 0x8000041D, "ภาษาไทย €\n", "C0D2C9D2E4B7C220800A"},
    {"GBK", 0x80000421, "简体中文 鎔\n", "BCF2CCE5D6D0CEC420E6670A"},
    {"windows-949", 0x80000422, "한국어 똠방각하\n", "C7D1B1B9BEEE208C63B9E6B0A2C7CF0A"},
    {"windows-950", 0x80000423, "繁體中文\n", "C163C5E9A4A4A4E50A"},
    {"windows-1255", 0x80000505, "שלום עולם €\n", "F9ECE5ED20F2E5ECED20800A"},
    {"windows-1256", 0x80000506, "مرحبا پ €\n", "E3D1CDC8C7208120800A"},
    {"windows-1257", 0x80000507, "Ąžuolas – šviečia\n", "C0FE756F6C6173209620F0766965E869610A"},
    {"windows-1258", 0x80000508, "Việt\n", "5669EAF2740A"},
    {"gb2312", 0x80000630, "简体中文\n", "BCF2CCE5D6D0CEC40A"},
    {"GBK, second value", 0x80000631, "简体中文 鎔\n", "BCF2CCE5D6D0CEC420E6670A"},
    {"GB18030", 0x80000632, "简体 😀 ß\n", "BCF2CCE5209439FC3620813089380A"},
    {"EUC-KR", 0x80000640, "한국어\n", "C7D1B1B9BEEE0A"},
    {"ISO-2022-JP-2", 0x80000821, "日本 Ελ 한\n", "1B2442467C4B5C1B2842201B24422625264B1B2842201B24284347511B28420A"},
    {"ISO-2022-JP-1", 0x80000822, "日本 丂\n", "1B2442467C4B5C1B2842201B24284430211B28420A"},
    {"ISO-2022-CN", 0x80000830, "简体\n", "1B2429410E3C724C650F0A"},
    {"ISO-2022-CN-EXT", 0x80000831, "简体\n", "1B2429410E3C724C650F0A"},
    {"ISO-2022-KR", 0x80000840, "한국어 text\n", "1B2429430E475131393E6E0F20746578740A"},
    {"EUC-CN", 0x80000930, "简体中文\n", "BCF2CCE5D6D0CEC40A"},
    {"EUC-TW", 0x80000931, "繁體中文\n", "F4EDFCD5C4E3C5C60A"},
    {"windows-949, second value", 0x80000940, "한국어 똠방각하\n", "C7D1B1B9BEEE208C63B9E6B0A2C7CF0A"},
    {"Shift_JIS, second value", 0x80000A01, "表示 C:\\ﾃｷｽﾄ\n", "955C8EA620433A5CC3B7BDC40A"},
    {"KOI8-R", 0x80000A02, "Съешь ещё ╔═╗\n", "F3DFC5DBD820C5DDA320A5A0A80A"},
    {"Big5", 0x80000A03, "繁體中文\n", "C163C5E9A4A4A4E50A"},
    {"HZ", 0x80000A05, "简体 ~ text\n", "7E7B3C724C657E7D207E7E20746578740A"},
    {"Big5-HKSCS", 0x80000A06, "香港 嘅 㗎\n", "ADBBB4E4209DEF209DEE0A"},
    {"KOI8-U", 0x80000A08, "Ґанок її є\n", "BDC1CECFCB20A7A720A40A"},
    {"UTF-16BE", 0x90000100, "日本 😀\n", "65E5672C0020D83DDE00000A"},
    {"UTF-16LE", 0x94000100, "日本 😀\n", "E5652C6720003DD800DE0A00"},
    {"UTF-32BE", 0x98000100, "日本 😀\n", "000065E50000672C000000200001F6000000000A"},
    {"UTF-32LE", 0x9C000100, "日本 😀\n", "E56500002C6700002000000000F601000A000000"},
};

void check(const EncodingRow& row) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(coding().encode(row.text, row.encodingRawValue, none), bytes(row.data));
    const auto converter = Converter::named(converterName(row.encodingRawValue).value());
    const auto decoded = converter.value().decode(bytes(row.data), EndOfBytes::complete);
    EXPECT_EQ(utf8FromUTF16(decoded.value_or(u"")), row.text);
}

TEST(TextCoding, encodesAsOtherSystemsDo) {
    for (const EncodingRow& row : encodings) check(row);
}

TEST(TextCoding, whatItDetectsInAnyEncodingComesBack) {
    for (const EncodingRow& row : encodings) {
        SCOPED_TRACE(row.name);
        const std::string lines = std::string(row.text) + row.text + "\r\n" + row.text;
        for (const ByteOrderMark mark : everyMark) {
            const auto data = coding().encode(lines, row.encodingRawValue, mark).value();
            const auto detected = coding().detect(std::string(data));
            ASSERT_TRUE(detected.has_value());
            EXPECT_EQ(coding().encode(detected->text, detected->encodingRawValue, detected->byteOrderMark), data);
        }
    }
}

// Byte order marks.

struct MarkRow {
    const char* name;
    std::string_view data;
    DetectedText expected;
};

const MarkRow marks[] = {
    {"UTF-8 mark", "\xEF\xBB\xBFhi\n"sv, {"hi\n", 4, utf8}},
    {"UTF-8 mark alone", "\xEF\xBB\xBF"sv, {"", 4, utf8}},
    {"a second mark is text", "\xEF\xBB\xBF\xEF\xBB\xBFx"sv, {"\uFEFFx", 4, utf8}},
    {"UTF-16 little-endian", "\xFF\xFEh\0\x3D\xD8\x00\xDE"sv, {"h😀", 10, utf16LittleEndian}},
    {"UTF-16 big-endian", "\xFE\xFF\0h\0\n"sv, {"h\n", 10, utf16BigEndian}},
    {"UTF-16 mark alone", "\xFF\xFE"sv, {"", 10, utf16LittleEndian}},
    {"UTF-16 mark, then a zero width no-break space", "\xFE\xFF\xFE\xFF"sv, {"\uFEFF", 10, utf16BigEndian}},
    {"UTF-16 with noncharacters", "\xFF\xFE\xFE\xFF\xFF\xFF"sv, {"\uFFFE\uFFFF", 10, utf16LittleEndian}},
    {"four bytes before two", "\xFF\xFE\0\0h\0\0\0"sv, {"h", 0x8C000100, utf32LittleEndian}},
    {"UTF-32 big-endian", "\0\0\xFE\xFF\0\1\xF6\0"sv, {"😀", 0x8C000100, utf32BigEndian}},
    {"UTF-32 mark alone", "\xFF\xFE\0\0"sv, {"", 0x8C000100, utf32LittleEndian}},
};

void check(const MarkRow& row) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(coding().detect(std::string(row.data)), row.expected);
    EXPECT_EQ(coding().encode(row.expected.text, row.expected.encodingRawValue, row.expected.byteOrderMark), row.data);
}

TEST(TextCoding, keepsTheMarkOutOfTheTextAndWritesItBack) {
    for (const MarkRow& row : marks) check(row);
}

struct WrittenMarkRow {
    const char* name;
    std::uint64_t encodingRawValue;
    ByteOrderMark byteOrderMark;
    std::string_view data; // of the text "a"
};

const WrittenMarkRow writtenMarks[] = {
    {"UTF-16 of unknown order", 10, none,
     "\xFF\xFE"
     "a\0"sv},
    {"UTF-16 with a mark of another encoding", 10, utf8,
     "\xFF\xFE"
     "a\0"sv},
    {"UTF-32 of unknown order", 0x8C000100, none, "\xFF\xFE\0\0a\0\0\0"sv},
    {"UTF-32 with a mark of another encoding", 0x8C000100, utf16BigEndian, "\xFF\xFE\0\0a\0\0\0"sv},
    {"fixed order without mark", 0x90000100, none, "\0a"sv},
    {"fixed order with its mark", 0x90000100, utf16BigEndian, "\xFE\xFF\0a"sv},
    {"fixed order with the other mark", 0x90000100, utf16LittleEndian, "\0a"sv},
    {"UTF-32 little-endian with its mark", 0x9C000100, utf32LittleEndian, "\xFF\xFE\0\0a\0\0\0"sv},
    {"UTF-8 with a mark of another encoding", 4, utf16LittleEndian, "a"sv},
    {"an encoding that has no mark", 12, utf8, "a"sv},
};

TEST(TextCoding, writesMarksThatFit) {
    for (const WrittenMarkRow& row : writtenMarks) {
        EXPECT_EQ(coding().encode("a", row.encodingRawValue, row.byteOrderMark), row.data) << row.name;
    }
}

// What cannot be written.

struct RefusedTextRow {
    const char* name;
    std::uint64_t encodingRawValue;
    std::string_view text;
};

const RefusedTextRow refusedTexts[] = {
    {"beyond ASCII", 1, "caf\u00E9"},
    {"beyond Latin-1", 5, "\u20AC"},
    {"no look-alike instead", 12, "\uFF21"},
    {"beyond Shift_JIS", 8, "\u00E9"},
    {"beyond ISO-2022-JP", 21, "\U0001F600"},
    {"not UTF-8", 4, "\xFF"},
    {"not UTF-8, wider target", 10, "\xED\xA0\x80"},
    {"value of no encoding", 0, "a"},
    {"NEXTSTEP", 2, "a"},
    {"Symbol", 6, "a"},
    {"escaped ASCII", 7, "a"},
    {"only the lower half is known", 0x100000004, "a"},
};

TEST(TextCoding, refusesTextThatItCannotWriteExactly) {
    for (const RefusedTextRow& row : refusedTexts) {
        EXPECT_FALSE(coding().encode(row.text, row.encodingRawValue, none).has_value()) << row.name;
    }
}

// Detection without marks.

std::string encoded(std::string_view text, std::uint64_t encodingRawValue) {
    return coding().encode(text, encodingRawValue, none).value();
}

struct DetectionRow {
    const char* name;
    std::string data;
    std::uint64_t encodingRawValue;
};

const auto russian = "Все люди рождаются свободными и равными в своём достоинстве и правах.\n"sv;
const auto polish = "Wszyscy ludzie rodzą się wolni i równi pod względem swej godności.\n"sv;
const auto french = "Tous les êtres humains naissent libres et égaux, là où ils sont nés.\n"sv;
const auto japanese = "すべての人間は、生まれながらにして自由であり、尊厳と権利とについて平等である。\n"sv;
const auto chinese = "人人生而自由，在尊严和权利上一律平等。他们赋有理性和良心。\n"sv;

const DetectionRow detections[] = {
    {"nothing", "", 4},
    {"ASCII is never value 1", "int main() {}\n", 4},
    {"UTF-8", std::string(japanese), 4},
    {"UTF-8 that holds a zero byte", "a\0b\xC3\xA9"s, 4},
    {"UTF-8 with control characters", "\x01\x02\x7F", 4},
    {"noncharacters are UTF-8", "\uFFFE\uFFFF", 4},
    {"escape sequences of ISO-2022-JP", encoded(japanese, 21), 21},
    {"ISO-2022-JP in another writer's spelling", "\x1B$B\x1B$BF|\x1B(B\n", 4},
    {"ISO-2022-JP that never comes to an end", "\x1B$BF", 4},
    {"ISO-2022-JP beside control characters", "\x01\x1B$BF|\x1B(B\n", 4},
    {"a terminal's escape sequences", "\x1B[1mbold\x1B[0m\n", 4},
    {"UTF-16 little-endian", encoded("key = value\n", 0x94000100), 0x94000100},
    {"UTF-16 big-endian", encoded("key = value\n", 0x90000100), 0x90000100},
    {"UTF-16 of ideographs", encoded(chinese, 0x94000100), 0x94000100},
    {"UTF-16 of ideographs, big-endian", encoded(chinese, 0x90000100), 0x90000100},
    {"UTF-16 of Cyrillic", encoded(russian, 0x90000100), 0x90000100},
    {"UTF-16 too short to tell", "a\0b\0c\0"s, 4},
    {"UTF-32 little-endian", encoded(russian, 0x9C000100), 0x9C000100},
    {"UTF-32 big-endian", encoded("key\n", 0x98000100), 0x98000100},
    {"names with zero bytes between them", "./tests/a.cpp\0./tests/b.cpp\0./run\0./README.md\0"s, 4},
    {"words with zero bytes between them", "network\0service\0account\0private\0"s, 4},
    {"windows-1251", encoded(russian, 11), 11},
    {"KOI8-R", encoded(russian, 0x80000A02), 0x80000A02},
    {"IBM866", encoded(russian, 0x8000041B), 0x8000041B},
    {"windows-1250", encoded(polish, 15), 15},
    {"ISO-8859-2", encoded(polish, 9), 9},
    {"windows-1252 rather than ISO-8859-1", encoded(french, 5), 12},
    {"ISO-8859-15", encoded("Un œuf et un bœuf à 5 €, c'est trop cher.\n", 0x8000020F), 0x8000020F},
    {"macintosh", encoded(french, 30), 30},
    {"Shift_JIS", encoded(japanese, 8), 8},
    {"EUC-JP", encoded(japanese, 3), 3},
    {"GB18030", encoded(chinese, 0x80000632), 0x80000632},
    {"a lone accent far into ASCII", std::string(300'000, 'x') + "\ngar\xE7on\n", 12},
    {"a few words far into a line", std::string(300'000, 'x') + encoded(russian, 11), 11},
    {"a copyright sign alone", "Copyright \xA9 2022 The Authors. All rights reserved.\n", 12},
};

void check(const DetectionRow& row) {
    SCOPED_TRACE(row.name);
    const auto detected = coding().detect(std::string(row.data));
    ASSERT_TRUE(detected.has_value());
    EXPECT_EQ(detected->encodingRawValue, row.encodingRawValue);
    EXPECT_EQ(detected->byteOrderMark, none);
    EXPECT_EQ(coding().encode(detected->text, detected->encodingRawValue, none), row.data);
}

TEST(TextCoding, detectsByTheBytesAlone) {
    for (const DetectionRow& row : detections) check(row);
}

TEST(TextCoding, marksOfOtherEncodingsThanUnicodeAreText) {
    const auto detected = coding().detect("\x84\x31\x95\x33\xC8\xCB\xC8\xCB\xC9\xFA\xB6\xF8\xD7\xD4\xD3\xC9\n"s);
    EXPECT_EQ(detected, (DetectedText{"\uFEFF人人生而自由\n", 0x80000632, none}));
}

struct RefusedDataRow {
    const char* name;
    std::string_view data;
};

const RefusedDataRow refusedData[] = {
    {"UTF-16 of odd length", "\xFF\xFEh\0i"sv},
    {"UTF-16 with half a surrogate pair", "\xFF\xFE\x3D\xD8h\0"sv},
    {"UTF-16 that ends within a pair", "\xFE\xFF\xD8\x3D"sv},
    {"UTF-32 of odd length", "\xFF\xFE\0\0h\0"sv},
    {"UTF-32 surrogate", "\xFF\xFE\0\0\x3D\xD8\0\0"sv},
    {"UTF-32 beyond the last character", "\0\0\xFE\xFF\0\x11\0\0"sv},
    {"control bytes beside others beyond ASCII", "caf\xE9 \x01\x02"sv},
    {"delete", "caf\xE9\x7F"sv},
    {"zero bytes beside others beyond ASCII", "caf\xE9\0\0"sv},
    {"gzip", "\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\x03\xCB\x48\xCD\xC9\xC9\x57"sv},
    {"ELF",
     "\x7F"
     "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0\x03\0\x3E\0\x01\0\0\0\x80\xAF"sv},
    {"PNG", "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"sv},
};

TEST(TextCoding, refusesWhatIsNoText) {
    for (const RefusedDataRow& row : refusedData)
        EXPECT_FALSE(coding().detect(std::string(row.data)).has_value()) << row.name;
}

// However a long text is looked through, what it is shows wherever it stands.
TEST(TextCoding, looksAtTheWholeOfALongText) {
    constexpr std::size_t length = 200'000;
    for (std::size_t begin = 0; begin <= 4; ++begin) {
        std::string text(begin, 'a');
        while (text.size() < length) text += "😀";
        const auto detected = coding().detect(text);
        ASSERT_TRUE(detected) << begin;
        ASSERT_EQ(detected->encodingRawValue, StringEncoding::utf8) << begin;
    }
    for (const std::size_t place : {0u, 32'767u, 32'768u, 65'536u, 199'990u}) {
        for (const std::string_view illFormed : {"\xF0\x9F\x98"sv, "\x80"sv, "\xED\xA0\x80"sv}) {
            const std::string text = std::string(place, 'a') + std::string(illFormed) + std::string(10, 'a');
            const auto detected = coding().detect(text);
            ASSERT_FALSE(detected && detected->encodingRawValue == StringEncoding::utf8) << place;
        }
        const std::string mail = std::string(place, 'a') + "\x1B$BF|K\\8l\x1B(B";
        const auto detected = coding().detect(mail);
        ASSERT_TRUE(detected && detected->encodingRawValue == StringEncoding::iso2022JP) << place;
    }
}

// Whatever is accepted comes back byte for byte.

std::string randomBytes(std::mt19937& random) {
    static const std::vector<std::string> pieces = [] {
        std::istringstream words(
            "00 61 42 37 20 0A 0D0A 5C 7E 1B 1B2442 1B2440 1B2842 1B284A 0E 0F 7F 80 81 8E 8F A0 A4 A1 B0 C3 "
            "A9 D8 DC E9 ED EFBBBF F4 FD FE FF FFFE FEFF 0000 6800 0068 84319533 C4E3 82A0");
        std::vector<std::string> all;
        for (std::string word; words >> word;) all.push_back(bytes(word));
        return all;
    }();
    std::string data;
    // Few kinds of pieces at a time, or nothing but noise would ever come about.
    std::vector<std::string> chosen;
    for (int count = 1 + static_cast<int>(random() % 6); count > 0; --count)
        chosen.push_back(pieces[random() % pieces.size()]);
    for (int count = static_cast<int>(random() % 24); count > 0; --count) data += chosen[random() % chosen.size()];
    return data;
}

TEST(TextCoding, neverLosesAByteOfAnythingItAccepts) {
    const auto seed = std::random_device{}();
    RecordProperty("seed", std::to_string(seed));
    std::printf("seed %u\n", seed);
    std::mt19937 random(seed);
    int accepted = 0;
    for (int round = 0; round < 3000; ++round) {
        const std::string data = randomBytes(random);
        const auto detected = coding().detect(std::string(data));
        if (!detected) continue;
        ++accepted;
        ASSERT_EQ(coding().encode(detected->text, detected->encodingRawValue, detected->byteOrderMark), data)
            << testing::PrintToString(data) << " as " << detected->encodingRawValue << ", seed " << seed;
    }
    EXPECT_GT(accepted, 300);
}

} // namespace
