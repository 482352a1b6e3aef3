#include "platform/linux/files/CreateDirectory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/linux/files/CPath.h"

namespace {

bool isDirectory(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string parentOf(const std::string& path) {
    const auto nameEnd = path.find_last_not_of('/');
    const auto slash = nameEnd == std::string::npos ? 0 : path.rfind('/', nameEnd);
    if (slash == std::string::npos) return ".";
    return path.substr(0, slash == 0 ? 1 : slash);
}

// The path and those above it that are not directories, the innermost first.
std::vector<std::string> missingDirectories(const std::string& path) {
    std::vector<std::string> missing;
    std::string current = path;
    while (!isDirectory(current)) {
        missing.push_back(current);
        std::string parent = parentOf(current);
        if (parent == current) break;
        current = std::move(parent);
    }
    return missing;
}

} // namespace

std::vector<std::string> createDirectory(const std::string& path) {
    constexpr std::string_view action = "create the directory";
    const std::vector<std::string> missing = missingDirectories(cPath(path, action));
    std::vector<std::string> made;
    for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
        if (::mkdir(next->c_str(), 0777) == 0) {
            made.push_back(*next);
            continue;
        }
        const int mkdirError = errno;
        if (mkdirError == EEXIST && isDirectory(*next)) continue; // someone else was faster
        removeEmptyDirectories(made);
        throw posixError(mkdirError == EEXIST && *next != path ? ENOTDIR : mkdirError, action, path);
    }
    return made;
}

void removeEmptyDirectories(const std::vector<std::string>& paths) {
    for (auto path = paths.rbegin(); path != paths.rend(); ++path) ::rmdir(path->c_str());
}
