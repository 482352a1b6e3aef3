#pragma once

#include <cstdint>
#include <string>

#include "platform/FileManager.h"

// Reads a file that others may be writing, as FileManager::contentsOfFile promises: bytes and attributes belong
// together. A file that changes during the reading is read again a few times. If it never holds still, the last reading
// comes with the attributes from before it, so that a later comparison sees the change.
FileContents contentsOfFile(const std::string& path, std::uint64_t sizeLimit);
