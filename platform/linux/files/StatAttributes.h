#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/FileManager.h"

// The kernel's description of an item as the records of the seam.

FileType fileType(mode_t mode);
// Without the date of creation, for which the system is asked apart.
FileAttributes fileAttributes(const struct stat& status);
FileAttributes fileAttributes(const struct stat& status, int descriptor);
FileAttributes fileAttributes(const struct stat& status, const std::string& path, FollowLinks links);
