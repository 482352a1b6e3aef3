#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "shared/DecodingError.h"
#include "shared/JSONLayout.h"
#include "shared/RecordFields.h"

// Records to JSON and back, for the records that RecordCoding.cpp lists. Every record goes both ways.

// A record of which one text is left out: what stands before it, with the opening quote, and what stands behind.
struct JSONAroundText {
    std::string before{};
    std::string behind{};
};

template <WireRecord Record>
struct RecordCoding {
    static std::optional<std::string> encode(const Record& record, JSONLayout layout);
    static std::optional<JSONAroundText> encodeAroundText(const Record& record, const std::string& text);
    static Record decode(std::string_view json, std::size_t readableSize);
};

// Compact: one line without a line feed, keys in the order of the field list. Pretty: keys in byte order. Absent when
// the record holds what JSON cannot say: a number that is not finite, or text that is not UTF-8.
template <WireRecord Record>
std::optional<std::string> encodeRecord(const Record& record, JSONLayout layout = JSONLayout::compact) {
    return RecordCoding<Record>::encode(record, layout);
}

// For a long text, which the caller escapes himself. It is one of the record's own members, and is not looked at.
template <WireRecord Record>
std::optional<JSONAroundText> encodeAroundText(const Record& record, const std::string& text) {
    return RecordCoding<Record>::encodeAroundText(record, text);
}

// Throws a DecodingError, or std::bad_alloc for a message that memory cannot hold.
template <WireRecord Record>
Record decodeRecord(std::string_view json) {
    return RecordCoding<Record>::decode(json, json.size());
}

// How many bytes behind a message must be readable for it to be decoded without being copied; their values are free.
inline constexpr std::size_t decodingPadding = 64;

// As above, for a message in a buffer of which readableSize bytes from json.data() on may be read.
template <WireRecord Record>
Record decodeRecord(std::string_view json, std::size_t readableSize) {
    return RecordCoding<Record>::decode(json, readableSize);
}
