#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The seam to the disk. Paths are byte strings as the system has them. A path that holds a NUL names nothing: existence
// is false, and an operation on it fails like one on a missing item. Const members ask, the others change the disk.
// Every failure is thrown as a PlatformError (domain "POSIX", code errno) unless a member says otherwise, and leaves
// the disk as it was. Members may be called on any queue; an object keeps no state that a call could disturb.

enum class FileType { regular, directory, symbolicLink, fifo, socket, characterDevice, blockDevice, unknown };

enum class FollowLinks { no, yes };

struct FileAttributes {
    std::optional<FileType> type{};
    std::optional<std::uint64_t> size{};                        // bytes
    std::optional<std::chrono::nanoseconds> modificationDate{}; // since 1970-01-01 UTC
    std::optional<std::chrono::nanoseconds> creationDate{};     // absent where it can change while the item lives
    std::optional<std::uint64_t> fileSystemNumber{};
    std::optional<std::uint64_t> fileNumber{};

    bool operator==(const FileAttributes&) const = default;
};

struct FileContents {
    std::string data{};
    FileAttributes attributes{};
};

struct DirectoryEntry {
    std::string name{};
    std::optional<FileType> type{}; // of the entry itself; absent where the file system does not tell
    std::uint64_t fileNumber{};
};

// New bytes for a file, complete on the disk, that do not have its name yet.
class FileReplacement {
public:
    virtual ~FileReplacement() = default;

    // Of the new file.
    virtual FileAttributes attributes() const = 0;

    // Gives the new file the name, and returns its attributes, which then stay true for as long as nobody else writes.
    // To be called once, while the data that was given still stands.
    virtual FileAttributes commit() = 0;
};

class FileManager {
public:
    virtual ~FileManager() = default;

    // Existence follows links: a link that leads nowhere does not exist. itemExists asks for the name itself.
    virtual bool fileExists(const std::string& path) const = 0;
    virtual bool itemExists(const std::string& path) const = 0;
    virtual bool isDirectory(const std::string& path) const = 0; // follows links; false when nothing is there
    virtual bool isReadableFile(const std::string& path) const = 0;
    virtual FileAttributes attributesOfItem(const std::string& path, FollowLinks links) const = 0;

    // The bytes of a regular file together with attributes that belong to these bytes, both from one descriptor and
    // from a moment in which the file did not change. Follows links and never blocks on a FIFO or device: whatever is
    // not a regular file, or is larger than sizeLimit bytes, comes back with its attributes and no data.
    virtual FileContents contentsOfFile(const std::string& path, std::uint64_t sizeLimit) const = 0;

    // All entries but "." and "..", hidden ones included, in the order the file system gives them. Follows a link.
    virtual std::vector<DirectoryEntry> contentsOfDirectory(const std::string& path) const = 0;

    // Where the item is with no link on the way, that under its own name included. Absent when there is none.
    virtual std::optional<std::string> realPath(const std::string& path) const = 0;

    // The home of the process's user, or of the named user; absent for a user the system does not know.
    virtual std::optional<std::string> homeDirectoryPath(std::string_view userName = {}) const = 0;
    virtual std::string currentDirectoryPath() const = 0;

    // Makes the directory and whatever is missing above it, and returns what it made, outermost first; an existing
    // directory is no error.
    virtual std::vector<std::string> createDirectory(const std::string& path) = 0;
    // Takes back what createDirectory made, as far as it is still empty. Never fails.
    virtual void removeEmptyDirectories(const std::vector<std::string>& paths) = 0;
    // Makes an empty file where nothing is; EEXIST when the name is taken, be it by a link that leads nowhere.
    virtual void createFile(const std::string& path) = 0;
    // Makes ready to replace the file in one step: whoever reads the path sees the old bytes or the new, also after a
    // crash, and once commit() returns the new ones survive a power failure. A link stays and its target is replaced.
    // Mode, extended attributes and ACL are kept, owner and group where permitted. All that can be refused for want of
    // space or permission is refused here, before anything can be seen; without commit() nothing is left behind.
    virtual std::unique_ptr<FileReplacement> prepareReplacement(const std::string& path, std::string_view data) = 0;
    // Source and destination name the items themselves, links not followed; a taken destination is EEXIST.
    virtual void moveItem(const std::string& sourcePath, const std::string& destinationPath) = 0;
    virtual void copyItem(const std::string& sourcePath, const std::string& destinationPath) = 0;
    virtual void trashItem(const std::string& path) = 0;
    // Removes the item and all below it, never following a link.
    virtual void removeItem(const std::string& path) = 0;
};
