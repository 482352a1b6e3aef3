#pragma once

#include <string>

#include "platform/linux/FileIdentity.h"

// Whether the directory at the path (links followed) is the given one or lies below it, whatever names, links or mounts
// lead there. A failure is thrown as std::system_error, ENOENT when nothing is at the path.
bool liesWithin(const std::string& directoryPath, const FileIdentity& ancestor);
