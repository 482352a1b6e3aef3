#include "identity/Base64.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Three bytes, of which the last two may be missing, as four characters.
void putGroup(char* to, std::string_view bytes) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        group = group << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    }
    to[0] = alphabet[group >> 18];
    to[1] = alphabet[group >> 12 & 63];
    to[2] = bytes.size() > 1 ? alphabet[group >> 6 & 63] : '=';
    to[3] = bytes.size() > 2 ? alphabet[group & 63] : '=';
}

} // namespace

void appendBase64(std::string& text, std::string_view bytes) {
    const std::size_t begin = text.size();
    text.resize(begin + (bytes.size() + 2) / 3 * 4);
    char* to = text.data() + begin;
    // Of whole groups the compiler knows the size.
    for (; bytes.size() >= 3; bytes.remove_prefix(3), to += 4) putGroup(to, {bytes.data(), 3});
    if (!bytes.empty()) putGroup(to, bytes);
}
