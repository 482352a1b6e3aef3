#include "platform/linux/watch/KernelRecord.h"

#include <sys/inotify.h>

#include <cstring>

bool KernelRecord::isDirectory() const {
    return (mask & IN_ISDIR) != 0;
}

std::vector<KernelRecord> kernelRecords(std::string_view block) {
    std::vector<KernelRecord> records;
    while (block.size() >= sizeof(inotify_event)) {
        inotify_event event{};
        std::memcpy(&event, block.data(), sizeof event);
        block.remove_prefix(sizeof event);
        if (event.len > block.size()) break;
        // The kernel fills the name up with zeros.
        const std::size_t length = ::strnlen(block.data(), event.len);
        records.push_back({event.wd, event.mask, event.cookie, block.substr(0, length)});
        block.remove_prefix(event.len);
    }
    return records;
}

std::string overflowBlock() {
    inotify_event event{};
    event.wd = -1;
    event.mask = IN_Q_OVERFLOW;
    return {reinterpret_cast<const char*>(&event), sizeof event};
}
