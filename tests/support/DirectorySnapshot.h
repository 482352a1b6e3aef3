#pragma once

#include <sys/stat.h>
#include <sys/xattr.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

// What can be said of a directory's entries and all below them, by relative path.
using DirectorySnapshot = std::map<std::string, std::string>;

inline std::string extendedAttributes(const std::string& path) {
    std::string names(XATTR_LIST_MAX, '\0');
    const ssize_t size = ::llistxattr(path.c_str(), names.data(), names.size());
    names.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    std::string text;
    for (std::size_t start = 0; start < names.size(); start = names.find('\0', start) + 1) {
        std::string value(XATTR_SIZE_MAX, '\0');
        const ssize_t length = ::lgetxattr(path.c_str(), &names[start], value.data(), value.size());
        value.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
        text += std::string(&names[start]) + "=" + value + " ";
    }
    return text;
}

enum class Described {
    asItself,   // with its file number; nothing happened to it while this stays the same
    asItsCopies // in what a faithful copy shares with it, such as the times of directories
};

inline std::string describeEntry(const std::filesystem::path& path, Described described) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return "vanished";
    std::string text = "mode " + std::to_string(status.st_mode) + ", owner " + std::to_string(status.st_uid) + ":" +
                       std::to_string(status.st_gid) + ", attributes " + extendedAttributes(path);
    if (described == Described::asItself) text += ", number " + std::to_string(status.st_ino);
    if (described == Described::asItsCopies || !S_ISDIR(status.st_mode))
        text += ", time " + std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
    if (S_ISLNK(status.st_mode)) text += ", to " + std::filesystem::read_symlink(path).string();
    if (S_ISREG(status.st_mode)) {
        std::ifstream file(path, std::ios::binary);
        text += ", bytes " + std::string(std::istreambuf_iterator<char>(file), {});
    }
    return text;
}

inline DirectorySnapshot snapshotOf(const std::string& directoryPath, Described described = Described::asItself) {
    DirectorySnapshot snapshot;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directoryPath))
        snapshot[entry.path().lexically_relative(directoryPath).string()] = describeEntry(entry.path(), described);
    return snapshot;
}

// The item itself and all below it, as its copies are to be. Empty for a missing item.
inline DirectorySnapshot portraitOf(const std::string& path) {
    const auto status = std::filesystem::symlink_status(path);
    if (!std::filesystem::exists(status)) return {};
    DirectorySnapshot portrait;
    if (std::filesystem::is_directory(status)) portrait = snapshotOf(path, Described::asItsCopies);
    portrait[""] = describeEntry(path, Described::asItsCopies);
    return portrait;
}
