#include "platform/linux/files/RemoveItem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "platform/linux/DirectoryStream.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/DirectoryChain.h"
#include "platform/linux/files/ItemPath.h"

namespace {

enum class Permissions { respect, override };

// A folder on the way down, with the folders in it that are still to be removed.
struct Level {
    std::string name{};
    std::vector<std::string> directoryNames{};
};

// A removal in progress. itemName is what is being worked on in the present directory of the chain, for the message.
struct Removal {
    DirectoryChain chain;
    Permissions permissions{};
    std::vector<Level> levels{};
    std::string itemName{};
    bool hasRemovedAnything = false;
};

bool isDirectory(int parent, const dirent64& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat attributes {};
    return ::fstatat(parent, entry.d_name, &attributes, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(attributes.st_mode);
}

void removeEntry(Removal& removal, const char* name, int flags) {
    if (::unlinkat(removal.chain.get(), name, flags) < 0 && errno != ENOENT) checked(-1);
    removal.hasRemovedAnything = true;
}

void refuseMountPoint(int directory) {
    struct statx attributes {};
    checked(::statx(directory, "", AT_EMPTY_PATH, STATX_INO, &attributes));
    if ((attributes.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) {
        throw std::system_error(EBUSY, std::generic_category());
    }
}

// A directory that somebody else has just removed was empty.
const dirent64* nextEntry(DirectoryStream& stream) {
    try {
        return stream.next();
    } catch (const std::system_error& error) {
        if (error.code().value() != ENOENT) throw;
        return nullptr;
    }
}

// Removes all but the folders from the present directory; these are left to the new level.
void beginLevel(Removal& removal, std::string name) {
    removal.itemName.clear();
    refuseMountPoint(removal.chain.get());
    removal.levels.push_back({.name = std::move(name)});
    DirectoryStream stream(removal.chain.get());
    while (const dirent64* entry = nextEntry(stream)) {
        removal.itemName = entry->d_name;
        if (isDirectory(removal.chain.get(), *entry)) {
            removal.levels.back().directoryNames.push_back(entry->d_name);
        } else {
            removeEntry(removal, entry->d_name, 0);
        }
    }
    removal.itemName.clear();
}

// Goes into a folder. A folder that cannot be read but is empty can be removed at once; one that is gone is no matter.
bool enterDirectory(Removal& removal, const char* name) {
    if (removal.permissions == Permissions::override) ::fchmodat(removal.chain.get(), name, 0700, 0);
    try {
        removal.chain.enter(name);
        return true;
    } catch (const std::system_error& error) {
        const bool isGone = error.code().value() == ENOENT || ::unlinkat(removal.chain.get(), name, AT_REMOVEDIR) == 0;
        if (!isGone) throw;
        removal.hasRemovedAnything = true;
        return false;
    }
}

void emptyDirectory(Removal& removal) {
    beginLevel(removal, {});
    while (true) {
        Level& level = removal.levels.back();
        if (!level.directoryNames.empty()) {
            removal.itemName = std::move(level.directoryNames.back());
            level.directoryNames.pop_back();
            if (enterDirectory(removal, removal.itemName.c_str())) beginLevel(removal, removal.itemName);
        } else if (removal.levels.size() > 1) {
            removal.chain.leave();
            removal.itemName = std::move(level.name);
            removal.levels.pop_back();
            removeEntry(removal, removal.itemName.c_str(), AT_REMOVEDIR);
            removal.itemName.clear();
        } else {
            return;
        }
    }
}

PlatformError removalError(int errorNumber, const std::string& path) {
    return posixError(errorNumber, "remove", path);
}

void removeDirectory(Removal& removal, const std::string& path) {
    try {
        emptyDirectory(removal);
        removal.itemName.clear();
        if (::rmdir(path.c_str()) < 0 && errno != ENOENT) checked(-1);
    } catch (const std::system_error& error) {
        std::string itemPath = removal.chain.path();
        if (!removal.itemName.empty()) itemPath = joinedPath(itemPath, removal.itemName);
        PlatformError described = removalError(error.code().value(), itemPath);
        if (!removal.hasRemovedAnything) throw described;
        described.localizedDescription += " A part of “" + path + "” has been removed already.";
        throw IncompleteRemoval(std::move(described));
    }
}

Removal openedRemoval(const std::string& path, Permissions permissions) {
    try {
        return {.chain = DirectoryChain(path.c_str()), .permissions = permissions};
    } catch (const std::system_error& error) {
        throw removalError(error.code().value(), path);
    }
}

void removeAnyItem(const std::string& path, Permissions permissions) {
    // For a folder unlink fails, but only after it has found that the parent permits the removal: a tree whose top
    // would have to stay is not emptied in vain.
    if (::unlink(cPath(path, "remove")) == 0) return;
    if (errno != EISDIR) throw removalError(errno, path);
    if (permissions == Permissions::override) ::chmod(path.c_str(), 0700);
    if (::rmdir(path.c_str()) == 0) return;
    Removal removal = openedRemoval(path, permissions);
    removeDirectory(removal, path);
}

} // namespace

void removeItem(const std::string& path) {
    removeAnyItem(path, Permissions::respect);
}

void removeOwnItem(const std::string& path) noexcept {
    try {
        removeAnyItem(path, Permissions::override);
    } catch (const std::exception&) {
        // The caller reports its own error, which came first.
    }
}
