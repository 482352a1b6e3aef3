#include "platform/linux/files/RenameItem.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>

#include "platform/linux/files/SystemCall.h"

void renameWithoutReplacing(const std::string& sourcePath, const std::string& destinationPath) {
    const char* source = sourcePath.c_str();
    const char* destination = destinationPath.c_str();
    if (::renameat2(AT_FDCWD, source, AT_FDCWD, destination, RENAME_NOREPLACE) == 0) return;
    if (errno != EINVAL && errno != ENOSYS) checked(-1);

    struct stat attributes {};
    if (::lstat(destination, &attributes) == 0) throw std::system_error(EEXIST, std::generic_category());
    if (errno != ENOENT) checked(-1);
    checked(::rename(source, destination));
}
