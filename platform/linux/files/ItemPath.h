#pragma once

#include <string>
#include <string_view>

// The two halves of an absolute path without a trailing slash, as system calls want them.

// The folder that holds the item; "/" for an item at the top, "." for a bare name.
inline std::string parentPath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

inline std::string lastName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

inline std::string joinedPath(const std::string& directoryPath, std::string_view name) {
    std::string path = directoryPath;
    if (!path.ends_with('/')) path += '/';
    path += name;
    return path;
}

inline bool isAtOrBelow(std::string_view path, std::string_view directoryPath) {
    if (!path.starts_with(directoryPath)) return false;
    return path.size() == directoryPath.size() || directoryPath.ends_with('/') || path[directoryPath.size()] == '/';
}
