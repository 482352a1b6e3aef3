#include "identity/Base64.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t byteAt(std::string_view bytes, std::size_t position) {
    return position < bytes.size() ? static_cast<unsigned char>(bytes[position]) : 0;
}

} // namespace

void appendBase64(std::string& text, std::string_view bytes) {
    std::size_t written = text.size();
    text.resize(written + (bytes.size() + 2) / 3 * 4);
    for (std::size_t read = 0; read < bytes.size(); read += 3) {
        const std::uint32_t group = byteAt(bytes, read) << 16 | byteAt(bytes, read + 1) << 8 | byteAt(bytes, read + 2);
        text[written++] = alphabet[group >> 18];
        text[written++] = alphabet[group >> 12 & 63];
        text[written++] = read + 1 < bytes.size() ? alphabet[group >> 6 & 63] : '=';
        text[written++] = read + 2 < bytes.size() ? alphabet[group & 63] : '=';
    }
}
