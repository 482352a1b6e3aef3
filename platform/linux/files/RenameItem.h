#pragma once

#include <string>

// Renames an item only where nothing stands at the destination: in one step, or where the file system does not know
// how, after a look. A failure is thrown as std::system_error: EEXIST for a taken destination (also when it is the item
// itself under another name), EXDEV when it lies on another file system.
void renameWithoutReplacing(const std::string& sourcePath, const std::string& destinationPath);
