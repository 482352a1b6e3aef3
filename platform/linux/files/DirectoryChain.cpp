#include "platform/linux/files/DirectoryChain.h"

#include <fcntl.h>

#include "platform/linux/files/SystemCall.h"

namespace {

constexpr std::size_t openLevels = 16;

Descriptor openDirectory(int parent, const char* name, int followFlag) {
    return Descriptor(checked(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | followFlag)));
}

FileIdentity identityOfOpen(int descriptor) {
    struct stat attributes {};
    checked(::fstat(descriptor, &attributes));
    return identityOf(attributes);
}

} // namespace

DirectoryChain::DirectoryChain(const char* topPath) {
    levels.push_back({.name = topPath, .descriptor = openDirectory(AT_FDCWD, topPath, O_NOFOLLOW)});
}

void DirectoryChain::enter(const char* name) {
    Descriptor descriptor = openDirectory(get(), name, O_NOFOLLOW);
    closeDistantLevel();
    levels.push_back({.name = name, .descriptor = std::move(descriptor)});
}

void DirectoryChain::leave() {
    Level& parent = levels[levels.size() - 2];
    if (!parent.descriptor) reopen(parent, get());
    levels.pop_back();
}

std::string DirectoryChain::path() const {
    std::string path = levels.front().name;
    for (std::size_t i = 1; i < levels.size(); ++i) path += "/" + levels[i].name;
    return path;
}

void DirectoryChain::closeDistantLevel() {
    if (levels.size() < openLevels) return;
    Level& level = levels[levels.size() - openLevels];
    if (!level.descriptor) return;
    level.identity = identityOfOpen(level.descriptor.get());
    level.descriptor = Descriptor();
}

void DirectoryChain::reopen(Level& level, int child) const {
    Descriptor descriptor = openDirectory(child, "..", 0);
    if (identityOfOpen(descriptor.get()) != level.identity) {
        throw std::system_error(ENOENT, std::generic_category());
    }
    level.descriptor = std::move(descriptor);
}
