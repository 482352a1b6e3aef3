#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

// Short byte strings in large numbers, laid side by side: each costs its bytes and one or two for its length. The room
// of a removed string is given to the next one of the same size. Nothing that was added ever moves.
class ByteArena {
public:
    using Reference = std::uint32_t;

    static constexpr std::size_t longest = 0x7FFF;

    Reference add(std::string_view bytes); // at most `longest` bytes
    std::string_view view(Reference reference) const {
        const char* place = at(reference);
        std::size_t length = static_cast<unsigned char>(*place++);
        if (length >= 0x80) length = (length & 0x7F) << 8 | static_cast<unsigned char>(*place++);
        return {place, length};
    }
    void remove(Reference reference);

private:
    static constexpr std::size_t blockSize = 64 * 1024;

    char* at(Reference reference) const { return blocks[reference / blockSize].get() + reference % blockSize; }
    Reference room(std::size_t size);

    std::vector<std::unique_ptr<char[]>> blocks{};
    std::size_t filled = blockSize; // of the last block
    std::vector<Reference> removedBySize{};
};
