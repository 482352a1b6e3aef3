#pragma once

#include "platform/Environment.h"
#include "platform/FileManager.h"

// The disk through Linux system calls.
class LinuxFileManager final : public FileManager {
public:
    explicit LinuxFileManager(const Environment& variables) : environment(variables) {}

    bool fileExists(const std::string& path) const override;
    bool itemExists(const std::string& path) const override;
    bool isDirectory(const std::string& path) const override;
    bool isReadableFile(const std::string& path) const override;
    FileAttributes attributesOfItem(const std::string& path, FollowLinks links) const override;
    FileContents contentsOfFile(const std::string& path, std::uint64_t sizeLimit) const override;
    std::vector<DirectoryEntry> contentsOfDirectory(const std::string& path) const override;
    std::optional<std::string> realPath(const std::string& path) const override;
    std::optional<std::string> homeDirectoryPath(std::string_view userName = {}) const override;
    std::string currentDirectoryPath() const override;

    std::vector<std::string> createDirectory(const std::string& path) override;
    void removeEmptyDirectories(const std::vector<std::string>& paths) override;
    void createFile(const std::string& path) override;
    std::unique_ptr<FileReplacement> prepareReplacement(const std::string& path, std::string_view data) override;
    void moveItem(const std::string& sourcePath, const std::string& destinationPath) override;
    void copyItem(const std::string& sourcePath, const std::string& destinationPath) override;
    void trashItem(const std::string& path) override;
    void removeItem(const std::string& path) override;

private:
    const Environment& environment;
};
