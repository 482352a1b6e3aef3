#include "workspace/WorkspacePathRules.h"

#include <algorithm>

#include "shared/Whitespace.h"
#include "workspace/PathComponents.h"
#include "workspace/WorkspaceErrors.h"

namespace {

// "~" and "~user" as the first component stand for a home; of an unknown user they stand for themselves.
std::string expandingTilde(std::string_view path, const FileManager& fileManager) {
    if (!path.starts_with('~')) return std::string(path);
    const std::size_t nameEnd = std::min(path.find('/'), path.size());
    const auto home = fileManager.homeDirectoryPath(path.substr(1, nameEnd - 1));
    if (!home) return std::string(path);
    return *home + std::string(path.substr(nameEnd));
}

// The names that every directory has, also one that is still to be made.
bool isNameOfEveryDirectory(std::string_view name) {
    return name == "." || name == "..";
}

// A name is taken also by a link that leads nowhere.
template <typename NameForCounter>
std::string firstFreePath(std::string_view directoryPath, const FileManager& fileManager,
                          NameForCounter nameForCounter) {
    for (unsigned counter = 0;; ++counter) {
        const std::string name = nameForCounter(counter);
        std::string path = standardizedPath(appendingPathComponent(directoryPath, name));
        if (!isNameOfEveryDirectory(name) && !fileManager.itemExists(path)) return path;
    }
}

} // namespace

std::string normalizedPath(std::string_view path, const FileManager& fileManager) {
    const std::string expanded = expandingTilde(path, fileManager);
    if (expanded.starts_with('/')) return standardizedPath(expanded);
    return standardizedPath(fileManager.currentDirectoryPath() + '/' + expanded);
}

std::optional<std::string> presentField(const std::optional<std::string>& field) {
    const std::string_view text = field ? trimmed(*field) : std::string_view();
    if (text.empty()) return std::nullopt;
    return std::string(text);
}

std::optional<std::string> requestedPath(const std::optional<std::string>& field, const FileManager& fileManager) {
    const auto text = presentField(field);
    if (!text) return std::nullopt;
    if (*text != *field) {
        std::string path = normalizedPath(*field, fileManager);
        if (fileManager.itemExists(path)) return path;
    }
    return normalizedPath(*text, fileManager);
}

void requirePath(std::string_view path, std::string_view withinRootPath) {
    if (!isAtOrWithin(path, withinRootPath)) throw pathOutsideWorkspaceRootError();
}

std::string requiredWorkspaceRootPath(const EditorDocumentDaemonRequest& request, const FileManager& fileManager) {
    const auto rootPath = requestedPath(request.rootPath, fileManager);
    if (!rootPath) throw missingWorkspaceRootPathError();
    if (!fileManager.isDirectory(*rootPath)) throw workspaceRootUnavailableError();
    return *rootPath;
}

std::string requiredItemPath(const EditorDocumentDaemonRequest& request, const FileManager& fileManager) {
    const auto path = requestedPath(request.path, fileManager);
    if (!path) throw missingItemPathError();
    return *path;
}

std::string requestedWorkspaceItemName(const EditorDocumentDaemonRequest& request, std::string_view defaultName) {
    return presentField(request.name).value_or(std::string(defaultName));
}

std::string creationAnchorDirectoryPath(const EditorDocumentDaemonRequest& request, std::string_view rootPath,
                                        const FileManager& fileManager) {
    // A blank path is deliberately not the root: it is normalised like any other.
    std::string path = !request.path
                           ? normalizedPath(rootPath, fileManager)
                           : requestedPath(request.path, fileManager).value_or(normalizedPath("", fileManager));
    requirePath(path, rootPath);
    // The root is one even if it has just gone; what is beside it lies outside.
    return path == rootPath || fileManager.isDirectory(path) ? path : parentPath(path);
}

std::string uniqueCreationPath(std::string_view directoryPath, std::string_view proposedName,
                               const FileManager& fileManager) {
    const std::string_view trimmedName = trimmed(proposedName);
    const std::string candidatePath =
        appendingPathComponent(directoryPath, trimmedName.empty() ? "untitled" : trimmedName);
    const NameParts parts = nameParts(lastPathComponent(candidatePath));
    return firstFreePath(directoryPath, fileManager, [&](unsigned counter) {
        return nameWithSuffix(parts, counter == 0 ? "" : std::to_string(counter));
    });
}

std::string uniqueDuplicatePath(std::string_view sourcePath, std::string_view rootPath,
                                const FileManager& fileManager) {
    requirePath(sourcePath, rootPath);
    const NameParts parts = nameParts(lastPathComponent(sourcePath));
    return firstFreePath(parentPath(sourcePath), fileManager, [&](unsigned counter) {
        return nameWithSuffix(parts, counter == 0 ? " copy" : " copy " + std::to_string(counter + 1));
    });
}

std::string resolvedDestinationPath(const EditorDocumentDaemonRequest& request, std::string_view sourcePath,
                                    std::string_view rootPath, SourceWithinRoot sourceWithinRoot,
                                    const FileManager& fileManager) {
    const auto requested = requestedPath(request.destinationPath, fileManager);
    if (!requested) throw missingDestinationPathError();
    std::string path = *requested;
    if (sourceWithinRoot == SourceWithinRoot::required) requirePath(sourcePath, rootPath);
    requirePath(path, rootPath);
    if (fileManager.isDirectory(path)) {
        path = standardizedPath(appendingPathComponent(path, lastPathComponent(sourcePath)));
    }
    requirePath(path, rootPath);
    return path;
}
