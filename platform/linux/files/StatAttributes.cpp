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

// Only of a file system that never changes it.
template <class AskFileSystem>
FileAttributes withCreationDate(const struct stat& status, std::optional<std::chrono::nanoseconds> date,
                                const AskFileSystem& askFileSystem) {
    FileAttributes attributes = fileAttributes(status);
    struct statfs fileSystem {};
    const bool isLasting =
        date && askFileSystem(&fileSystem) == 0 && fileSystemKind(fileSystem).birthTimes == BirthTimes::lasting;
    if (isLasting) attributes.creationDate = date;
    return attributes;
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
    return withCreationDate(status, birthTime(descriptor, "", AT_EMPTY_PATH),
                            [&](struct statfs* fileSystem) { return ::fstatfs(descriptor, fileSystem); });
}

FileAttributes fileAttributes(const struct stat& status, const std::string& path, FollowLinks links) {
    const int flags = links == FollowLinks::yes ? 0 : AT_SYMLINK_NOFOLLOW;
    return withCreationDate(status, birthTime(AT_FDCWD, path.c_str(), flags),
                            [&](struct statfs* fileSystem) { return ::statfs(path.c_str(), fileSystem); });
}
