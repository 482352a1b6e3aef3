#include <gtest/gtest.h>

#include <random>
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

// Encoding by the table of an independent implementation.

struct EncodingRow {
    const char* name;
    std::uint64_t encodingRawValue;
    const char* text;
    std::string_view data;
};

const EncodingRow encodings[] = {
    {"US-ASCII", 1, "hello\n", "hello\n"sv},
    {"EUC-JP", 3, "日本語、テキスト\n", "\xC6\xFC\xCB\xDC\xB8\xEC\xA1\xA2\xA5\xC6\xA5\xAD\xA5\xB9\xA5\xC8\n"sv},
    {"UTF-8", 4, "naïve – 日本 😀\n", "na\xC3\xAFve \xE2\x80\x93 \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80\n"sv},
    {"ISO-8859-1", 5, "Crème brûlée\n",
     "Cr\xE8me br\xFBl\xE9"
     "e\n"sv},
    {"Shift_JIS", 8, "表示 C:\\ﾃｷｽﾄ\n", "\x95\\\x8E\xA6 C:\\\xC3\xB7\xBD\xC4\n"sv},
    {"ISO-8859-2", 9, "Zażółć gęślą jaźń\n", "Za\xBF\xF3\xB3\xE6 g\xEA\xB6l\xB1 ja\xBC\xF1\n"sv},
    {"windows-1251", 11, "Съешь ещё «булок»\n", "\xD1\xFA\xE5\xF8\xFC \xE5\xF9\xB8 \xAB\xE1\xF3\xEB\xEE\xEA\xBB\n"sv},
    {"windows-1252", 12, "“Crème” – 5 €\n",
     "\x93"
     "Cr\xE8me\x94 \x96 5 \x80\n"sv},
    {"windows-1253", 13, "Ελληνικά ‘Άλφα’\n", "\xC5\xEB\xEB\xE7\xED\xE9\xEA\xDC \x91\xA2\xEB\xF6\xE1\x92\n"sv},
    {"windows-1254", 14, "İstanbul ığdır – 5 €\n",
     "\xDDstanbul \xFD\xF0"
     "d\xFDr \x96 5 \x80\n"sv},
    {"windows-1250", 15, "Příliš žluťoučký „kůň“\n", "P\xF8\xEDli\x9A \x9Elu\x9Dou\xE8k\xFD \x84k\xF9\xF2\x93\n"sv},
    {"ISO-2022-JP", 21, "日本語 text\n漢字\n", "\x1B$BF|K\\8l\x1B(B text\n\x1B$B4A;z\x1B(B\n"sv},
    {"macintosh", 30, "Señor “Ångström” † π\n", "Se\x96or \xD2\x81ngstr\x9Am\xD3 \xA0 \xB9\n"sv},
    {"x-mac-greek", 0x80000006, "Ελληνικά Ά\n", "\xB6\xEC\xEC\xE8\xEE\xE9\xEB\xC0 \xCD\n"sv},
    {"x-mac-cyrillic", 0x80000007, "Съешь ещё «булок»\n",
     "\x91\xFA\xE5\xF8\xFC \xE5\xF9\xDE \xC7\xE1\xF3\xEB\xEE\xEA\xC8\n"sv},
    {"x-mac-centraleurroman", 0x8000001D, "Příliš žluťoučký\n", "P\xDE\x92li\xE4 \xEClu\xE9ou\x8Bk\xF9\n"sv},
    {"x-mac-turkish", 0x80000023, "İstanbul ığdır şu\n",
     "\xDCstanbul \xDD\xDB"
     "d\xDDr \xDFu\n"sv},
    {"ISO-8859-3", 0x80000203, "Ĉiuĵaŭde ĥoro\n",
     "\xC6iu\xBC"
     "a\xFD"
     "de \xB6oro\n"sv},
    {"ISO-8859-4", 0x80000204, "Šķērsām ģērbtuve\n", "\xA9\xF3\xBArs\xE0m \xBB\xBArbtuve\n"sv},
    {"ISO-8859-5", 0x80000205, "Съешь ещё љубав\n", "\xC1\xEA\xD5\xE8\xEC \xD5\xE9\xF1 \xF9\xE3\xD1\xD0\xD2\n"sv},
    {"ISO-8859-6", 0x80000206, "مرحبا بالعالم\n", "\xE5\xD1\xCD\xC8\xC7 \xC8\xC7\xE4\xD9\xC7\xE4\xE5\n"sv},
    {"ISO-8859-7", 0x80000207, "Ελληνικά Άλφα\n", "\xC5\xEB\xEB\xE7\xED\xE9\xEA\xDC \xB6\xEB\xF6\xE1\n"sv},
    {"ISO-8859-8", 0x80000208, "שלום עולם\n", "\xF9\xEC\xE5\xED \xF2\xE5\xEC\xED\n"sv},
    {"ISO-8859-9", 0x80000209, "İstanbul ığdır şu\n",
     "\xDDstanbul \xFD\xF0"
     "d\xFDr \xFEu\n"sv},
    {"ISO-8859-10", 0x8000020A, "Sámi ŋŧđ Þórður\n", "S\xE1mi \xBF\xBB\xB9 \xDE\xF3r\xF0ur\n"sv},
    {"ISO-8859-11", 0x8000020B, "ภาษาไทย\n", "\xC0\xD2\xC9\xD2\xE4\xB7\xC2\n"sv},
    {"ISO-8859-13", 0x8000020D, "Ąžuolas šviečia ķ\n", "\xC0\xFEuolas \xF0vie\xE8ia \xED\n"sv},
    {"ISO-8859-14", 0x8000020E, "Ŵythnos ŷ Ḃḃ\n", "\xD0ythnos \xFE \xA1\xA2\n"sv},
    {"ISO-8859-15", 0x8000020F, "œuvre à 5 € Žš\n", "\xBDuvre \xE0 5 \xA4 \xB4\xA8\n"sv},
    {"IBM437", 0x80000400, "Crème ╔═╗ α\n", "Cr\x8Ame \xC9\xCD\xBB \xE0\n"sv},
    {"IBM737", 0x80000405, "Ελληνικά Άλφα\n", "\x84\xA2\xA2\x9E\xA4\xA0\xA1\xE1 \xEA\xA2\xAD\x98\n"sv},
    {"IBM775", 0x80000406, "Ąžuolas šviečia\n", "\xB5\xD8uolas \xD5vie\xD1ia\n"sv},
    {"IBM850", 0x80000410, "Crème Ð ╔═╗ ©\n", "Cr\x8Ame \xD1 \xC9\xCD\xBB \xB8\n"sv},
    {"IBM851", 0x80000411, "Ελληνικά Çé\n", "\xA8\xE5\xE5\xE1\xE7\xE3\xE4\x9B \x80\x82\n"sv},
    {"IBM852", 0x80000412, "Příliš žluťoučký\n", "P\xFD\xA1li\xE7 \xA7lu\x9Cou\x9Fk\xEC\n"sv},
    {"IBM855", 0x80000413, "Съешь ещё љубав\n", "\xE4\x9E\xA8\xF5\xED \xA8\xF9\x84 \x90\xE7\xA2\xA0\xEB\n"sv},
    {"IBM857", 0x80000414, "İstanbul ığdır\n",
     "\x98stanbul \x8D\xA7"
     "d\x8Dr\n"sv},
    {"IBM860", 0x80000415, "São ação õ\n", "S\x84o a\x87\x84o \x94\n"sv},
    {"IBM861", 0x80000416, "Þórður ð\n", "\x8D\xA2r\x8Cur \x8C\n"sv},
    {"IBM862", 0x80000417, "שלום ╔═╗\n", "\x99\x8C\x85\x8D \xC9\xCD\xBB\n"sv},
    {"IBM863", 0x80000418, "Forêt À Ê\n", "For\x88t \x8E \x92\n"sv},
    {"IBM864", 0x80000419, "ﺡﻭﻝ\n", "\xAE\xE8\xFB\n"sv},
    {"IBM865", 0x8000041A, "Blåbær ¤ ø\n",
     "Bl\x86"
     "b\x91r \xAF \x9B\n"sv},
    {"IBM866", 0x8000041B, "Съешь ещё ╔═╗\n", "\x91\xEA\xA5\xE8\xEC \xA5\xE9\xF1 \xC9\xCD\xBB\n"sv},
    {"IBM869", 0x8000041C, "Ελληνικά Άλφα\n", "\xA8\xE5\xE5\xE1\xE7\xE3\xE4\x9B \x86\xE5\xF3\xD6\n"sv},
    {"windows-874", 0x8000041D, "ภาษาไทย €\n", "\xC0\xD2\xC9\xD2\xE4\xB7\xC2 \x80\n"sv},
    {"GBK", 0x80000421, "简体中文 鎔\n", "\xBC\xF2\xCC\xE5\xD6\xD0\xCE\xC4 \xE6g\n"sv},
    {"windows-949", 0x80000422, "한국어 똠방각하\n",
     "\xC7\xD1\xB1\xB9\xBE\xEE \x8C"
     "c\xB9\xE6\xB0\xA2\xC7\xCF\n"sv},
    {"windows-950", 0x80000423, "繁體中文\n",
     "\xC1"
     "c\xC5\xE9\xA4\xA4\xA4\xE5\n"sv},
    {"windows-1255", 0x80000505, "שלום עולם €\n", "\xF9\xEC\xE5\xED \xF2\xE5\xEC\xED \x80\n"sv},
    {"windows-1256", 0x80000506, "مرحبا پ €\n", "\xE3\xD1\xCD\xC8\xC7 \x81 \x80\n"sv},
    {"windows-1257", 0x80000507, "Ąžuolas – šviečia\n", "\xC0\xFEuolas \x96 \xF0vie\xE8ia\n"sv},
    {"windows-1258", 0x80000508, "Việt\n", "Vi\xEA\xF2t\n"sv},
    {"gb2312", 0x80000630, "简体中文\n", "\xBC\xF2\xCC\xE5\xD6\xD0\xCE\xC4\n"sv},
    {"GBK, second value", 0x80000631, "简体中文 鎔\n", "\xBC\xF2\xCC\xE5\xD6\xD0\xCE\xC4 \xE6g\n"sv},
    {"GB18030", 0x80000632, "简体 😀 ß\n",
     "\xBC\xF2\xCC\xE5 \x94"
     "9\xFC"
     "6 \x81"
     "0\x89"
     "8\n"sv},
    {"EUC-KR", 0x80000640, "한국어\n", "\xC7\xD1\xB1\xB9\xBE\xEE\n"sv},
    {"ISO-2022-JP-2", 0x80000821, "日本 Ελ 한\n", "\x1B$BF|K\\\x1B(B \x1B$B&%&K\x1B(B \x1B$(CGQ\x1B(B\n"sv},
    {"ISO-2022-JP-1", 0x80000822, "日本 丂\n", "\x1B$BF|K\\\x1B(B \x1B$(D0!\x1B(B\n"sv},
    {"ISO-2022-CN", 0x80000830, "简体\n", "\x1B$)A\x0E<rLe\x0F\n"sv},
    {"ISO-2022-CN-EXT", 0x80000831, "简体\n", "\x1B$)A\x0E<rLe\x0F\n"sv},
    {"ISO-2022-KR", 0x80000840, "한국어 text\n", "\x1B$)C\x0EGQ19>n\x0F text\n"sv},
    {"EUC-CN", 0x80000930, "简体中文\n", "\xBC\xF2\xCC\xE5\xD6\xD0\xCE\xC4\n"sv},
    {"EUC-TW", 0x80000931, "繁體中文\n", "\xF4\xED\xFC\xD5\xC4\xE3\xC5\xC6\n"sv},
    {"windows-949, second value", 0x80000940, "한국어 똠방각하\n",
     "\xC7\xD1\xB1\xB9\xBE\xEE \x8C"
     "c\xB9\xE6\xB0\xA2\xC7\xCF\n"sv},
    {"Shift_JIS, second value", 0x80000A01, "表示 C:\\ﾃｷｽﾄ\n", "\x95\\\x8E\xA6 C:\\\xC3\xB7\xBD\xC4\n"sv},
    {"KOI8-R", 0x80000A02, "Съешь ещё ╔═╗\n", "\xF3\xDF\xC5\xDB\xD8 \xC5\xDD\xA3 \xA5\xA0\xA8\n"sv},
    {"Big5", 0x80000A03, "繁體中文\n",
     "\xC1"
     "c\xC5\xE9\xA4\xA4\xA4\xE5\n"sv},
    {"HZ", 0x80000A05, "简体 ~ text\n", "~{<rLe~} ~~ text\n"sv},
    {"Big5-HKSCS", 0x80000A06, "香港 嘅 㗎\n", "\xAD\xBB\xB4\xE4 \x9D\xEF \x9D\xEE\n"sv},
    {"KOI8-U", 0x80000A08, "Ґанок її є\n", "\xBD\xC1\xCE\xCF\xCB \xA7\xA7 \xA4\n"sv},
    {"UTF-16BE", 0x90000100, "日本 😀\n", "e\xE5g,\x00 \xD8=\xDE\x00\x00\n"sv},
    {"UTF-16LE", 0x94000100, "日本 😀\n",
     "\xE5"
     "e,g \x00=\xD8\x00\xDE\n\x00"sv},
    {"UTF-32BE", 0x98000100, "日本 😀\n",
     "\x00\x00"
     "e\xE5\x00\x00g,\x00\x00\x00 \x00\x01\xF6\x00\x00\x00\x00\n"sv},
    {"UTF-32LE", 0x9C000100, "日本 😀\n",
     "\xE5"
     "e\x00\x00,g\x00\x00 \x00\x00\x00\x00\xF6\x01\x00\n\x00\x00\x00"sv},
};

void check(const EncodingRow& row) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(coding().encode(row.text, row.encodingRawValue, none), row.data);
    const auto converter = Converter::named(converterName(row.encodingRawValue).value());
    const auto decoded = converter.value().decode(row.data, EndOfBytes::complete);
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

// None of these is UTF-8; some encoding may read them, but none may lose a byte.
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

TEST(TextCoding, illFormedUTF8IsNeverTakenForUTF8) {
    for (const auto data : {"\xC0\xAF"sv, "\xE0\x80\xAF"sv, "\xED\xA0\x80"sv, "\xF4\x90\x80\x80"sv,
                            "\xF8\x88\x80\x80\x80"sv, "\xC3"sv, "\xEF\xBB\xBF\xC3"sv, "\x80"sv, "\x82\xA0\x82"sv}) {
        const auto detected = coding().detect(std::string(data));
        if (!detected) continue;
        EXPECT_NE(detected->encodingRawValue, 4U) << testing::PrintToString(data);
        EXPECT_EQ(coding().encode(detected->text, detected->encodingRawValue, detected->byteOrderMark), data);
    }
}

// Whatever is accepted comes back byte for byte.

std::string randomBytes(std::mt19937& random) {
    static const std::vector<std::string_view> pieces = {"\0"sv,     "a",
                                                         "B",        "7",
                                                         " ",        "\n",
                                                         "\r\n",     "\\",
                                                         "~",        "\x1B",
                                                         "\x1B$B",   "\x1B$@",
                                                         "\x1B(B",   "\x1B(J",
                                                         "\x0E",     "\x0F",
                                                         "\x7F",     "\x80",
                                                         "\x81",     "\x8E",
                                                         "\x8F",     "\xA0",
                                                         "\xA4",     "\xA1",
                                                         "\xB0",     "\xC3",
                                                         "\xA9",     "\xD8",
                                                         "\xDC",     "\xE9",
                                                         "\xED",     "\xEF\xBB\xBF",
                                                         "\xF4",     "\xFD",
                                                         "\xFE",     "\xFF",
                                                         "\xFF\xFE", "\xFE\xFF",
                                                         "\0\0"sv,   "h\0"sv,
                                                         "\0h"sv,    "\x84\x31\x95\x33",
                                                         "\xC4\xE3", "\x82\xA0"};
    std::string data;
    // Few kinds of pieces at a time, or nothing but noise would ever come about.
    std::vector<std::string_view> chosen;
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
