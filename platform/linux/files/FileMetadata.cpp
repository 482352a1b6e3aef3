#include "platform/linux/files/FileMetadata.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <string_view>
#include <vector>

#include "platform/linux/files/SystemCall.h"

namespace {

constexpr std::size_t listLimit = 64 * 1024; // the system's own bound for the names, and for one value
constexpr auto accessList = "system.posix_acl_access";
constexpr auto defaultAccessList = "system.posix_acl_default";

bool isNotPossibleHere(int errorNumber) {
    return errorNumber == EPERM || errorNumber == ENOTSUP;
}

void checkedWherePossible(int result) {
    if (result < 0 && !isNotPossibleHere(errno)) checked(result);
}

std::array<timespec, 2> timesOf(const struct stat& attributes) {
    return {attributes.st_atim, attributes.st_mtim};
}

enum class Owner { kept, changed };

Owner ownerKept(int result) {
    checkedWherePossible(result);
    return result == 0 ? Owner::kept : Owner::changed;
}

// A set-user-ID program must not become one of another user.
mode_t modeOfCopy(const struct stat& attributes, Owner owner) {
    return attributes.st_mode & (owner == Owner::kept ? 07777 : 01777);
}

Owner copyOwner(int destination, const struct stat& attributes) {
    const Owner owner = ownerKept(::fchown(destination, attributes.st_uid, attributes.st_gid));
    if (owner == Owner::changed) checkedWherePossible(::fchown(destination, static_cast<uid_t>(-1), attributes.st_gid));
    return owner;
}

void copyAttribute(int source, int destination, const char* name, std::vector<char>& value) {
    value.resize(listLimit);
    const ssize_t size = ::fgetxattr(source, name, value.data(), value.size());
    if (size < 0 && errno == ENODATA) return;
    checkedWherePossible(::fsetxattr(destination, name, value.data(), static_cast<std::size_t>(checked(size)), 0));
}

std::string_view attributeNames(int source, std::vector<char>& buffer) {
    std::size_t size = 1024; // enough for nearly every file
    while (true) {
        buffer.resize(size);
        const ssize_t count = ::flistxattr(source, buffer.data(), buffer.size());
        if (count >= 0) return {buffer.data(), static_cast<std::size_t>(count)};
        if (isNotPossibleHere(errno)) return {};
        if (errno != ERANGE || size == listLimit) checked(count);
        size = listLimit;
    }
}

void removeAttribute(int descriptor, const char* name) {
    const int result = ::fremovexattr(descriptor, name);
    if (result < 0 && errno != ENODATA) checkedWherePossible(result);
}

void copyExtendedAttributes(int source, int destination, mode_t mode) {
    // What the folder around the copy has given to it must not admit anybody to whom the source is closed.
    removeAttribute(destination, accessList);
    if (S_ISDIR(mode)) removeAttribute(destination, defaultAccessList);

    std::vector<char> buffer;
    std::vector<char> value;
    std::string_view names = attributeNames(source, buffer);
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find('\0'));
        if (!name.starts_with("security.")) copyAttribute(source, destination, name.data(), value);
        names.remove_prefix(name.size() + 1);
    }
}

} // namespace

void copyMetadata(int source, int destination, const struct stat& attributes) {
    const Owner owner = copyOwner(destination, attributes);
    copyExtendedAttributes(source, destination, attributes.st_mode);
    checkedWherePossible(::fchmod(destination, modeOfCopy(attributes, owner)));
    checked(::futimens(destination, timesOf(attributes).data()));
}

void setMetadata(int directory, const char* name, const struct stat& attributes) {
    const Owner owner =
        ownerKept(::fchownat(directory, name, attributes.st_uid, attributes.st_gid, AT_SYMLINK_NOFOLLOW));
    if (!S_ISLNK(attributes.st_mode)) {
        checkedWherePossible(::fchmodat(directory, name, modeOfCopy(attributes, owner), AT_SYMLINK_NOFOLLOW));
    }
    checked(::utimensat(directory, name, timesOf(attributes).data(), AT_SYMLINK_NOFOLLOW));
}
