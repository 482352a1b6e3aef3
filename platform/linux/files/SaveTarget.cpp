#include "platform/linux/files/SaveTarget.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <string_view>

#include "platform/linux/files/ItemPath.h"
#include "platform/linux/files/SystemCall.h"

namespace {

constexpr int linkLimit = 40; // the kernel's own

// Whether something is there; any other failure than absence is thrown.
bool isPresent(int result) {
    if (result != 0 && errno == ENOENT) return false;
    checked(result);
    return true;
}

void refuseUnlessRegular(const struct stat& status) {
    if (S_ISDIR(status.st_mode)) throw std::system_error(EISDIR, std::generic_category());
    if (!S_ISREG(status.st_mode)) throw std::system_error(EOPNOTSUPP, std::generic_category());
}

std::string linkDestination(const std::string& linkPath) {
    std::array<char, PATH_MAX> buffer;
    const ssize_t size = checked(::readlink(linkPath.c_str(), buffer.data(), buffer.size()));
    const std::string_view destination(buffer.data(), static_cast<std::size_t>(size));
    return destination.starts_with('/') ? std::string(destination) : joinedPath(parentPath(linkPath), destination);
}

// Following by hand walks past the kernel's guards, which keep one user's links in a shared directory from leading
// another user astray, and which know a loop; so the kernel follows first.
void askKernelToFollow(const std::string& path) {
    struct stat status {};
    if (isPresent(::stat(path.c_str(), &status))) refuseUnlessRegular(status);
}

void followLinks(SaveTarget& target) {
    for (int followed = 0;; ++followed) {
        struct stat status {};
        if (!isPresent(::lstat(target.path.c_str(), &status))) return;
        if (!S_ISLNK(status.st_mode)) {
            refuseUnlessRegular(status);
            target.old = status;
            return;
        }
        if (followed == 0) askKernelToFollow(target.path);
        if (followed == linkLimit) throw std::system_error(ELOOP, std::generic_category());
        target.path = linkDestination(target.path);
    }
}

// A directory that may be written but not listed serves as well; only flushing it is then impossible.
Descriptor openDirectory(const std::string& path) {
    const int listed = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (listed < 0 && errno == EACCES)
        return Descriptor(checked(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)));
    return Descriptor(checked(listed));
}

} // namespace

SaveTarget saveTarget(const std::string& path) {
    SaveTarget target{.path = path};
    followLinks(target);
    target.name = lastName(target.path);
    target.directory = openDirectory(parentPath(target.path));
    return target;
}
