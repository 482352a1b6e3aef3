#include "platform/linux/files/CopyItem.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/PlatformError.h"
#include "platform/linux/TemporaryName.h"
#include "platform/linux/files/Ancestors.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/CopyEntry.h"
#include "platform/linux/files/CopyTree.h"
#include "platform/linux/files/ItemPath.h"
#include "platform/linux/files/RemoveItem.h"
#include "platform/linux/files/RenameItem.h"
#include "platform/linux/files/SystemCall.h"

namespace {

// A copy under its temporary name. Until it has its own, it goes away with the object.
class UnfinishedItem {
public:
    explicit UnfinishedItem(const std::string& destinationPath)
        : path(joinedPath(parentPath(destinationPath), temporaryName(lastName(destinationPath)))) {}
    UnfinishedItem(const UnfinishedItem&) = delete;
    UnfinishedItem& operator=(const UnfinishedItem&) = delete;
    ~UnfinishedItem() {
        if (!isFinished) removeOwnItem(path);
    }

    void moveTo(const std::string& destinationPath) {
        renameWithoutReplacing(path, destinationPath);
        isFinished = true;
    }

    const std::string path;

private:
    bool isFinished = false;
};

std::string actionTowards(const std::string& sourcePath) {
    return "copy “" + sourcePath + "” to";
}

PlatformError copyIntoItself(const std::string& sourcePath, const std::string& destinationPath) {
    return PlatformError(
        std::string(posixErrorDomain), EINVAL,
        "Cannot copy “" + sourcePath + "” to “" + destinationPath + "”: it cannot hold a copy of itself.");
}

void refuseCopyIntoItself(const std::string& sourcePath, const struct stat& source,
                          const std::string& destinationPath) {
    const bool isFolder = S_ISDIR(source.st_mode);
    if (sourcePath == destinationPath || (isFolder && (isAtOrBelow(destinationPath, sourcePath) ||
                                                       liesWithin(parentPath(destinationPath), identityOf(source))))) {
        throw copyIntoItself(sourcePath, destinationPath);
    }
}

void refuseTakenName(const char* path) {
    struct stat attributes {};
    if (::lstat(path, &attributes) == 0) throw std::system_error(EEXIST, std::generic_category());
    if (errno != ENOENT) checked(-1);
}

// A file without a name leaves no trace if the process dies, and takes its name in one step. Returns false, with
// nothing done, where the file system or the lack of /proc does not permit that.
bool copyThroughUnnamedFile(const char* source, const std::string& destinationPath) {
    const std::string directoryPath = parentPath(destinationPath);
    Descriptor file(::open(directoryPath.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    if (!file) return false;
    const Descriptor named(checked(::fcntl(file.get(), F_DUPFD_CLOEXEC, 0)));
    copyRegularFile(AT_FDCWD, source, std::move(file));
    const std::string self = "/proc/self/fd/" + std::to_string(named.get());
    if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, destinationPath.c_str(), AT_SYMLINK_FOLLOW) == 0) return true;
    if (errno == EEXIST) checked(-1);
    return false;
}

void copyThroughTemporaryName(const std::string& sourcePath, const struct stat& source,
                              const std::string& destinationPath) {
    UnfinishedItem unfinished(destinationPath);
    if (S_ISDIR(source.st_mode)) {
        copyTree(sourcePath, unfinished.path);
    } else {
        copyEntry(AT_FDCWD, sourcePath.c_str(), AT_FDCWD, unfinished.path.c_str());
    }
    unfinished.moveTo(destinationPath);
}

} // namespace

void copyItem(const std::string& sourcePath, const std::string& destinationPath) {
    const char* source = cPath(sourcePath, "copy");
    const char* destination = cPath(destinationPath, actionTowards(sourcePath));
    struct stat attributes {};
    if (::lstat(source, &attributes) < 0) throw posixError(errno, "copy", sourcePath);
    try {
        refuseCopyIntoItself(sourcePath, attributes, destinationPath);
        refuseTakenName(destination);
        if (S_ISREG(attributes.st_mode) && copyThroughUnnamedFile(source, destinationPath)) return;
        copyThroughTemporaryName(sourcePath, attributes, destinationPath);
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), actionTowards(sourcePath), destinationPath);
    }
}
