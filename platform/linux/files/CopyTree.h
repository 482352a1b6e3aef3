#pragma once

#include <string>

// Copies a folder (not a link to one) with all below it, however deep or wide, into a new folder.
// While it grows nobody else may look into it; each folder gets its own mode and times once it is complete. Every name
// becomes a file of its own, also where two names are hard links of one file.
// Stops at the first failure, thrown as PlatformError with the path in the source; what has been made is left to the
// caller. A tree that contains the new folder, as through a mount, is refused (EINVAL).
void copyTree(const std::string& sourcePath, const std::string& newPath);
