#pragma once

#include <string>

// Moves an item to another file system: a complete copy appears under the destination's name, which must be free, and
// is flushed to the disk; then the source is removed. When that fails at its first step the copy goes again, and all is
// as before. When a part of the source is already gone, the copy stays, so that nothing is lost.
// Throws PlatformError, with EEXIST for a taken destination, and IncompleteRemoval where the copy has stayed.
void moveByCopying(const std::string& sourcePath, const std::string& destinationPath);
