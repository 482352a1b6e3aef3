#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/linux/watch/ItemIdentity.h"

// The entries of one folder as they were last reported, packed: an entry costs its name and some three bytes, since
// files that were made together have similar numbers. There is one such object for every watched folder, and most have
// few entries, which are simply searched; large ones have an index.
class FolderSnapshot {
public:
    ItemIdentity find(std::string_view name) const; // of type none when there is no such entry

    // Replaces the entry or adds one; an identity of type none removes it.
    void set(std::string_view name, ItemIdentity identity);

    // For a first listing: the name must be new. Call finishAppending when the last one is in.
    void append(std::string_view name, ItemIdentity identity);
    void finishAppending();

    template <class Visit>
    void forEach(const Visit& visit) const {
        for (std::size_t offset = 0; offset < size();) {
            const Entry entry = entryAt(offset);
            if (entry.identity) visit(entry.name, entry.identity);
            offset += entry.size;
        }
    }

    bool isEmpty() const;
    std::size_t memoryUse() const; // bytes outside this object

private:
    static constexpr std::size_t indexedFrom = 64; // entries

    struct Entry {
        std::string_view name{};
        ItemIdentity identity{}; // of type none once removed
        std::size_t size{};      // bytes in the pack
    };

    // Where the entries are, by hash, with open addressing. An offset is kept plus one, zero stands for a free slot.
    struct Index {
        std::vector<std::uint32_t> slots{};
        std::size_t used = 0;         // slots with an entry, be it removed
        std::size_t removedBytes = 0; // in the pack
    };

    // What stands in front of the entries.
    struct Pack {
        std::uint32_t size{};           // of the entries, in bytes
        std::uint32_t capacity : 31 {}; // for so many; behind it stands a pointer to the index if there is one
        std::uint32_t isIndexed : 1 {};
        // The lower half of the first entry's number. All are kept as what sets them apart from it.
        std::uint32_t base{};
    };
    struct Free {
        void operator()(Pack* pack) const;
    };

    std::size_t size() const { return pack ? pack->size : 0; }
    char* bytes() const { return reinterpret_cast<char*>(pack.get() + 1); }
    static Index* indexOf(const Pack* pack);
    Index* index() const { return indexOf(pack.get()); }
    void setIndex(std::unique_ptr<Index> index);
    void setCapacity(std::size_t capacity);
    void put(std::string_view name, ItemIdentity identity, std::size_t roomAtLeast);
    Entry entryAt(std::size_t offset) const;
    std::size_t offsetOf(std::string_view name) const; // size() when there is no such entry
    void remove(std::size_t offset);
    void enterIntoIndex(std::string_view name, std::size_t offset);
    void buildIndexIfLarge();
    void rebuild();

    std::unique_ptr<Pack, Free> pack{}; // absent before the first entry
};
