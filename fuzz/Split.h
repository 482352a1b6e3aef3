#pragma once

#include <string>
#include <string_view>
#include <vector>

// The parts of the bytes between the separators, one more than there are of these.
inline std::vector<std::string> split(std::string_view bytes, char separator) {
    std::vector<std::string> parts(1);
    for (const char byte : bytes) {
        if (byte == separator)
            parts.emplace_back();
        else
            parts.back() += byte;
    }
    return parts;
}
