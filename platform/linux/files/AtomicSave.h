#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/FileManager.h"

// Puts the new file together beside the old one and flushes it to the disk, as FileManager::prepareReplacement
// promises. Other hard links of the file keep the old bytes: writing in place would for a while show everyone half a
// file.
std::unique_ptr<FileReplacement> prepareReplacement(const std::string& path, std::string_view data);
