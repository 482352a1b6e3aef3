#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "tests/support/DirectorySnapshot.h"

// What an item and all below it are like, by relative path, in what a faithful copy shares with its source: type, mode,
// owner, modification time, extended attributes, and bytes or the place where a link leads. Empty for a missing item.
using ItemPortrait = std::map<std::string, std::string>;

inline std::string describeItem(const std::filesystem::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return "vanished";
    std::string text = "mode " + std::to_string(status.st_mode) + ", owner " + std::to_string(status.st_uid) + ":" +
                       std::to_string(status.st_gid) + ", time " + std::to_string(status.st_mtim.tv_sec) + "." +
                       std::to_string(status.st_mtim.tv_nsec) + ", attributes " + extendedAttributes(path);
    if (S_ISLNK(status.st_mode)) text += ", to " + std::filesystem::read_symlink(path).string();
    if (S_ISREG(status.st_mode)) {
        std::ifstream file(path, std::ios::binary);
        text += ", bytes " + std::string(std::istreambuf_iterator<char>(file), {});
    }
    return text;
}

inline ItemPortrait portraitOf(const std::string& path) {
    ItemPortrait portrait;
    const auto status = std::filesystem::symlink_status(path);
    if (!std::filesystem::exists(status)) return portrait;
    portrait[""] = describeItem(path);
    if (!std::filesystem::is_directory(status)) return portrait;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
        portrait[entry.path().lexically_relative(path).string()] = describeItem(entry.path());
    return portrait;
}
