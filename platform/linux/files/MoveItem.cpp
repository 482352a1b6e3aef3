#include "platform/linux/files/MoveItem.h"

#include <sys/stat.h>
#include <unistd.h>

#include "platform/PlatformError.h"
#include "platform/linux/TemporaryName.h"
#include "platform/linux/files/Ancestors.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/ItemPath.h"
#include "platform/linux/files/MoveByCopying.h"
#include "platform/linux/files/RenameItem.h"
#include "platform/linux/files/SystemCall.h"

namespace {

PlatformError moveError(int errorNumber, const std::string& sourcePath, const std::string& destinationPath) {
    return posixError(errorNumber, "move “" + sourcePath + "” to", destinationPath);
}

// Whether both names are one, as "a" and "A" are where case is ignored. Two hard links are one item as well, but there
// both names exist.
bool isItemUnderSameName(const std::string& sourcePath, const std::string& destinationPath) {
    struct stat source {};
    struct stat destination {};
    if (::lstat(sourcePath.c_str(), &source) < 0 || ::lstat(destinationPath.c_str(), &destination) < 0) return false;
    return identityOf(source) == identityOf(destination) && (S_ISDIR(source.st_mode) || source.st_nlink == 1) &&
           lastName(sourcePath) != lastName(destinationPath);
}

// Asked for the other case directly, the kernel sees one item under both names and does nothing.
void changeCase(const std::string& sourcePath, const std::string& destinationPath) {
    const std::string stepPath = joinedPath(parentPath(sourcePath), temporaryName(lastName(sourcePath)));
    renameWithoutReplacing(sourcePath, stepPath);
    try {
        renameWithoutReplacing(stepPath, destinationPath);
    } catch (const std::system_error&) {
        renameWithoutReplacing(stepPath, sourcePath);
        throw;
    }
}

bool isFolderIntoItself(const std::string& sourcePath, const std::string& destinationPath) {
    struct stat source {};
    return ::lstat(sourcePath.c_str(), &source) == 0 && S_ISDIR(source.st_mode) &&
           liesWithin(parentPath(destinationPath), identityOf(source));
}

void moveAcrossFileSystems(const std::string& sourcePath, const std::string& destinationPath) {
    try {
        moveByCopying(sourcePath, destinationPath);
    } catch (const PlatformError& error) {
        throw PlatformError(error.domain, error.code,
                            "Cannot move “" + sourcePath + "” to “" + destinationPath + "” on another file system. " +
                                error.localizedDescription);
    }
}

void moveInAnotherWay(int renameError, const std::string& sourcePath, const std::string& destinationPath) {
    if (renameError == EXDEV) return moveAcrossFileSystems(sourcePath, destinationPath);
    if (renameError == EEXIST && isItemUnderSameName(sourcePath, destinationPath)) {
        return changeCase(sourcePath, destinationPath);
    }
    if (renameError == EINVAL && isFolderIntoItself(sourcePath, destinationPath)) {
        throw PlatformError(std::string(posixErrorDomain), EINVAL,
                            "Cannot move “" + sourcePath + "” to “" + destinationPath + "”: it cannot hold itself.");
    }
    throw std::system_error(renameError, std::generic_category());
}

} // namespace

void moveItem(const std::string& sourcePath, const std::string& destinationPath) {
    cPath(sourcePath, "move");
    cPath(destinationPath, "move “" + sourcePath + "” to");
    try {
        renameWithoutReplacing(sourcePath, destinationPath);
    } catch (const std::system_error& renaming) {
        try {
            moveInAnotherWay(renaming.code().value(), sourcePath, destinationPath);
        } catch (const std::system_error& error) {
            throw moveError(error.code().value(), sourcePath, destinationPath);
        }
    }
}
