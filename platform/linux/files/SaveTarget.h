#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "platform/linux/Descriptor.h"

// The file that a save replaces: where a path leads once the symbolic links at its end are followed.
struct SaveTarget {
    std::string path{};               // no symbolic link at its end
    std::string name{};               // the last component of path
    Descriptor directory{};           // holds the name, also if it is moved meanwhile
    std::optional<struct stat> old{}; // absent when there is no file yet
};

// Fails when the path leads to anything but a regular file or a free name. A link that leads nowhere leads to a free
// name. Nothing is opened but the directory. A failure is thrown as std::system_error.
SaveTarget saveTarget(const std::string& path);
