#pragma once

#include <cerrno>
#include <string>
#include <string_view>

#include "platform/PlatformError.h"

// The path as the system calls take it. A path that holds a NUL names nothing and fails like a missing item; cut off at
// the NUL it would name another one.
inline const char* cPath(const std::string& path, std::string_view action) {
    if (path.find('\0') != std::string::npos) throw posixError(ENOENT, action, path);
    return path.c_str();
}
