#include "platform/linux/text/Converter.h"

#include <unicode/ustring.h>

#include <cstdint>
#include <limits>
#include <new>

namespace {

// ICU's functions on whole strings count in 32 bits, and a character may take three times its bytes on the other side.
constexpr std::size_t longestText = std::numeric_limits<std::int32_t>::max() / 3;

} // namespace

std::optional<Converter> Converter::named(const char* name) {
    UErrorCode error = U_ZERO_ERROR;
    Converter result{ucnv_open(name, &error)};
    if (error == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
    if (U_FAILURE(error)) return std::nullopt;
    UConverter* converter = result.converter.get();
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFallback(converter, false);
    if (U_FAILURE(error)) return std::nullopt;
    return result;
}

std::optional<std::u16string> Converter::decode(std::string_view bytes, EndOfBytes end) const {
    ucnv_resetToUnicode(converter.get());
    std::u16string text(bytes.size() + 16, u'\0');
    const char* source = bytes.data();
    std::size_t length = 0;
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    while (error == U_BUFFER_OVERFLOW_ERROR) {
        if (length == text.size()) text.resize(text.size() * 2);
        char16_t* target = text.data() + length;
        error = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &target, text.data() + text.size(), &source, bytes.data() + bytes.size(),
                       nullptr, end == EndOfBytes::complete, &error);
        length = static_cast<std::size_t>(target - text.data());
    }
    if (U_FAILURE(error)) return std::nullopt;
    text.resize(length);
    return text;
}

std::optional<std::string> Converter::encode(std::u16string_view text) const {
    ucnv_resetFromUnicode(converter.get());
    std::string bytes(text.size() * 2 + 16, '\0');
    const char16_t* source = text.data();
    std::size_t length = 0;
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    while (error == U_BUFFER_OVERFLOW_ERROR) {
        if (length == bytes.size()) bytes.resize(bytes.size() * 2);
        char* target = bytes.data() + length;
        error = U_ZERO_ERROR;
        ucnv_fromUnicode(converter.get(), &target, bytes.data() + bytes.size(), &source, text.data() + text.size(),
                         nullptr, true, &error);
        length = static_cast<std::size_t>(target - bytes.data());
    }
    if (U_FAILURE(error)) return std::nullopt;
    bytes.resize(length);
    return bytes;
}

std::optional<std::u16string> utf16FromUTF8(std::string_view text) {
    if (text.size() > longestText) return std::nullopt;
    std::u16string result(text.size(), u'\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(result.data(), static_cast<std::int32_t>(result.size()), &length, text.data(),
                  static_cast<std::int32_t>(text.size()), &error);
    if (U_FAILURE(error)) return std::nullopt;
    result.resize(static_cast<std::size_t>(length));
    return result;
}

std::optional<std::string> utf8FromUTF16(std::u16string_view text) {
    if (text.size() > longestText) return std::nullopt;
    std::string result(text.size() * 3, '\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8(result.data(), static_cast<std::int32_t>(result.size()), &length, text.data(),
                static_cast<std::int32_t>(text.size()), &error);
    if (U_FAILURE(error)) return std::nullopt;
    result.resize(static_cast<std::size_t>(length));
    return result;
}
