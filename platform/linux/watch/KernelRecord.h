#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What inotify tells, one event at a time.
struct KernelRecord {
    int watch{};
    std::uint32_t mask{};
    std::uint32_t cookie{};  // the same for the two halves of a rename
    std::string_view name{}; // of the entry; empty when the event is about the watched directory itself

    bool isDirectory() const;

    bool operator==(const KernelRecord&) const = default;
};

// Takes a block apart that was read from an inotify descriptor. The names point into the block. What a truncated block
// has at its end is left out.
std::vector<KernelRecord> kernelRecords(std::string_view block);

// A block with one record that says that records were lost, for a reader that has to give up some itself.
std::string overflowBlock();
