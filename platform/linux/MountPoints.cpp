#include "platform/linux/MountPoints.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/linux/files/ItemPath.h"

namespace {

bool isOctal(std::string_view digits) {
    return digits.size() == 3 && std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '7'; });
}

} // namespace

MountPoints::MountPoints(int directory) {
    std::error_code error;
    const auto real = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(directory), error).string();
    if (error) return;
    std::ifstream table("/proc/self/mountinfo");
    for (std::string line; std::getline(table, line);) {
        const std::string path = mountPointInLine(line);
        if (path == real || !isAtOrBelow(path, real)) continue;
        struct stat status {};
        if (::stat(parentPath(path).c_str(), &status) == 0) mountPoints.push_back({identityOf(status), lastName(path)});
    }
}

bool MountPoints::contains(const FileIdentity& directory, std::string_view name) const {
    return std::ranges::any_of(mountPoints, [&](const MountPoint& mountPoint) {
        return mountPoint.directory == directory && mountPoint.name == name;
    });
}

bool MountPoints::anyIn(const FileIdentity& directory) const {
    return std::ranges::any_of(mountPoints,
                               [&](const MountPoint& mountPoint) { return mountPoint.directory == directory; });
}

// The fifth field, in which blanks and the like stand as a backslash and three octal digits.
std::string mountPointInLine(std::string_view line) {
    for (int field = 1; field < 5; ++field) {
        const std::size_t blank = line.find(' ');
        if (blank == line.npos) return {};
        line.remove_prefix(blank + 1);
    }
    line = line.substr(0, line.find(' '));
    std::string path;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\\' && isOctal(line.substr(i + 1, 3))) {
            path += static_cast<char>((line[i + 1] - '0') * 64 + (line[i + 2] - '0') * 8 + (line[i + 3] - '0'));
            i += 3;
        } else {
            path += line[i];
        }
    }
    return path;
}
