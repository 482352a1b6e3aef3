#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "shared/ByteBlock.h"

// What the limit programs have in common. Each does the system calls that its job cannot do without, and no more: it
// checks little, and fails by ending.

inline void require(bool condition, const char* what) {
    if (condition) return;
    std::perror(what);
    std::_Exit(EXIT_FAILURE);
}

inline void enlargePipes() {
    char digits[16] = {};
    const int setting = ::open("/proc/sys/fs/pipe-max-size", O_RDONLY | O_CLOEXEC);
    require(::read(setting, digits, sizeof digits - 1) > 0, "pipe-max-size");
    ::close(setting);
    for (const int pipe : {STDIN_FILENO, STDOUT_FILENO}) ::fcntl(pipe, F_SETPIPE_SZ, std::atoi(digits));
}

// Reads one line, of which the client sends one at a time. False at the end of input.
inline bool readLine(std::string& line) {
    static std::string buffer(std::size_t{1} << 24, '\0');
    std::size_t filled = 0;
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, buffer.data() + filled, buffer.size() - filled);
        if (count <= 0) return false;
        filled += static_cast<std::size_t>(count);
        if (buffer[filled - 1] == '\n') break;
    }
    line.assign(buffer.data(), filled - 1);
    return true;
}

inline void writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        require(count > 0, "write");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

// Both look at 64 bytes at a time, the width of a mask, and need as many readable bytes behind the text and behind what
// they write. They return the end of that.

inline constexpr std::size_t windowSize = 64;

struct Escape {
    std::array<char, 8> characters{};
    std::size_t length = 0;
};

inline constexpr auto escapes = [] {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<Escape, 128> table{};
    for (std::size_t byte = 0; byte < 0x20; ++byte) {
        table[byte] = {{'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15]}, 6};
    }
    for (const auto& [byte, letter] : {std::pair{'\n', 'n'}, {'\t', 't'}, {'\r', 'r'}, {'"', '"'}, {'\\', '\\'}}) {
        table[static_cast<unsigned char>(byte)] = {{'\\', letter}, 2};
    }
    return table;
}();

template <typename Comparison>
std::uint64_t maskOfWindow(const char* window, Comparison comparison) {
    std::uint64_t mask = 0;
    for (std::size_t offset = 0; offset < windowSize; offset += byteBlockSize) {
        mask |= bitsOf(comparison(loadBlock(window + offset))) << offset;
    }
    return mask;
}

inline char* escaped(std::string_view text, char* end) {
    while (!text.empty()) {
        const std::size_t length = text.size() < windowSize ? text.size() : windowSize;
        std::uint64_t mask = maskOfWindow(
            text.data(), [](ByteBlock block) { return (block < 0x20) | (block == '"') | (block == '\\'); });
        if (length < windowSize) mask &= ~(~std::uint64_t{0} << length);
        std::size_t position = 0;
        for (; mask != 0; mask &= mask - 1) {
            const auto marked = static_cast<std::size_t>(std::countr_zero(mask));
            std::memcpy(end, text.data() + position, windowSize);
            end += marked - position;
            const Escape& escape = escapes[static_cast<unsigned char>(text[marked])];
            std::memcpy(end, escape.characters.data(), escape.characters.size());
            end += escape.length;
            position = marked + 1;
        }
        std::memcpy(end, text.data() + position, windowSize);
        end += length - position;
        text.remove_prefix(length);
    }
    return end;
}

// Up to the closing quote. Knows the escapes that the driver writes.
inline char* unescaped(const char* text, char* end) {
    for (;;) {
        std::uint64_t mask = maskOfWindow(text, [](ByteBlock block) { return (block == '"') | (block == '\\'); });
        std::size_t position = 0;
        while (mask != 0) {
            const auto marked = static_cast<std::size_t>(std::countr_zero(mask));
            std::memcpy(end, text + position, windowSize);
            end += marked - position;
            if (text[marked] == '"') return end;
            const char letter = text[marked + 1];
            *end++ = letter == 'n' ? '\n' : letter == 't' ? '\t' : letter;
            position = marked + 2;
            mask = position < windowSize ? mask & ~std::uint64_t{0} << position : 0;
        }
        if (position < windowSize) {
            std::memcpy(end, text + position, windowSize);
            end += windowSize - position;
            position = windowSize;
        }
        text += position;
    }
}
