#include "identity/ByteArena.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

constexpr ByteArena::Reference none = std::numeric_limits<ByteArena::Reference>::max();

// A string of up to 127 bytes has its length in one byte, a longer one in two, marked by the top bit of the first.
std::size_t lengthSize(std::size_t length) {
    return length < 0x80 ? 1 : 2;
}

// Removed strings form lists, and the link to the next stands where the bytes were.
std::size_t sizeInArena(std::size_t length) {
    return std::max(lengthSize(length) + length, sizeof(none));
}

} // namespace

ByteArena::Reference ByteArena::add(std::string_view bytes) {
    if (bytes.size() > longest) throw std::length_error("too long a name");
    const Reference reference = room(sizeInArena(bytes.size()));
    char* place = at(reference);
    if (lengthSize(bytes.size()) == 2) *place++ = static_cast<char>(0x80 | bytes.size() >> 8);
    *place++ = static_cast<char>(bytes.size());
    if (!bytes.empty()) std::memcpy(place, bytes.data(), bytes.size());
    return reference;
}

void ByteArena::remove(Reference reference) {
    const std::size_t size = sizeInArena(view(reference).size());
    if (size >= removedBySize.size()) removedBySize.resize(size + 1, none);
    std::memcpy(at(reference), &removedBySize[size], sizeof none);
    removedBySize[size] = reference;
}

ByteArena::Reference ByteArena::room(std::size_t size) {
    if (size < removedBySize.size() && removedBySize[size] != none) {
        const Reference reference = removedBySize[size];
        std::memcpy(&removedBySize[size], at(reference), sizeof none);
        return reference;
    }
    if (filled + size > blockSize) {
        if (blocks.size() == none / blockSize) throw std::length_error("too many names");
        blocks.push_back(std::make_unique_for_overwrite<char[]>(blockSize));
        filled = 0;
    }
    const std::size_t reference = (blocks.size() - 1) * blockSize + filled;
    filled += size;
    return static_cast<Reference>(reference);
}
