#pragma once

#include <optional>
#include <string>

#include "platform/FileManager.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "workspace/ManagedWorkspace.h"

// What holds for the items that a mutation is about. Links are not followed to them.

// Whether both paths name one item, as two spellings do on a file system that ignores case. False when either is gone.
bool isSameItem(const std::string& leftPath, const std::string& rightPath, const FileManager& fileManager);

// Throws EINVAL when the destination is the item or would lie within it, be it through a link or a mount.
void requireOutsideItem(const std::string& itemPath, const std::string& destinationPath,
                        const FileManager& fileManager);

// Where a rename leads: to the item's own path, also when that is a folder, or else as every destination is resolved.
// Throws 2103 and 2200.
std::string resolvedRenameDestinationPath(const EditorDocumentDaemonRequest& request, const std::string& itemPath,
                                          const std::string& rootPath, const FileManager& fileManager);

bool isDirectoryItem(const std::string& path, const FileManager& fileManager);
