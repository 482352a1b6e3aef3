#pragma once

#include <string>
#include <string_view>

// Makes a folder for this user alone, whose name begins as given and is nobody else's; returns its path. Without a
// parent it lies where temporary files go, which TMPDIR may say. Throws PlatformError.
std::string makeTemporaryFolder(std::string_view nameBeginning);
std::string makeTemporaryFolder(std::string parentPath, std::string_view nameBeginning);
