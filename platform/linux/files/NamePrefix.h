#pragma once

#include <cstddef>
#include <string_view>

// The first bytes of a name, at most `limit` of them, without cutting a UTF-8 character in two. A name that is not
// UTF-8 is cut at most three bytes shorter than it might be.
inline std::string_view namePrefix(std::string_view name, std::size_t limit) {
    if (name.size() <= limit) return name;
    const auto isContinuation = [&](std::size_t index) {
        return (static_cast<unsigned char>(name[index]) & 0xC0) == 0x80;
    };
    std::size_t end = limit;
    while (end > 0 && limit - end < 3 && isContinuation(end)) --end;
    return name.substr(0, end);
}
