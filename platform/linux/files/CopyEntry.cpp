#include "platform/linux/files/CopyEntry.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "platform/linux/files/FileData.h"
#include "platform/linux/files/FileMetadata.h"
#include "platform/linux/files/SystemCall.h"

namespace {

[[noreturn]] void refuse() {
    throw std::system_error(ENOTSUP, std::generic_category());
}

std::string linkTarget(int directory, const char* name, off_t size) {
    std::string target(static_cast<std::size_t>(size) + 1, '\0');
    while (true) {
        const auto length =
            static_cast<std::size_t>(checked(::readlinkat(directory, name, target.data(), target.size())));
        if (length < target.size()) return target.substr(0, length);
        target.resize(target.size() * 2); // replaced meanwhile, or of a kind that does not tell its size
    }
}

} // namespace

struct stat attributesOfEntry(int directory, const char* name) {
    struct stat attributes {};
    checked(::fstatat(directory, name, &attributes, AT_SYMLINK_NOFOLLOW));
    return attributes;
}

void copyRegularFile(int sourceDirectory, const char* sourceName, Descriptor destination) {
    // Without waiting, for the case that somebody has put a FIFO there since the look.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const Descriptor source(checked(::openat(sourceDirectory, sourceName, flags)));
    struct stat attributes {};
    checked(::fstat(source.get(), &attributes));
    if (!S_ISREG(attributes.st_mode)) refuse();
    copyFileData(source.get(), destination.get(), attributes.st_size);
    copyMetadata(source.get(), destination.get(), attributes);
    checked(destination.close()); // the last to report a lost write
}

void copyEntry(int sourceDirectory, const char* sourceName, int destinationDirectory, const char* destinationName) {
    const struct stat attributes = attributesOfEntry(sourceDirectory, sourceName);
    switch (attributes.st_mode & S_IFMT) {
        case S_IFREG: {
            constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
            const int descriptor = checked(::openat(destinationDirectory, destinationName, flags, 0600));
            return copyRegularFile(sourceDirectory, sourceName, Descriptor(descriptor));
        }
        case S_IFLNK: {
            const std::string target = linkTarget(sourceDirectory, sourceName, attributes.st_size);
            checked(::symlinkat(target.c_str(), destinationDirectory, destinationName));
            return setMetadata(destinationDirectory, destinationName, attributes);
        }
        case S_IFIFO:
            checked(::mkfifoat(destinationDirectory, destinationName, 0600));
            return setMetadata(destinationDirectory, destinationName, attributes);
        default:
            refuse();
    }
}
