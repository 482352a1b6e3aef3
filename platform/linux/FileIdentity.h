#pragma once

#include <sys/stat.h>

// What makes two names the same item while both exist.
struct FileIdentity {
    dev_t device{};
    ino_t inode{};

    bool operator==(const FileIdentity&) const = default;
};

inline FileIdentity identityOf(const struct stat& attributes) {
    return {attributes.st_dev, attributes.st_ino};
}
