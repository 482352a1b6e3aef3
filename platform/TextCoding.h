#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The seam to the system's text encodings. Text is UTF-8 inside the program; an encoding is known by the numeric value
// that travels as encodingRawValue. Detection and encoding never lose a character: what they accept comes back byte for
// byte. Members may be called on any queue.

enum class ByteOrderMark { none, utf8, utf16LittleEndian, utf16BigEndian, utf32LittleEndian, utf32BigEndian };

struct DetectedText {
    std::string text{}; // without the byte order mark
    std::uint64_t encodingRawValue{};
    ByteOrderMark byteOrderMark{};

    bool operator==(const DetectedText&) const = default;
};

class TextCoding {
public:
    virtual ~TextCoding() = default;

    // The encoding of the whole data and its text; absent when no encoding fits, as for compressed or executable bytes.
    // encode() of the answer gives the data again. By value, because nearly always the data is the text.
    virtual std::optional<DetectedText> detect(std::string data) const = 0;

    // Absent when the encoding is unknown or cannot represent the text (well-formed UTF-8).
    virtual std::optional<std::string> encode(std::string_view text, std::uint64_t encodingRawValue,
                                              ByteOrderMark byteOrderMark) const = 0;
};
