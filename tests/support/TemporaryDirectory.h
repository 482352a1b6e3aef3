#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include "platform/linux/TemporaryFolder.h"

// A fresh directory that disappears with the object, whatever the test left in it. Its path holds no symbolic link.
// TMPDIR chooses the file system.
class TemporaryDirectory {
public:
    TemporaryDirectory() : TemporaryDirectory(std::filesystem::temp_directory_path()) {}
    explicit TemporaryDirectory(const std::filesystem::path& parent)
        : directoryPath(makeTemporaryFolder(canonical(parent).string(), "editor-")) {}
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(directoryPath, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return directoryPath; }
    std::string path(const std::string& relativePath) const { return directoryPath + "/" + relativePath; }

private:
    std::string directoryPath;
};
