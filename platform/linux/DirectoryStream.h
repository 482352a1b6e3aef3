#pragma once

#include <dirent.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/linux/files/SystemCall.h"

// Reads the entries of an open directory, "." and ".." left out. The descriptor stays the caller's and must be fresh:
// reading goes on where it stands.
class DirectoryStream {
public:
    explicit DirectoryStream(int openDirectory) : directory(openDirectory) {}

    // The next entry, valid until the next call; null at the end. A failure is thrown as std::system_error.
    const dirent64* next() {
        while (true) {
            if (position == filled) fill();
            if (filled == 0) return nullptr;
            const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + position);
            position += entry->d_reclen;
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) return entry;
        }
    }

private:
    // A directory that was removed while it is open has no entries, of which the system makes an error.
    void fill() {
        const ssize_t size = ::getdents64(directory, buffer.data(), buffer.size());
        filled = static_cast<std::size_t>(size < 0 && errno == ENOENT ? 0 : checked(size));
        position = 0;
    }

    int directory;
    std::size_t position = 0;
    std::size_t filled = 0;
    alignas(dirent64) std::array<char, 32 * 1024> buffer;
};
