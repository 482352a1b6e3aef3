#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstddef>
#include <stdexcept>
#include <string>

#include "platform/linux/Descriptor.h"

// Folders within folders, further down than any path can name, and a limit on descriptors that shows who holds one open
// for each of them.

inline const std::string deepName(200, 'd');

inline void makeDeepFolder(const std::string& path, std::size_t depth) {
    ::mkdir(path.c_str(), 0755);
    Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY));
    for (std::size_t i = 0; i < depth; ++i) {
        if (::mkdirat(folder.get(), deepName.c_str(), 0755) != 0) throw std::runtime_error("cannot make folder");
        folder = Descriptor(::openat(folder.get(), deepName.c_str(), O_RDONLY | O_DIRECTORY));
    }
    if (::symlinkat("bottom", folder.get(), "link") != 0) throw std::runtime_error("cannot make link");
}

// The number of folders below the item down to the link; 0 for an item that is not of this kind.
inline std::size_t depthOfFolder(const std::string& path) {
    std::size_t depth = 0;
    Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY));
    while (folder) {
        if (struct stat status{}; ::fstatat(folder.get(), "link", &status, AT_SYMLINK_NOFOLLOW) == 0) return depth;
        folder = Descriptor(::openat(folder.get(), deepName.c_str(), O_RDONLY | O_DIRECTORY));
        ++depth;
    }
    return 0;
}

class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t limit) {
        ::getrlimit(RLIMIT_NOFILE, &before);
        const rlimit lowered{limit, before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &lowered);
    }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &before); }

private:
    rlimit before{};
};
