#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/FileManager.h"
#include "shared/EditorDocumentDaemonRequest.h"

// How the free text of a request becomes paths that the daemon may act upon. Every function may be called on any queue.

// The one normal form of a path: a leading tilde expanded, a relative path taken from the current directory, then
// standardised. Links are not resolved.
std::string normalizedPath(std::string_view path, const FileManager& fileManager);

// The field without surrounding white space; absent when nothing is left.
std::optional<std::string> presentField(const std::optional<std::string>& field);

// The normalised path that the field names; absent when nothing but white space is left of it. White space around a
// path is dropped, unless there is an item to whose name it belongs: meant is then that one, and not what is beside it.
std::optional<std::string> requestedPath(const std::optional<std::string>& field, const FileManager& fileManager);

// Throws 2200 unless the path is the root or lies within it. Both are in normal form.
void requirePath(std::string_view path, std::string_view withinRootPath);

// The normalised root, an existing directory. Throws 2100 and 2101. It need not be an open workspace.
std::string requiredWorkspaceRootPath(const EditorDocumentDaemonRequest& request, const FileManager& fileManager);

// The normalised path of the request. Throws 2102. It may lie anywhere and need not exist.
std::string requiredItemPath(const EditorDocumentDaemonRequest& request, const FileManager& fileManager);

std::string requestedWorkspaceItemName(const EditorDocumentDaemonRequest& request, std::string_view defaultName);

// The directory into which a new item goes: the request's path if that is a directory, else its parent. Throws 2200.
std::string creationAnchorDirectoryPath(const EditorDocumentDaemonRequest& request, std::string_view rootPath,
                                        const FileManager& fileManager);

// A free path for the name: "notes.txt", then "notes1.txt", "notes2.txt". A blank name becomes "untitled".
std::string uniqueCreationPath(std::string_view directoryPath, std::string_view proposedName,
                               const FileManager& fileManager);

// A free path beside the source: "report copy.txt", then "report copy 2.txt". Throws 2200.
std::string uniqueDuplicatePath(std::string_view sourcePath, std::string_view rootPath, const FileManager& fileManager);

enum class SourceWithinRoot { notRequired, required };

// Where the source is to go; into the destination when that is an existing directory. Throws 2103 and 2200. Whether
// the place is free is the caller's question.
std::string resolvedDestinationPath(const EditorDocumentDaemonRequest& request, std::string_view sourcePath,
                                    std::string_view rootPath, SourceWithinRoot sourceWithinRoot,
                                    const FileManager& fileManager);
