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

// Both need 16 readable bytes behind the text and room for what they write, and return its end.

inline char* escaped(std::string_view text, char* end) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::size_t position = 0;
    while (position < text.size()) {
        const ByteBlock block = loadBlock(text.data() + position);
        std::memcpy(end, &block, byteBlockSize);
        const std::uint64_t bits = bitsOf((block < 0x20) | (block == '"') | (block == '\\'));
        const std::size_t plain = bits == 0 ? byteBlockSize : static_cast<std::size_t>(std::countr_zero(bits));
        end += plain;
        position += plain;
        if (bits == 0 || position >= text.size()) continue;
        const char byte = text[position++];
        *end++ = '\\';
        if (byte == '\n') {
            *end++ = 'n';
        } else if (byte == '\t') {
            *end++ = 't';
        } else if (byte == '"' || byte == '\\') {
            *end++ = byte;
        } else {
            const auto value = static_cast<unsigned char>(byte);
            end = static_cast<char*>(std::memcpy(end, "u00", 3)) + 3;
            *end++ = digits[value >> 4];
            *end++ = digits[value & 15];
        }
    }
    return end - (position - text.size());
}

// Up to the closing quote. Knows the escapes that the driver writes.
inline char* unescaped(const char* text, char* end) {
    for (;;) {
        const ByteBlock block = loadBlock(text);
        std::memcpy(end, &block, byteBlockSize);
        const std::uint64_t bits = bitsOf((block == '"') | (block == '\\'));
        const std::size_t plain = bits == 0 ? byteBlockSize : static_cast<std::size_t>(std::countr_zero(bits));
        end += plain;
        text += plain;
        if (bits == 0) continue;
        if (*text == '"') return end;
        *end++ = text[1] == 'n' ? '\n' : text[1] == 't' ? '\t' : text[1];
        text += 2;
    }
}
