#include "platform/linux/text/StringEncodings.h"

#include <algorithm>
#include <iterator>

namespace {

struct Row {
    std::uint64_t encodingRawValue;
    const char* converterName;
};

// In ascending order. Shift_JIS is the variant in which a backslash stays a backslash.
constexpr Row rows[] = {
    {1, "US-ASCII"},
    {3, "EUC-JP"},
    {4, "UTF-8"},
    {5, "ISO-8859-1"},
    {8, "ibm-943_P15A-2003"},
    {9, "ISO-8859-2"},
    {11, "windows-1251"},
    {12, "windows-1252"},
    {13, "windows-1253"},
    {14, "windows-1254"},
    {15, "windows-1250"},
    {21, "ISO-2022-JP"},
    {30, "macintosh"},
    {0x80000006, "x-mac-greek"},
    {0x80000007, "x-mac-cyrillic"},
    {0x8000001D, "x-mac-centraleurroman"},
    {0x80000023, "x-mac-turkish"},
    {0x80000203, "ISO-8859-3"},
    {0x80000204, "ISO-8859-4"},
    {0x80000205, "ISO-8859-5"},
    {0x80000206, "ISO-8859-6"},
    {0x80000207, "ISO-8859-7"},
    {0x80000208, "ISO-8859-8"},
    {0x80000209, "ISO-8859-9"},
    {0x8000020A, "ISO-8859-10"},
    {0x8000020B, "ISO-8859-11"},
    {0x8000020D, "ISO-8859-13"},
    {0x8000020E, "ISO-8859-14"},
    {0x8000020F, "ISO-8859-15"},
    {0x80000400, "IBM437"},
    {0x80000405, "IBM737"},
    {0x80000406, "IBM775"},
    {0x80000410, "IBM850"},
    {0x80000411, "IBM851"},
    {0x80000412, "IBM852"},
    {0x80000413, "IBM855"},
    {0x80000414, "IBM857"},
    {0x80000415, "IBM860"},
    {0x80000416, "IBM861"},
    {0x80000417, "IBM862"},
    {0x80000418, "IBM863"},
    {0x80000419, "IBM864"},
    {0x8000041A, "IBM865"},
    {0x8000041B, "IBM866"},
    {0x8000041C, "IBM869"},
    {0x8000041D, "windows-874"},
    {0x80000421, "GBK"},
    {0x80000422, "windows-949"},
    {0x80000423, "windows-950"},
    {0x80000505, "windows-1255"},
    {0x80000506, "windows-1256"},
    {0x80000507, "windows-1257"},
    {0x80000508, "windows-1258"},
    {0x80000630, "gb2312"},
    {0x80000631, "GBK"},
    {0x80000632, "GB18030"},
    {0x80000640, "EUC-KR"},
    {0x80000821, "ISO-2022-JP-2"},
    {0x80000822, "ISO-2022-JP-1"},
    {0x80000830, "ISO-2022-CN"},
    {0x80000831, "ISO-2022-CN-EXT"},
    {0x80000840, "ISO-2022-KR"},
    {0x80000930, "EUC-CN"},
    {0x80000931, "EUC-TW"},
    {0x80000940, "windows-949"},
    {0x80000A01, "ibm-943_P15A-2003"},
    {0x80000A02, "KOI8-R"},
    {0x80000A03, "Big5"},
    {0x80000A05, "HZ"},
    {0x80000A06, "Big5-HKSCS"},
    {0x80000A08, "KOI8-U"},
    {0x90000100, "UTF-16BE"},
    {0x94000100, "UTF-16LE"},
    {0x98000100, "UTF-32BE"},
    {0x9C000100, "UTF-32LE"},
};

} // namespace

std::optional<const char*> converterName(std::uint64_t encodingRawValue) {
    const auto row = std::ranges::lower_bound(rows, encodingRawValue, {}, &Row::encodingRawValue);
    if (row == std::end(rows) || row->encodingRawValue != encodingRawValue) return std::nullopt;
    return row->converterName;
}
