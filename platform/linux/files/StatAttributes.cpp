#include "platform/linux/files/StatAttributes.h"

#include <chrono>

namespace {

// File systems store dates that 64-bit nanoseconds do not reach (before 1678, after 2261); they stop at the end of the
// range instead of wrapping round.
std::chrono::nanoseconds sinceEpoch(const timespec& time) {
    using std::chrono::nanoseconds;
    using std::chrono::seconds;
    constexpr auto longest = std::chrono::duration_cast<seconds>(nanoseconds::max());
    if (seconds(time.tv_sec) >= longest) return nanoseconds::max();
    if (seconds(time.tv_sec) <= -longest) return nanoseconds::min();
    return seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

} // namespace

FileType fileType(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFREG:
            return FileType::regular;
        case S_IFDIR:
            return FileType::directory;
        case S_IFLNK:
            return FileType::symbolicLink;
        case S_IFIFO:
            return FileType::fifo;
        case S_IFSOCK:
            return FileType::socket;
        case S_IFCHR:
            return FileType::characterDevice;
        case S_IFBLK:
            return FileType::blockDevice;
        default:
            return FileType::unknown;
    }
}

FileAttributes fileAttributes(const struct stat& status) {
    return {.type = fileType(status.st_mode),
            .size = static_cast<std::uint64_t>(status.st_size),
            .modificationDate = sinceEpoch(status.st_mtim),
            .fileSystemNumber = status.st_dev,
            .fileNumber = status.st_ino};
}
