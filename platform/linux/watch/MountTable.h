#pragma once

#include <string>
#include <string_view>
#include <vector>

struct MountPoint {
    std::string path{};
    int mountID{};

    auto operator<=>(const MountPoint&) const = default;
};

// The table of mounts in the kernel's text form, sorted by path. Lines of another form are left out.
std::vector<MountPoint> mountPoints(std::string_view mountInfo);
