#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "platform/FileManager.h"
#include "platform/PlatformError.h"

enum class FileOperation {
    fileExists,
    itemExists,
    isDirectory,
    isReadableFile,
    attributesOfItem,
    contentsOfFile,
    contentsOfDirectory,
    homeDirectoryPath,
    currentDirectoryPath,
    createDirectory,
    createFile,
    prepareReplacement,
    moveItem,
    copyItem,
    trashItem,
    removeItem
};

// Passes everything on to a real file manager, counts the calls of each operation, and makes chosen calls fail or
// lets something happen just before them. Calls are numbered from 1, from the construction on.
class FaultyFileManager final : public FileManager {
public:
    explicit FaultyFileManager(FileManager& wrapped) : inner(wrapped) {}

    void failCall(FileOperation operation, int call, PlatformError error) {
        beforeCall(operation, call, [error = std::move(error)] { throw error; });
    }
    // Unless the action throws, the call goes on to the real file manager after it.
    void beforeCall(FileOperation operation, int call, std::function<void()> action) {
        const std::lock_guard lock(mutex);
        actions[{operation, call}] = std::move(action);
    }
    int callCount(FileOperation operation) const {
        const std::lock_guard lock(mutex);
        const auto count = counts.find(operation);
        return count == counts.end() ? 0 : count->second;
    }

    bool fileExists(const std::string& path) const override { return past(FileOperation::fileExists).fileExists(path); }
    bool itemExists(const std::string& path) const override { return past(FileOperation::itemExists).itemExists(path); }
    bool isDirectory(const std::string& path) const override {
        return past(FileOperation::isDirectory).isDirectory(path);
    }
    bool isReadableFile(const std::string& path) const override {
        return past(FileOperation::isReadableFile).isReadableFile(path);
    }
    FileAttributes attributesOfItem(const std::string& path, FollowLinks links) const override {
        return past(FileOperation::attributesOfItem).attributesOfItem(path, links);
    }
    FileContents contentsOfFile(const std::string& path, std::uint64_t sizeLimit) const override {
        return past(FileOperation::contentsOfFile).contentsOfFile(path, sizeLimit);
    }
    std::vector<DirectoryEntry> contentsOfDirectory(const std::string& path) const override {
        return past(FileOperation::contentsOfDirectory).contentsOfDirectory(path);
    }
    std::optional<std::string> realPath(const std::string& path) const override { return inner.realPath(path); }
    std::optional<std::string> homeDirectoryPath(std::string_view userName) const override {
        return past(FileOperation::homeDirectoryPath).homeDirectoryPath(userName);
    }
    std::string currentDirectoryPath() const override {
        return past(FileOperation::currentDirectoryPath).currentDirectoryPath();
    }
    std::vector<std::string> createDirectory(const std::string& path) override {
        return past(FileOperation::createDirectory).createDirectory(path);
    }
    void removeEmptyDirectories(const std::vector<std::string>& paths) override { inner.removeEmptyDirectories(paths); }
    void createFile(const std::string& path) override { past(FileOperation::createFile).createFile(path); }
    std::unique_ptr<FileReplacement> prepareReplacement(const std::string& path, std::string_view data) override {
        return past(FileOperation::prepareReplacement).prepareReplacement(path, data);
    }
    void moveItem(const std::string& source, const std::string& destination) override {
        past(FileOperation::moveItem).moveItem(source, destination);
    }
    void copyItem(const std::string& source, const std::string& destination) override {
        past(FileOperation::copyItem).copyItem(source, destination);
    }
    void trashItem(const std::string& path) override { past(FileOperation::trashItem).trashItem(path); }
    void removeItem(const std::string& path) override { past(FileOperation::removeItem).removeItem(path); }

private:
    // What the call goes on to. The action runs outside the lock, so that it may itself use this file manager.
    FileManager& past(FileOperation operation) const {
        std::function<void()> action;
        {
            const std::lock_guard lock(mutex);
            const auto found = actions.find({operation, ++counts[operation]});
            if (found != actions.end()) action = found->second;
        }
        if (action) action();
        return inner;
    }

    FileManager& inner;
    mutable std::mutex mutex;
    mutable std::map<FileOperation, int> counts;
    std::map<std::pair<FileOperation, int>, std::function<void()>> actions;
};
