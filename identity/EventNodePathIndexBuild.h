#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "identity/EventNodePathIndex.h"
#include "platform/DirectoryWalking.h"
#include "platform/FileManager.h"

// The index of all that is at or within the root at this moment: hidden items too, but nothing behind a link, below an
// unreadable directory or, when the root is missing or no directory, below the root. Paths are in normal form.
EventNodePathIndex buildWorkspaceEventNodePathIndex(const std::string& rootPath, const DirectoryWalking& walking,
                                                    const FileManager& fileManager);

// Enters the path, should there be an item, and all below it. Does nothing for a path outside the index's root.
void indexWorkspaceEventNodePathSubtree(const std::string& path, EventNodePathIndex& index,
                                        const DirectoryWalking& walking, const FileManager& fileManager);

// How long a build is to wait at its beginning: a positive decimal number of milliseconds; anything else is no delay.
std::chrono::milliseconds eventNodeIndexDelay(const std::optional<std::string>& value);
