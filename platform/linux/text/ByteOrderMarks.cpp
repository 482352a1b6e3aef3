#include "platform/linux/text/ByteOrderMarks.h"

#include "platform/linux/text/StringEncodings.h"

namespace {

using namespace std::string_view_literals;

// The marks of four bytes come first: one of them begins like a mark of two. Within an encoding little-endian is first,
// the byte order of whoever does not ask for one.
constexpr MarkedEncoding marks[] = {
    {ByteOrderMark::utf32LittleEndian, "\xFF\xFE\0\0"sv, StringEncoding::utf32, StringEncoding::utf32LittleEndian},
    {ByteOrderMark::utf32BigEndian, "\0\0\xFE\xFF"sv, StringEncoding::utf32, StringEncoding::utf32BigEndian},
    {ByteOrderMark::utf16LittleEndian, "\xFF\xFE"sv, StringEncoding::utf16, StringEncoding::utf16LittleEndian},
    {ByteOrderMark::utf16BigEndian, "\xFE\xFF"sv, StringEncoding::utf16, StringEncoding::utf16BigEndian},
    {ByteOrderMark::utf8, "\xEF\xBB\xBF"sv, StringEncoding::utf8, StringEncoding::utf8},
};

} // namespace

MarkedEncoding leadingMark(std::string_view data) {
    for (const MarkedEncoding& mark : marks) {
        if (data.starts_with(mark.bytes)) return mark;
    }
    return {};
}

MarkedEncoding markForEncoding(std::uint64_t encodingRawValue, ByteOrderMark byteOrderMark) {
    for (const MarkedEncoding& mark : marks) {
        const bool fits = encodingRawValue == mark.encodingRawValue || encodingRawValue == mark.bareEncoding;
        if (fits && byteOrderMark == mark.byteOrderMark) return mark;
    }
    for (const MarkedEncoding& mark : marks) {
        const bool needsMark = mark.encodingRawValue != StringEncoding::utf8;
        if (needsMark && encodingRawValue == mark.encodingRawValue) return mark;
    }
    return {.encodingRawValue = encodingRawValue, .bareEncoding = encodingRawValue};
}
