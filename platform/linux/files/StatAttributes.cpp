#include "platform/linux/files/StatAttributes.h"

#include <fcntl.h>
#include <sys/vfs.h>

#include <chrono>

#include "platform/linux/FileSystemKind.h"

namespace {

// File systems store dates that 64-bit nanoseconds do not reach (before 1678, after 2261); they stop at the end of the
// range instead of wrapping round.
template <class Time>
std::chrono::nanoseconds sinceEpoch(const Time& time) {
    using std::chrono::nanoseconds;
    using std::chrono::seconds;
    constexpr auto longest = std::chrono::duration_cast<seconds>(nanoseconds::max());
    const seconds whole(time.tv_sec);
    if (whole >= longest) return nanoseconds::max();
    if (whole <= -longest) return nanoseconds::min();
    return whole + nanoseconds(time.tv_nsec);
}

std::optional<std::chrono::nanoseconds> birthTime(int directory, const char* path, int flags) {
    struct statx status {};
    if (::statx(directory, path, flags, STATX_BTIME, &status) != 0) return std::nullopt;
    if ((status.stx_mask & STATX_BTIME) == 0) return std::nullopt;
    return sinceEpoch(status.stx_btime);
}

bool keepsBirthTimes(const struct statfs& fileSystem) {
    return fileSystemKind(fileSystem).birthTimes == BirthTimes::lasting;
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

FileAttributes fileAttributes(const struct stat& status, int descriptor) {
    FileAttributes attributes = fileAttributes(status);
    struct statfs fileSystem {};
    if (const auto date = birthTime(descriptor, "", AT_EMPTY_PATH))
        if (::fstatfs(descriptor, &fileSystem) == 0 && keepsBirthTimes(fileSystem)) attributes.creationDate = date;
    return attributes;
}

FileAttributes fileAttributes(const struct stat& status, const std::string& path, FollowLinks links) {
    FileAttributes attributes = fileAttributes(status);
    struct statfs fileSystem {};
    if (const auto date = birthTime(AT_FDCWD, path.c_str(), links == FollowLinks::yes ? 0 : AT_SYMLINK_NOFOLLOW))
        if (::statfs(path.c_str(), &fileSystem) == 0 && keepsBirthTimes(fileSystem)) attributes.creationDate = date;
    return attributes;
}
