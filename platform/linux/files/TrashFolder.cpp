#include "platform/linux/files/TrashFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/PlatformError.h"
#include "platform/linux/files/Ancestors.h"
#include "platform/linux/files/HomeDirectory.h"
#include "platform/linux/files/ItemPath.h"
#include "platform/linux/files/SystemCall.h"

namespace {

// A rename works within one mount of one device only: a directory bound elsewhere is another mount, and a subvolume of
// a mount another device.
struct Volume {
    std::uint64_t mount{};
    std::uint32_t deviceMajor{};
    std::uint32_t deviceMinor{};

    bool operator==(const Volume&) const = default;
};

Volume volumeOf(const std::string& path) {
    struct statx attributes {};
    checked(::statx(AT_FDCWD, path.c_str(), 0, STATX_INO | STATX_MNT_ID, &attributes));
    return {attributes.stx_mnt_id, attributes.stx_dev_major, attributes.stx_dev_minor};
}

// Nothing is concluded from a failure to look: the item would go to the wrong trash.
std::optional<struct stat> attributesAt(const std::string& path, int flags) {
    struct stat attributes {};
    if (::fstatat(AT_FDCWD, path.c_str(), &attributes, flags) == 0) return attributes;
    if (errno != ENOENT && errno != ENOTDIR) checked(-1);
    return std::nullopt;
}

bool isFolder(const std::string& path) {
    const auto attributes = attributesAt(path, 0);
    return attributes && S_ISDIR(attributes->st_mode);
}

std::string nearestFolder(std::string path) {
    while (path != "/" && !isFolder(path)) path = parentPath(path);
    return path;
}

std::string volumeTop(std::string directoryPath) {
    const Volume volume = volumeOf(directoryPath);
    while (directoryPath != "/") {
        std::string above = parentPath(directoryPath);
        if (volumeOf(above) != volume) break;
        directoryPath = std::move(above);
    }
    return directoryPath;
}

// Folders above the trash that are missing are made as well: a new user has no ~/.local yet.
void makePrivateDirectory(const std::string& path) {
    if (::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) return;
    if (errno != ENOENT) throw posixError(errno, "make the folder", path);
    makePrivateDirectory(parentPath(path));
    if (::mkdir(path.c_str(), 0700) < 0 && errno != EEXIST) throw posixError(errno, "make the folder", path);
}

bool isRealFolder(const std::string& path, struct stat& attributes) {
    return ::lstat(path.c_str(), &attributes) == 0 && S_ISDIR(attributes.st_mode);
}

// The folder that an administrator provides for all users protects them from each other only if it is sticky.
bool isSharedTrash(const std::string& path) {
    struct stat attributes {};
    return isRealFolder(path, attributes) && (attributes.st_mode & S_ISVTX) != 0;
}

// On a volume that others can write to, they may have prepared the name, to read or to lead astray what comes there.
void refuseForeignFolder(const std::string& path) {
    struct stat attributes {};
    if (isRealFolder(path, attributes) && attributes.st_uid == ::geteuid()) return;
    throw PlatformError(std::string(posixErrorDomain), EPERM, "“" + path + "” is not a folder of the user.");
}

const TrashFolder& ownTrash(const TrashFolder& place) {
    if (::mkdir(place.path.c_str(), 0700) < 0 && errno != EEXIST)
        throw posixError(errno, "make the folder", place.path);
    refuseForeignFolder(place.path);
    return place;
}

} // namespace

std::optional<TrashFolder> homeTrash(const Environment& environment) {
    const std::optional<std::string> data = environment.value("XDG_DATA_HOME");
    if (data && data->starts_with('/')) return TrashFolder{joinedPath(*data, "Trash")};
    const std::optional<std::string> home = homeDirectory(environment);
    if (!home) return std::nullopt;
    return TrashFolder{joinedPath(*home, ".local/share/Trash")};
}

bool isOnVolumeOf(const TrashFolder& trash, const std::string& directoryPath) {
    return volumeOf(nearestFolder(trash.path)) == volumeOf(directoryPath);
}

std::vector<TrashFolder> volumeTrashPlaces(const std::string& directoryPath) {
    const std::string topPath = volumeTop(directoryPath);
    const std::string user = std::to_string(::geteuid());
    const std::string sharedPath = joinedPath(topPath, ".Trash");
    const TrashFolder usersOwn{joinedPath(topPath, ".Trash-" + user), topPath};
    if (!isSharedTrash(sharedPath)) return {usersOwn};
    return {{joinedPath(sharedPath, user), topPath}, usersOwn};
}

TrashFolder volumeTrash(const std::string& directoryPath) {
    const auto places = volumeTrashPlaces(directoryPath);
    for (const TrashFolder& place : places) {
        try {
            return ownTrash(place);
        } catch (const PlatformError&) {
            // The next one may still do.
            if (place == places.back()) throw;
        }
    }
    return {};
}

void prepareTrash(const TrashFolder& trash) {
    makePrivateDirectory(joinedPath(trash.path, "files"));
    makePrivateDirectory(joinedPath(trash.path, "info"));
}

bool areEntangled(const TrashFolder& trash, const std::string& itemPath) {
    const auto trashAttributes = attributesAt(trash.path, 0);
    if (trashAttributes && liesWithin(parentPath(itemPath), identityOf(*trashAttributes))) return true;
    const auto item = attributesAt(itemPath, AT_SYMLINK_NOFOLLOW);
    return item && S_ISDIR(item->st_mode) && liesWithin(nearestFolder(trash.path), identityOf(*item));
}
