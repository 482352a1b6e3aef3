#pragma once

#include <string>

// Copies the item, links as links, to a name that must be free (EEXIST; a link that leads nowhere takes its name too).
// The copy keeps data with holes, owner where permitted, mode, times, extended attributes and access lists; blocks are
// shared where the file system can. It is put together out of sight beside the destination and gets its name when it is
// complete, so that nobody ever meets half a copy, also when the process dies.
// Sockets and devices are refused (ENOTSUP), also within a folder. A destination that is the item itself or lies within
// it, by name or in fact, is refused (EINVAL) before anything is made. Throws PlatformError and leaves nothing behind.
void copyItem(const std::string& sourcePath, const std::string& destinationPath);
