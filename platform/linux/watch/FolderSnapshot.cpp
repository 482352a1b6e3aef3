#include "platform/linux/watch/FolderSnapshot.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

namespace {

// An entry: a byte with the type and the number of bytes of the inode, the inode, the length of the name, the name.
constexpr unsigned typeBits = 2;

// For the names of a usual folder.
constexpr std::size_t roomForListing = 512;

constexpr std::uint32_t largestCapacity = 0x7FFFFFFF;

std::size_t byteCount(std::uint64_t number) {
    return (static_cast<std::size_t>(std::bit_width(number)) + 7) / 8;
}

} // namespace

ItemIdentity FolderSnapshot::find(std::string_view name) const {
    const std::size_t offset = offsetOf(name);
    return offset == size() ? ItemIdentity{} : entryAt(offset).identity;
}

void FolderSnapshot::set(std::string_view name, ItemIdentity identity) {
    const std::size_t offset = offsetOf(name);
    if (offset != size()) {
        if (entryAt(offset).identity == identity) return;
        remove(offset);
    }
    if (!identity) return;
    put(name, identity, size() / 4);
    if (!index()) buildIndexIfLarge();
}

void FolderSnapshot::append(std::string_view name, ItemIdentity identity) {
    put(name, identity, std::max(roomForListing, size()));
}

void FolderSnapshot::finishAppending() {
    if (pack) setCapacity(size());
    if (!index()) buildIndexIfLarge();
}

void FolderSnapshot::setCapacity(std::size_t capacity) {
    if (capacity > largestCapacity) throw std::bad_alloc();
    Index* const index = this->index();
    auto* moved = static_cast<Pack*>(std::realloc(pack.get(), sizeof(Pack) + capacity + (index ? sizeof index : 0)));
    if (!moved) throw std::bad_alloc();
    const bool isNew = !pack.release();
    pack.reset(moved);
    if (isNew) *pack = {};
    pack->capacity = static_cast<std::uint32_t>(capacity) & largestCapacity;
    if (index) std::memcpy(bytes() + capacity, &index, sizeof index);
}

FolderSnapshot::Index* FolderSnapshot::indexOf(const Pack* pack) {
    if (!pack || !pack->isIndexed) return nullptr;
    Index* index = nullptr;
    std::memcpy(&index, reinterpret_cast<const char*>(pack + 1) + pack->capacity, sizeof index);
    return index;
}

void FolderSnapshot::put(std::string_view name, ItemIdentity identity, std::size_t roomAtLeast) {
    const std::size_t offset = size();
    if (offset == 0 && !pack) setCapacity(roomAtLeast);
    if (offset == 0) pack->base = static_cast<std::uint32_t>(identity.inode);
    std::uint64_t difference = identity.inode ^ pack->base;
    const std::size_t inodeSize = byteCount(difference);
    const std::size_t entrySize = 2 + inodeSize + name.size();
    if (offset + entrySize > pack->capacity) setCapacity(offset + std::max(entrySize, roomAtLeast));
    char* place = bytes() + offset;
    *place++ = static_cast<char>(inodeSize << typeBits | static_cast<unsigned>(identity.type));
    for (; difference != 0; difference >>= 8) *place++ = static_cast<char>(difference & 0xFF);
    *place++ = static_cast<char>(name.size());
    std::memcpy(place, name.data(), name.size());
    pack->size += static_cast<std::uint32_t>(entrySize);
    if (index()) enterIntoIndex(name, offset);
}

bool FolderSnapshot::isEmpty() const {
    bool isEmpty = true;
    forEach([&](std::string_view, ItemIdentity) { isEmpty = false; });
    return isEmpty;
}

std::size_t FolderSnapshot::memoryUse() const {
    return (pack ? sizeof(Pack) + pack->capacity : 0) +
           (index() ? sizeof(Index*) + sizeof(Index) + index()->slots.capacity() * sizeof(std::uint32_t) : 0);
}

FolderSnapshot::Entry FolderSnapshot::entryAt(std::size_t offset) const {
    const char* entry = bytes() + offset;
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(entry[at]); };
    const unsigned head = byteAt(0);
    const std::size_t inodeSize = head >> typeBits;
    std::uint64_t difference = 0;
    for (std::size_t i = inodeSize; i > 0; --i) difference = difference << 8 | byteAt(i);
    const std::size_t nameSize = byteAt(1 + inodeSize);
    return {.name = {entry + 2 + inodeSize, nameSize},
            .identity = {difference ^ pack->base, static_cast<ItemType>(head & ((1U << typeBits) - 1))},
            .size = 2 + inodeSize + nameSize};
}

std::size_t FolderSnapshot::offsetOf(std::string_view name) const {
    const Index* index = this->index();
    if (!index) {
        std::size_t offset = 0;
        while (offset < size() && entryAt(offset).name != name) offset += entryAt(offset).size;
        return offset;
    }
    const std::size_t mask = index->slots.size() - 1;
    for (std::size_t slot = std::hash<std::string_view>{}(name)&mask; index->slots[slot] != 0;
         slot = (slot + 1) & mask) {
        const Entry entry = entryAt(index->slots[slot] - 1);
        if (entry.identity && entry.name == name) return index->slots[slot] - 1;
    }
    return size();
}

void FolderSnapshot::remove(std::size_t offset) {
    const std::size_t entrySize = entryAt(offset).size;
    char* const entry = bytes() + offset;
    Index* const index = this->index();
    if (!index) {
        std::memmove(entry, entry + entrySize, size() - offset - entrySize);
        pack->size -= static_cast<std::uint32_t>(entrySize);
        return;
    }
    *entry = static_cast<char>(static_cast<unsigned char>(*entry) & ~((1U << typeBits) - 1));
    index->removedBytes += entrySize;
    if (index->removedBytes * 2 > size()) rebuild();
}

void FolderSnapshot::enterIntoIndex(std::string_view name, std::size_t offset) {
    Index* const index = this->index();
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
    for (std::size_t offset = 0; offset < size() && count <= indexedFrom; offset += entryAt(offset).size) ++count;
    if (count > indexedFrom) rebuild();
}

// Moves what is still there together, and enters all of it into a new index.
void FolderSnapshot::rebuild() {
    std::size_t count = 0;
    forEach([&](std::string_view, ItemIdentity) { ++count; });
    auto fresh = std::make_unique<Index>();
    fresh->slots.resize(std::bit_ceil(count * 2 + 2));
    setIndex(std::move(fresh));
    std::uint32_t kept = 0;
    for (std::size_t offset = 0; offset < size();) {
        const Entry entry = entryAt(offset);
        if (entry.identity) {
            std::memmove(bytes() + kept, bytes() + offset, entry.size);
            kept += static_cast<std::uint32_t>(entry.size);
        }
        offset += entry.size;
    }
    pack->size = kept;
    for (std::size_t offset = 0; offset < size(); offset += entryAt(offset).size)
        enterIntoIndex(entryAt(offset).name, offset);
}

void FolderSnapshot::setIndex(std::unique_ptr<Index> fresh) {
    if (Index* const former = index()) {
        *former = std::move(*fresh);
        return;
    }
    const std::size_t capacity = pack->capacity;
    setCapacity(capacity + sizeof(Index*)); // the pointer's place
    pack->capacity = static_cast<std::uint32_t>(capacity) & largestCapacity;
    pack->isIndexed = 1;
    const Index* const index = fresh.release();
    std::memcpy(bytes() + capacity, &index, sizeof index);
}

void FolderSnapshot::Free::operator()(Pack* pack) const {
    delete indexOf(pack);
    std::free(pack);
}
