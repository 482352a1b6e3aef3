#pragma once

#include <sys/stat.h>

#include "platform/FileManager.h"

// The kernel's description of an item as the records of the seam.

FileType fileType(mode_t mode);
FileAttributes fileAttributes(const struct stat& status);
