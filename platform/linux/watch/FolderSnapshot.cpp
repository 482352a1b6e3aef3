#include "platform/linux/watch/FolderSnapshot.h"

#include <bit>
#include <functional>
#include <utility>

namespace {

// An entry: a byte with the type and the number of bytes of the inode, the inode, the length of the name, the name.
constexpr unsigned typeBits = 2;

std::size_t byteCount(std::uint64_t number) {
    return (static_cast<std::size_t>(std::bit_width(number)) + 7) / 8;
}

char packedHead(ItemIdentity identity) {
    return static_cast<char>(byteCount(identity.inode) << typeBits | static_cast<unsigned>(identity.type));
}

} // namespace

ItemIdentity FolderSnapshot::find(std::string_view name) const {
    const std::size_t offset = offsetOf(name);
    return offset == bytes.size() ? ItemIdentity{} : entryAt(offset).identity;
}

void FolderSnapshot::set(std::string_view name, ItemIdentity identity) {
    const std::size_t offset = offsetOf(name);
    if (offset != bytes.size()) {
        if (entryAt(offset).identity == identity) return;
        remove(offset);
    }
    if (!identity) return;
    append(name, identity);
    if (!index) buildIndexIfLarge();
}

void FolderSnapshot::append(std::string_view name, ItemIdentity identity) {
    const std::size_t offset = bytes.size();
    bytes.push_back(packedHead(identity));
    for (std::uint64_t rest = identity.inode; rest != 0; rest >>= 8) bytes.push_back(static_cast<char>(rest & 0xFF));
    bytes.push_back(static_cast<char>(name.size()));
    bytes.insert(bytes.end(), name.begin(), name.end());
    if (index) enterIntoIndex(name, offset);
}

void FolderSnapshot::finishAppending() {
    bytes.shrink_to_fit();
    if (!index) buildIndexIfLarge();
}

bool FolderSnapshot::isEmpty() const {
    bool isEmpty = true;
    forEach([&](std::string_view, ItemIdentity) { isEmpty = false; });
    return isEmpty;
}

std::size_t FolderSnapshot::memoryUse() const {
    return bytes.capacity() + (index ? sizeof(Index) + index->slots.capacity() * sizeof(std::uint32_t) : 0);
}

FolderSnapshot::Entry FolderSnapshot::entryAt(std::size_t offset) const {
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    const unsigned head = byteAt(offset);
    const std::size_t inodeSize = head >> typeBits;
    std::uint64_t inode = 0;
    for (std::size_t i = inodeSize; i > 0; --i) inode = inode << 8 | byteAt(offset + i);
    const std::size_t nameSize = byteAt(offset + 1 + inodeSize);
    return {.name = {bytes.data() + offset + 2 + inodeSize, nameSize},
            .identity = {inode, static_cast<ItemType>(head & ((1U << typeBits) - 1))},
            .size = 2 + inodeSize + nameSize};
}

std::size_t FolderSnapshot::offsetOf(std::string_view name) const {
    if (!index) {
        std::size_t offset = 0;
        while (offset < bytes.size() && entryAt(offset).name != name) offset += entryAt(offset).size;
        return offset;
    }
    const std::size_t mask = index->slots.size() - 1;
    for (std::size_t slot = std::hash<std::string_view>{}(name)&mask; index->slots[slot] != 0;
         slot = (slot + 1) & mask) {
        const Entry entry = entryAt(index->slots[slot] - 1);
        if (entry.identity && entry.name == name) return index->slots[slot] - 1;
    }
    return bytes.size();
}

void FolderSnapshot::remove(std::size_t offset) {
    const std::size_t size = entryAt(offset).size;
    if (!index) {
        const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
        bytes.erase(begin, begin + static_cast<std::ptrdiff_t>(size));
        return;
    }
    bytes[offset] = static_cast<char>(static_cast<unsigned char>(bytes[offset]) & ~((1U << typeBits) - 1));
    index->removedBytes += size;
    if (index->removedBytes * 2 > bytes.size()) rebuild();
}

void FolderSnapshot::enterIntoIndex(std::string_view name, std::size_t offset) {
    if ((index->used + 1) * 4 > index->slots.size() * 3) {
        rebuild(); // enters all there is, this one included
        return;
    }
    const std::size_t mask = index->slots.size() - 1;
    std::size_t slot = std::hash<std::string_view>{}(name)&mask;
    while (index->slots[slot] != 0) slot = (slot + 1) & mask;
    index->slots[slot] = static_cast<std::uint32_t>(offset + 1);
    ++index->used;
}

void FolderSnapshot::buildIndexIfLarge() {
    std::size_t count = 0;
    for (std::size_t offset = 0; offset < bytes.size(); offset += entryAt(offset).size) ++count;
    if (count > indexedFrom) rebuild();
}

void FolderSnapshot::rebuild() {
    std::vector<char> kept;
    std::size_t count = 0;
    kept.reserve(bytes.size() - (index ? index->removedBytes : 0));
    for (std::size_t offset = 0; offset < bytes.size();) {
        const Entry entry = entryAt(offset);
        if (entry.identity) {
            kept.insert(kept.end(), &bytes[offset], &bytes[offset] + entry.size);
            ++count;
        }
        offset += entry.size;
    }
    bytes = std::move(kept);
    index = std::make_unique<Index>();
    index->slots.resize(std::bit_ceil(count * 2 + 2));
    for (std::size_t offset = 0; offset < bytes.size(); offset += entryAt(offset).size)
        enterIntoIndex(entryAt(offset).name, offset);
}
