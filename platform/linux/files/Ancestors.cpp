#include "platform/linux/files/Ancestors.h"

#include <fcntl.h>

#include "platform/linux/Descriptor.h"
#include "platform/linux/files/SystemCall.h"

namespace {

Descriptor directoryAt(int parent, const char* path) {
    return Descriptor(checked(::openat(parent, path, O_PATH | O_DIRECTORY | O_CLOEXEC)));
}

FileIdentity identityOfOpen(int descriptor) {
    struct stat attributes {};
    checked(::fstat(descriptor, &attributes));
    return identityOf(attributes);
}

} // namespace

bool liesWithin(const std::string& directoryPath, const FileIdentity& ancestor) {
    Descriptor directory = directoryAt(AT_FDCWD, directoryPath.c_str());
    FileIdentity identity = identityOfOpen(directory.get());
    while (identity != ancestor) {
        directory = directoryAt(directory.get(), "..");
        const FileIdentity parent = identityOfOpen(directory.get());
        if (parent == identity) return false; // the root is its own parent
        identity = parent;
    }
    return true;
}
