#include "platform/LockedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

#include "platform/PlatformError.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/SystemCall.h"

namespace {

constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;

int openShared(const std::string& path) {
    const char* name = cPath(path, "open");
    constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY;
    const int descriptor = uninterrupted([&] { return ::open(name, flags, ownerOnly); });
    if (descriptor < 0) throw posixError(errno, "open", path);
    return descriptor;
}

struct stat statusOf(int descriptor) {
    struct stat status {};
    checked(::fstat(descriptor, &status));
    return status;
}

// A FIFO would be waited for without end.
void requireRegular(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) throw std::system_error(EOPNOTSUPP, std::generic_category());
}

// A umask can take away the owner's own rights, and the next opening would fail.
void giveToOwner(int descriptor, const struct stat& status) {
    const bool isNew = status.st_size == 0;
    if (!isNew || (status.st_mode & ownerOnly) == ownerOnly) return;
    checked(uninterrupted([&] { return ::fchmod(descriptor, (status.st_mode & 07777) | ownerOnly); }));
}

// Whoever held the lock before may have changed the size, so nothing is read by a size asked for earlier.
std::string readAll(int descriptor) {
    std::string data(static_cast<std::size_t>(statusOf(descriptor).st_size) + 1, '\0');
    std::size_t filled = 0;
    while (true) {
        if (filled == data.size()) data.resize(2 * data.size());
        const ssize_t count = checked(uninterrupted([&] {
            return ::pread(descriptor, data.data() + filled, data.size() - filled, static_cast<off_t>(filled));
        }));
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    data.resize(filled);
    return data;
}

void writeAll(int descriptor, std::string_view data) {
    for (off_t offset = 0; !data.empty();) {
        const ssize_t count =
            checked(uninterrupted([&] { return ::pwrite(descriptor, data.data(), data.size(), offset); }));
        if (count == 0) throw std::system_error(EIO, std::generic_category()); // would go on for ever
        data.remove_prefix(static_cast<std::size_t>(count));
        offset += count;
    }
}

// Truncating first looks bolder than writing over the old bytes, but spares them: a file system with a journal keeps
// them, in blocks of their own, until the new ones are safe, so that a power failure mostly leaves either of the two.
void replaceBytes(int descriptor, std::string_view data) {
    checked(uninterrupted([&] { return ::ftruncate(descriptor, 0); }));
    writeAll(descriptor, data);
    checked(uninterrupted([&] { return ::fsync(descriptor); }));
}

} // namespace

// Once the first constructor is through, the destructor runs for whatever the body throws.
LockedFile::LockedFile(const std::string& path) : LockedFile(path, openShared(path)) {
    const char* action = "open";
    try {
        const struct stat status = statusOf(descriptor);
        requireRegular(status);
        giveToOwner(descriptor, status);
        action = "lock";
        checked(uninterrupted([&] { return ::flock(descriptor, LOCK_EX); }));
        action = "read";
        bytes = readAll(descriptor);
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), action, path);
    }
}

// Closing alone would not unlock while a process forked meanwhile has the same open file.
LockedFile::~LockedFile() {
    uninterrupted([&] { return ::flock(descriptor, LOCK_UN); });
    ::close(descriptor);
}

void LockedFile::rewrite(std::string newContents) {
    try {
        replaceBytes(descriptor, newContents);
    } catch (const std::system_error& error) {
        try {
            replaceBytes(descriptor, bytes);
        } catch (const std::system_error&) {
            // The first failure is the one to tell of.
        }
        throw posixError(error.code().value(), "write", filePath);
    }
    bytes = std::move(newContents);
}
