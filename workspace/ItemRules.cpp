#include "workspace/ItemRules.h"

#include <cerrno>

#include "platform/PlatformError.h"
#include "workspace/PathComponents.h"
#include "workspace/WorkspacePathRules.h"

namespace {

std::optional<FileAttributes> attributes(const std::string& path, FollowLinks links, const FileManager& fileManager) {
    try {
        return fileManager.attributesOfItem(path, links);
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

bool isSameFile(const std::optional<FileAttributes>& left, const std::optional<FileAttributes>& right) {
    return left && right && left->fileNumber && left->fileNumber == right->fileNumber &&
           left->fileSystemNumber == right->fileSystemNumber;
}

std::string nearestExistingAncestor(const std::string& path, const FileManager& fileManager) {
    std::string ancestor = parentPath(path);
    while (ancestor != "/" && !fileManager.fileExists(ancestor)) ancestor = parentPath(ancestor);
    return ancestor;
}

// The way up is the system's, since a link on the way down makes the names lie about it.
bool liesWithin(std::string directoryPath, const FileAttributes& item, const FileManager& fileManager) {
    auto current = attributes(directoryPath, FollowLinks::yes, fileManager);
    while (current && !isSameFile(current, item)) {
        directoryPath += "/..";
        const auto above = attributes(directoryPath, FollowLinks::yes, fileManager);
        if (isSameFile(above, current)) return false;
        current = above;
    }
    return current.has_value();
}

} // namespace

bool isSameItem(const std::string& leftPath, const std::string& rightPath, const FileManager& fileManager) {
    return isSameFile(attributes(leftPath, FollowLinks::no, fileManager),
                      attributes(rightPath, FollowLinks::no, fileManager));
}

void requireOutsideItem(const std::string& itemPath, const std::string& destinationPath,
                        const FileManager& fileManager) {
    const auto item = attributes(itemPath, FollowLinks::no, fileManager);
    if (!item || item->type != FileType::directory) return;
    if (isAtOrWithin(destinationPath, itemPath) ||
        liesWithin(nearestExistingAncestor(destinationPath, fileManager), *item, fileManager)) {
        throw PlatformError(std::string(posixErrorDomain), EINVAL,
                            "“" + lastPathComponent(itemPath) + "” cannot be put into itself.");
    }
}

std::string resolvedRenameDestinationPath(const EditorDocumentDaemonRequest& request, const std::string& itemPath,
                                          const std::string& rootPath, const FileManager& fileManager) {
    const auto path = requestedPath(request.destinationPath, fileManager);
    if (path && (*path == itemPath || (isAtOrWithin(*path, rootPath) && isSameItem(itemPath, *path, fileManager))))
        return *path;
    return resolvedDestinationPath(request, itemPath, rootPath, SourceWithinRoot::required, fileManager);
}

bool isDirectoryItem(const std::string& path, const FileManager& fileManager) {
    const auto item = attributes(path, FollowLinks::no, fileManager);
    return item && item->type == FileType::directory;
}
