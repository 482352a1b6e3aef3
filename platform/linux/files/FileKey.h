#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/linux/FileSystemKind.h"

// A key that tells an item from all others, those included that had its inode number before: device and file handle,
// which holds a generation beside the number. Rename and move keep it. Where handles are refused, the birth time stands
// in for the generation. Links are not followed.

struct FileHandle {
    int mountID{};
    std::string bytes{};
};

class FileHandles {
public:
    // With an empty name that of the directory itself. Absent, with errno, when it cannot be had.
    std::optional<FileHandle> handle(int directory, const char* name) const;

private:
    static constexpr int identifierOnly = 0x200; // AT_HANDLE_FID: overlayfs gives handles for no other use

    mutable int flags = identifierOnly; // until a kernel before 6.5 refuses it
};

struct DeviceTraits {
    enum class KeyMethod { handle, birthTime, none };

    KeyMethod keyMethod{};
    EntryNumbers entryNumbers{};
};

struct KeyedItem {
    struct stat status {};
    std::optional<std::string> key{};
};

// The way to a key is chosen once for each device.
class FileKeys {
public:
    // Two system calls once the device is known. Absent, with errno, when there is no such item.
    std::optional<KeyedItem> item(int directory, const char* name) const;

    // The same key from what is known already.
    static std::string handleKey(dev_t device, const FileHandle& handle);

    const FileHandles& handles() const { return fileHandles; }
    // Of an open directory, read afresh.
    DeviceTraits directoryTraits(const struct stat& status, int directory) const;

private:
    const DeviceTraits& traits(dev_t device, int directory, const char* name) const;

    FileHandles fileHandles{};
    mutable std::unordered_map<dev_t, DeviceTraits> traitsByDevice{};
};
