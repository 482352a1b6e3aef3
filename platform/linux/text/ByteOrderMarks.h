#pragma once

#include <cstdint>
#include <string_view>

#include "platform/TextCoding.h"

// The byte order marks, and what each says of the bytes behind it.

struct MarkedEncoding {
    ByteOrderMark byteOrderMark{};
    std::string_view bytes{};         // the mark itself
    std::uint64_t encodingRawValue{}; // of the whole file
    std::uint64_t bareEncoding{};     // of the text behind the mark, its byte order settled
};

// The mark with which the data begins; ByteOrderMark::none and no bytes when there is none.
MarkedEncoding leadingMark(std::string_view data);

// How a text of this encoding is written when this mark is asked for. A mark that does not fit the encoding is left
// out; an encoding that needs a mark to tell its byte order gets one in any case, little-endian unless asked otherwise.
MarkedEncoding markForEncoding(std::uint64_t encodingRawValue, ByteOrderMark byteOrderMark);
