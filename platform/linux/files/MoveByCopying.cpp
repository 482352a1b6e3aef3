#include "platform/linux/files/MoveByCopying.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/files/CopyItem.h"
#include "platform/linux/files/ItemPath.h"
#include "platform/linux/files/RemoveItem.h"

namespace {

// A read-only source is found out here rather than after copying all of it.
void refuseFixedItem(const std::string& path) {
    if (::faccessat(AT_FDCWD, parentPath(path).c_str(), W_OK | X_OK, AT_EACCESS) == 0) return;
    throw posixError(errno, "remove", path);
}

// Once the source is gone the copy is all there is: it must survive a power failure.
void flushFileSystem(const std::string& directoryPath) {
    const Descriptor directory(::open(directoryPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory || ::syncfs(directory.get()) < 0) throw posixError(errno, "write to the disk", directoryPath);
}

} // namespace

void moveByCopying(const std::string& sourcePath, const std::string& destinationPath) {
    refuseFixedItem(sourcePath);
    copyItem(sourcePath, destinationPath);
    try {
        flushFileSystem(parentPath(destinationPath));
        removeItem(sourcePath);
    } catch (const IncompleteRemoval& error) {
        throw IncompleteRemoval(PlatformError(
            error.domain, error.code, error.localizedDescription + " The whole is at “" + destinationPath + "”."));
    } catch (const PlatformError&) {
        removeOwnItem(destinationPath);
        throw;
    }
}
