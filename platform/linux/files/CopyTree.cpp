#include "platform/linux/files/CopyTree.h"

#include <fcntl.h>

#include <vector>

#include "platform/PlatformError.h"
#include "platform/linux/DirectoryStream.h"
#include "platform/linux/FileIdentity.h"
#include "platform/linux/files/CopyEntry.h"
#include "platform/linux/files/DirectoryChain.h"
#include "platform/linux/files/FileMetadata.h"
#include "platform/linux/files/ItemPath.h"

namespace {

// A folder on the way down, with the folders in it that are still to be copied.
struct Level {
    struct stat attributes {}; // taken before reading it, which changes its access time
    std::vector<std::string> directoryNames{};
};

// A copy in progress. itemName is what is being worked on in the present directories of the chains, for the message.
struct TreeCopy {
    DirectoryChain source;
    DirectoryChain destination;
    FileIdentity newDirectory{};
    std::vector<Level> levels{};
    std::string itemName{};
};

bool isDirectory(int parent, const dirent64& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    return S_ISDIR(attributesOfEntry(parent, entry.d_name).st_mode);
}

struct stat attributesOfOpen(int descriptor) {
    struct stat attributes {};
    checked(::fstat(descriptor, &attributes));
    return attributes;
}

// Copies all but the folders of the present directory; these are left to the new level.
void beginLevel(TreeCopy& copy) {
    copy.levels.push_back({.attributes = attributesOfOpen(copy.source.get())});
    Level& level = copy.levels.back();
    if (identityOf(level.attributes) == copy.newDirectory) throw std::system_error(EINVAL, std::generic_category());
    DirectoryStream stream(copy.source.get());
    while (const dirent64* entry = stream.next()) {
        copy.itemName = entry->d_name;
        if (isDirectory(copy.source.get(), *entry)) {
            level.directoryNames.push_back(entry->d_name);
        } else {
            copyEntry(copy.source.get(), entry->d_name, copy.destination.get(), entry->d_name);
        }
    }
    copy.itemName.clear();
}

void enterDirectory(TreeCopy& copy, const std::string& name) {
    copy.itemName = name;
    checked(::mkdirat(copy.destination.get(), name.c_str(), 0700));
    copy.destination.enter(name.c_str());
    copy.source.enter(name.c_str());
    copy.itemName.clear();
}

void endLevel(TreeCopy& copy) {
    copyMetadata(copy.source.get(), copy.destination.get(), copy.levels.back().attributes);
    copy.levels.pop_back();
    if (copy.levels.empty()) return;
    copy.source.leave();
    copy.destination.leave();
}

void run(TreeCopy& copy) {
    copy.newDirectory = identityOf(attributesOfOpen(copy.destination.get()));
    beginLevel(copy);
    while (!copy.levels.empty()) {
        std::vector<std::string>& directoryNames = copy.levels.back().directoryNames;
        if (directoryNames.empty()) {
            endLevel(copy);
        } else {
            const std::string name = std::move(directoryNames.back());
            directoryNames.pop_back();
            enterDirectory(copy, name);
            beginLevel(copy);
        }
    }
}

TreeCopy opened(const std::string& sourcePath, const std::string& newPath) {
    try {
        DirectoryChain source(sourcePath.c_str());
        checked(::mkdir(newPath.c_str(), 0700));
        return {.source = std::move(source), .destination = DirectoryChain(newPath.c_str())};
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), "copy", sourcePath);
    }
}

} // namespace

void copyTree(const std::string& sourcePath, const std::string& newPath) {
    TreeCopy copy = opened(sourcePath, newPath);
    try {
        run(copy);
    } catch (const std::system_error& error) {
        std::string itemPath = copy.source.path();
        if (!copy.itemName.empty()) itemPath = joinedPath(itemPath, copy.itemName);
        throw posixError(error.code().value(), "copy", itemPath);
    }
}
