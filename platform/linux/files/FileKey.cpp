#include "platform/linux/files/FileKey.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "platform/linux/Descriptor.h"

namespace {

template <class Number>
void append(std::string& key, Number number) {
    std::array<char, sizeof number> bytes;
    for (std::size_t i = 0; i < sizeof number; ++i) bytes[i] = static_cast<char>(number >> 8 * i);
    key.append(bytes.data(), bytes.size());
}

bool isRefusal(int errorNumber) {
    return errorNumber == EOPNOTSUPP || errorNumber == EPERM || errorNumber == ENOSYS;
}

std::optional<std::string> birthTimeKey(const struct stat& status, int directory, const char* name) {
    struct statx extended {};
    if (statx(directory, name, AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_INO, &extended) != 0) return std::nullopt;
    if ((extended.stx_mask & STATX_BTIME) == 0 || extended.stx_ino != status.st_ino) return std::nullopt;
    std::string key;
    append(key, std::uint64_t{status.st_dev});
    append(key, std::uint64_t{status.st_ino});
    append(key, static_cast<std::uint64_t>(extended.stx_btime.tv_sec));
    append(key, extended.stx_btime.tv_nsec);
    return key;
}

DeviceTraits traitsOf(const struct statfs& status, const FileHandles& handles, int directory, const char* name) {
    using KeyMethod = DeviceTraits::KeyMethod;
    const FileSystemKind kind = fileSystemKind(status);
    const auto method = [&] {
        if (!kind.hasLastingHandles) return KeyMethod::none;
        if (handles.handle(directory, name) || !isRefusal(errno)) return KeyMethod::handle;
        return kind.birthTimes == BirthTimes::lasting ? KeyMethod::birthTime : KeyMethod::none;
    };
    return {.keyMethod = method(), .entryNumbers = kind.entryNumbers};
}

} // namespace

std::optional<FileHandle> FileHandles::handle(int directory, const char* name) const {
    alignas(file_handle) std::array<char, sizeof(file_handle) + MAX_HANDLE_SZ> room;
    auto* const handle = reinterpret_cast<file_handle*>(room.data());
    FileHandle found;
    const auto ask = [&] {
        handle->handle_bytes = MAX_HANDLE_SZ;
        const int itself = *name == '\0' ? AT_EMPTY_PATH : 0;
        return name_to_handle_at(directory, name, handle, &found.mountID, flags | itself) == 0;
    };
    if (!ask()) {
        if (errno != EINVAL || flags == 0) return std::nullopt;
        flags = 0;
        if (!ask()) return std::nullopt;
    }
    found.bytes += static_cast<char>(handle->handle_type); // all types that exist are below 256
    found.bytes.append(room.data() + sizeof(file_handle), handle->handle_bytes);
    return found;
}

std::optional<KeyedItem> FileKeys::item(int directory, const char* name) const {
    KeyedItem item;
    if (fstatat(directory, name, &item.status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    switch (traits(item.status.st_dev, directory, name).keyMethod) {
        case DeviceTraits::KeyMethod::handle:
            if (const auto handle = fileHandles.handle(directory, name)) {
                item.key = handleKey(item.status.st_dev, *handle);
            }
            break;
        case DeviceTraits::KeyMethod::birthTime:
            item.key = birthTimeKey(item.status, directory, name);
            break;
        case DeviceTraits::KeyMethod::none:
            break;
    }
    return item;
}

std::string FileKeys::handleKey(dev_t device, const FileHandle& handle) {
    std::string key;
    key.reserve(sizeof(std::uint64_t) + handle.bytes.size());
    append(key, std::uint64_t{device});
    key += handle.bytes;
    return key;
}

DeviceTraits FileKeys::directoryTraits(const struct stat& status, int directory) const {
    struct statfs fileSystem {};
    if (fstatfs(directory, &fileSystem) != 0) return {.keyMethod = DeviceTraits::KeyMethod::none};
    // A device number can come back as another file system, so what a listing finds is believed.
    return traitsByDevice[status.st_dev] = traitsOf(fileSystem, fileHandles, directory, "");
}

const DeviceTraits& FileKeys::traits(dev_t device, int directory, const char* name) const {
    const auto known = traitsByDevice.find(device);
    if (known != traitsByDevice.end()) return known->second;
    struct statfs fileSystem {};
    const Descriptor item(openat(directory, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    static constexpr DeviceTraits unknown{.keyMethod = DeviceTraits::KeyMethod::none};
    if (!item || fstatfs(item.get(), &fileSystem) != 0) return unknown;
    return traitsByDevice[device] = traitsOf(fileSystem, fileHandles, directory, name);
}
