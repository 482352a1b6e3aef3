#pragma once

#include <string>

// Gives the item another path, links not followed. The destination must be free (EEXIST), which is also so for a second
// hard link of the item; only a name that differs in nothing but case, on a file system that ignores case, is not in
// the item's own way. A folder into itself is refused (EINVAL). To another file system the item is copied and then
// removed. Throws PlatformError; everything is then as it was, unless the message says that a part of the source is
// gone, and then the destination holds the whole.
void moveItem(const std::string& sourcePath, const std::string& destinationPath);
