#pragma once

#include <string>
#include <vector>

#include "platform/Environment.h"
#include "tools/doctor/Finding.h"

// What the system lets this process do.

// Whether a change is really told, tried out in a folder of its own for temporary files.
std::vector<Finding> eventFindings(const std::string& folderPath);

// In which order names are listed.
std::vector<Finding> languageFindings(const Environment& environment);

// Where what is deleted in the folder goes. Makes nothing.
std::vector<Finding> trashFindings(const Environment& environment, const std::string& folderPath);
