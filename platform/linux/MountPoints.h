#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/FileIdentity.h"

// The names below a directory over which something is mounted. A directory tells, beside such a name, the number of
// the item that the mount hides.
class MountPoints {
public:
    // As mounted at this moment, at any depth below the open directory.
    explicit MountPoints(int directory);

    bool contains(const FileIdentity& directory, std::string_view name) const;
    bool anyIn(const FileIdentity& directory) const;

private:
    struct MountPoint {
        FileIdentity directory{};
        std::string name{};
    };

    std::vector<MountPoint> mountPoints{};
};

// The place of a mount, out of a line of /proc/self/mountinfo; empty when the line has none.
std::string mountPointInLine(std::string_view line);
