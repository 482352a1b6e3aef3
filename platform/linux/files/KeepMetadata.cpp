#include "platform/linux/files/KeepMetadata.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <string_view>

#include "platform/linux/files/SystemCall.h"

namespace {

constexpr const char* accessControlList = "system.posix_acl_access";

// These speak of the old bytes: privileges granted to them and their checksums. Writing them in place would have
// cleared or renewed them.
constexpr std::array<std::string_view, 3> boundToBytes = {"security.capability", "security.ima", "security.evm"};

// What the process may not set, or the file system does not know, is left; what the disk fails to take is an error.
// Returns whether the call succeeded.
template <class Result>
bool permitted(Result result) {
    if (result >= 0) return true;
    if (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == ENOMEM) checked(result);
    return false;
}

// Returns the mode bits that may be kept: a set-id bit must not pass to an owner or group who never had it.
mode_t keepOwner(int descriptor, const SaveTarget& target) {
    const mode_t mode = target.old->st_mode & 07777;
    if (permitted(::fchown(descriptor, target.old->st_uid, target.old->st_gid))) return mode;
    constexpr auto unchanged = static_cast<uid_t>(-1);
    if (permitted(::fchown(descriptor, unchanged, target.old->st_gid))) return mode & ~mode_t{S_ISUID};
    return mode & ~mode_t{S_ISUID | S_ISGID};
}

void keepAttribute(int descriptor, const SaveTarget& target, const char* name, std::string& buffer) {
    const ssize_t size = ::lgetxattr(target.path.c_str(), name, buffer.data(), buffer.size());
    if (permitted(size)) permitted(::fsetxattr(descriptor, name, buffer.data(), static_cast<std::size_t>(size), 0));
}

// Each name ends with a NUL.
std::string attributeNames(const std::string& path) {
    std::string names(XATTR_LIST_MAX, '\0');
    const ssize_t size = ::llistxattr(path.c_str(), names.data(), names.size());
    if (size < 0 && errno == ENOTSUP) return {};
    names.resize(static_cast<std::size_t>(checked(size)));
    return names;
}

// The folder's default ACL, inherited at creation, must not open a file that had no ACL.
void dropInheritedList(int descriptor) {
    const int result = ::fremovexattr(descriptor, accessControlList);
    if (result != 0 && errno != ENODATA && errno != ENOTSUP) checked(result);
}

void keepExtendedAttributes(int descriptor, const SaveTarget& target) {
    const std::string names = attributeNames(target.path);
    std::string buffer(names.empty() ? 0 : XATTR_SIZE_MAX, '\0');
    bool hasList = false;
    for (const char* name = names.data(); name < names.data() + names.size(); name += std::strlen(name) + 1) {
        if (std::ranges::find(boundToBytes, name) != boundToBytes.end()) continue;
        hasList = hasList || std::strcmp(name, accessControlList) == 0;
        keepAttribute(descriptor, target, name, buffer);
    }
    if (!hasList) dropInheritedList(descriptor);
}

// File systems without modes of their own refuse to set one, and lose nothing.
void keepMode(int descriptor, mode_t mode) {
    const int result = ::fchmod(descriptor, mode);
    if (result != 0 && errno != EPERM && errno != ENOTSUP && errno != ENOSYS) checked(result);
}

} // namespace

void keepMetadata(int descriptor, const SaveTarget& target) {
    // The mode comes last: changing the owner clears set-id bits, and an ACL changes the group bits.
    const mode_t mode = keepOwner(descriptor, target);
    keepExtendedAttributes(descriptor, target);
    keepMode(descriptor, mode);
}
