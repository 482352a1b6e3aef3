// Answers every path with the folder's entries, sorted as a file browser does: a handle, path, parent and name of each.
#include <dirent.h>
#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include "Limit.h"

namespace {

struct Entry {
    std::string_view name;
    std::string_view key;
    std::array<unsigned char, 16> handle{};
    unsigned handleSize = 0;
    bool isDirectory = false;
};

// Bytes that stay where they are.
class Arena {
public:
    char* room(std::size_t size) {
        if (static_cast<std::size_t>(end - next) < size) {
            blocks.push_back(std::make_unique_for_overwrite<char[]>(blockSize));
            next = blocks.back().get();
            end = next + blockSize;
        }
        return next;
    }
    std::string_view take(std::size_t size) {
        next += size;
        return {next - size, size};
    }

private:
    static constexpr std::size_t blockSize = 1 << 20;
    std::vector<std::unique_ptr<char[]>> blocks{};
    char* next = nullptr;
    char* end = nullptr;
};

void readHandle(int directory, const char* name, Entry& entry) {
    alignas(file_handle) std::array<char, sizeof(file_handle) + MAX_HANDLE_SZ> room;
    auto* handle = reinterpret_cast<file_handle*>(room.data());
    handle->handle_bytes = MAX_HANDLE_SZ;
    int mountID = 0;
    require(::name_to_handle_at(directory, name, handle, &mountID, 0) == 0, "name_to_handle_at");
    entry.handleSize = std::min<unsigned>(handle->handle_bytes, static_cast<unsigned>(entry.handle.size()));
    std::memcpy(entry.handle.data(), room.data() + sizeof(file_handle), entry.handleSize);
}

std::string_view collationKey(UCollator* collator, std::string_view name, Arena& arena) {
    std::array<char16_t, 256> wide;
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(wide.data(), static_cast<std::int32_t>(wide.size()), &length, name.data(),
                  static_cast<std::int32_t>(name.size()), &error);
    constexpr std::size_t longestKey = 4096;
    char* room = arena.room(longestKey);
    const std::int32_t size =
        ucol_getSortKey(collator, wide.data(), length, reinterpret_cast<std::uint8_t*>(room), longestKey);
    return arena.take(static_cast<std::size_t>(size));
}

std::vector<Entry> entriesOf(int directory, UCollator* collator, Arena& arena) {
    std::vector<Entry> entries;
    alignas(dirent64) std::array<char, 32 * 1024> buffer;
    for (ssize_t filled = 0; (filled = ::getdents64(directory, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t position = 0; position < filled;) {
            const auto* found = reinterpret_cast<const dirent64*>(buffer.data() + position);
            position += found->d_reclen;
            const std::string_view name = found->d_name;
            if (name == "." || name == "..") continue;
            Entry& entry = entries.emplace_back();
            std::memcpy(arena.room(name.size() + windowSize), name.data(), name.size());
            entry.name = arena.take(name.size() + windowSize).substr(0, name.size());
            entry.isDirectory = found->d_type == DT_DIR;
            readHandle(directory, found->d_name, entry);
            entry.key = collationKey(collator, entry.name, arena);
        }
    }
    return entries;
}

char* put(std::string_view text, char* end) {
    std::memcpy(end, text.data(), text.size());
    return end + text.size();
}

char* putBase64(const unsigned char* bytes, unsigned size, char* end) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (unsigned i = 0; i < size; i += 3) {
        unsigned group = 0;
        for (unsigned j = 0; j < 3; ++j) group = group << 8 | (i + j < size ? bytes[i + j] : 0U);
        for (unsigned j = 0; j < 4; ++j) *end++ = i + j > size ? '=' : alphabet[group >> (18 - 6 * j) & 63];
    }
    return end;
}

char* putEntry(const Entry& entry, std::string_view folder, char* end) {
    end = put("{\"nodeID\":\"data:", end);
    end = putBase64(entry.handle.data(), entry.handleSize, end);
    end = put("\",\"path\":\"", end);
    end = put(folder, end);
    *end++ = '/';
    end = escaped(entry.name, end);
    end = put("\",\"parentPath\":\"", end);
    end = put(folder, end);
    end = put("\",\"name\":\"", end);
    end = escaped(entry.name, end);
    end = put(entry.isDirectory ? "\",\"isDirectory\":true" : "\",\"isDirectory\":false", end);
    return put(",\"isRoot\":false}", end);
}

} // namespace

int main() {
    enlargePipes();
    UErrorCode error = U_ZERO_ERROR;
    UCollator* collator = ucol_open("", &error);
    ucol_setAttribute(collator, UCOL_NUMERIC_COLLATION, UCOL_ON, &error);
    ucol_setAttribute(collator, UCOL_STRENGTH, UCOL_SECONDARY, &error);
    require(U_SUCCESS(error), "collator");

    std::string path;
    while (readLine(path)) {
        Arena arena;
        const int directory = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        require(directory >= 0, "open");
        std::vector<Entry> entries = entriesOf(directory, collator, arena);
        ::close(directory);
        std::vector<std::uint32_t> order(entries.size());
        std::iota(order.begin(), order.end(), 0U);
        std::ranges::sort(order, [&](std::uint32_t left, std::uint32_t right) {
            if (entries[left].isDirectory != entries[right].isDirectory) return entries[left].isDirectory;
            return entries[left].key < entries[right].key;
        });

        std::size_t size = 4 * windowSize;
        for (const Entry& entry : entries) size += 4 * entry.name.size() + 2 * path.size() + 160;
        const auto answer = std::make_unique_for_overwrite<char[]>(size);
        char* end = answer.get();
        *end++ = '[';
        for (const std::uint32_t position : order) {
            end = putEntry(entries[position], path, end);
            *end++ = ',';
        }
        end[-1] = ']';
        *end++ = '\n';
        writeAll(STDOUT_FILENO, {answer.get(), end});
    }
}
