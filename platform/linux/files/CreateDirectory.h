#pragma once

#include <string>
#include <vector>

// Makes the directory and whatever is missing above it; an existing directory, or a link to one, is no error. Returns
// what it made, outermost first. When it fails, the directories made on the way are gone again.
std::vector<std::string> createDirectory(const std::string& path);

// Removes them from the last to the first, and leaves those that are not empty.
void removeEmptyDirectories(const std::vector<std::string>& paths);
