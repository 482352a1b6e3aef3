#pragma once

#include <unicode/ucnv.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

enum class EndOfBytes { complete, mayCutACharacter };

// A strict converter between bytes of one encoding and UTF-16: whatever has no exact counterpart on the other side is
// refused. A fresh start at every call.
class Converter {
public:
    // Absent when the converter is unknown or its table is not installed.
    static std::optional<Converter> named(const char* name);

    std::optional<std::u16string> decode(std::string_view bytes, EndOfBytes end) const;
    std::optional<std::string> encode(std::u16string_view text) const;

private:
    struct Close {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };

    explicit Converter(UConverter* opened) : converter(opened) {}

    std::unique_ptr<UConverter, Close> converter;
};

// Absent when the text is not well-formed, or longer than 700 million units.
std::optional<std::u16string> utf16FromUTF8(std::string_view text);
std::optional<std::string> utf8FromUTF16(std::u16string_view text);
