#include "platform/linux/files/LinuxFileManager.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/linux/Descriptor.h"
#include "platform/linux/DirectoryStream.h"
#include "platform/linux/files/AtomicSave.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/CopyItem.h"
#include "platform/linux/files/CreateDirectory.h"
#include "platform/linux/files/HomeDirectory.h"
#include "platform/linux/files/MoveItem.h"
#include "platform/linux/files/RemoveItem.h"
#include "platform/linux/files/StableRead.h"
#include "platform/linux/files/StatAttributes.h"
#include "platform/linux/files/Trash.h"

namespace {

bool namesNothing(const std::string& path) {
    return path.find('\0') != std::string::npos;
}

// Absent when the item cannot be reached; errno then tells why.
std::optional<struct stat> status(const std::string& path, FollowLinks links) {
    struct stat result {};
    const int flags = links == FollowLinks::yes ? 0 : AT_SYMLINK_NOFOLLOW;
    if (::fstatat(AT_FDCWD, path.c_str(), &result, flags) != 0) return std::nullopt;
    return result;
}

DirectoryEntry directoryEntry(const dirent64& entry) {
    DirectoryEntry result{.name = entry.d_name, .fileNumber = entry.d_ino};
    if (entry.d_type != DT_UNKNOWN) result.type = fileType(DTTOIF(entry.d_type));
    return result;
}

} // namespace

bool LinuxFileManager::fileExists(const std::string& path) const {
    return !namesNothing(path) && status(path, FollowLinks::yes);
}

bool LinuxFileManager::itemExists(const std::string& path) const {
    return !namesNothing(path) && status(path, FollowLinks::no);
}

bool LinuxFileManager::isDirectory(const std::string& path) const {
    if (namesNothing(path)) return false;
    const auto found = status(path, FollowLinks::yes);
    return found && S_ISDIR(found->st_mode);
}

bool LinuxFileManager::isReadableFile(const std::string& path) const {
    return !namesNothing(path) && ::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0;
}

FileAttributes LinuxFileManager::attributesOfItem(const std::string& path, FollowLinks links) const {
    constexpr std::string_view action = "read the attributes of";
    const auto found = status(cPath(path, action), links);
    if (!found) throw posixError(errno, action, path);
    return fileAttributes(*found, path, links);
}

FileContents LinuxFileManager::contentsOfFile(const std::string& path, std::uint64_t sizeLimit) const {
    return ::contentsOfFile(path, sizeLimit);
}

std::vector<DirectoryEntry> LinuxFileManager::contentsOfDirectory(const std::string& path) const {
    constexpr std::string_view action = "list";
    const Descriptor directory(::open(cPath(path, action), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!directory) throw posixError(errno, action, path);
    try {
        std::vector<DirectoryEntry> entries;
        DirectoryStream stream(directory.get());
        while (const dirent64* entry = stream.next()) entries.push_back(directoryEntry(*entry));
        return entries;
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), action, path);
    }
}

std::optional<std::string> LinuxFileManager::realPath(const std::string& path) const {
    if (namesNothing(path)) return std::nullopt;
    const std::unique_ptr<char, decltype(&std::free)> found(::realpath(path.c_str(), nullptr), &std::free);
    return found ? std::optional<std::string>(found.get()) : std::nullopt;
}

std::optional<std::string> LinuxFileManager::homeDirectoryPath(std::string_view userName) const {
    return homeDirectory(environment, userName);
}

std::string LinuxFileManager::currentDirectoryPath() const {
    std::error_code error;
    std::string path = std::filesystem::current_path(error).string();
    if (error) throw posixError(error.value(), "find the current directory");
    return path;
}

std::vector<std::string> LinuxFileManager::createDirectory(const std::string& path) {
    return ::createDirectory(path);
}

void LinuxFileManager::removeEmptyDirectories(const std::vector<std::string>& paths) {
    ::removeEmptyDirectories(paths);
}

void LinuxFileManager::createFile(const std::string& path) {
    constexpr std::string_view action = "create";
    Descriptor file(::open(cPath(path, action), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file) throw posixError(errno, action, path);
}

std::unique_ptr<FileReplacement> LinuxFileManager::prepareReplacement(const std::string& path, std::string_view data) {
    return ::prepareReplacement(path, data);
}

void LinuxFileManager::moveItem(const std::string& sourcePath, const std::string& destinationPath) {
    ::moveItem(sourcePath, destinationPath);
}

void LinuxFileManager::copyItem(const std::string& sourcePath, const std::string& destinationPath) {
    ::copyItem(sourcePath, destinationPath);
}

void LinuxFileManager::trashItem(const std::string& path) {
    ::trashItem(path, environment);
}

void LinuxFileManager::removeItem(const std::string& path) {
    ::removeItem(path);
}
