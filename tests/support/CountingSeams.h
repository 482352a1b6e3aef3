#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/files/LinuxDirectoryWalking.h"
#include "platform/linux/files/LinuxFileIdentification.h"

// Counts how often each directory is listed.
class CountingFileIdentification final : public FileIdentification {
public:
    std::optional<FileIdentifier> fileResourceIdentifier(const std::string& path) const override {
        return inner.fileResourceIdentifier(path);
    }
    void forEachIdentifiedEntry(const std::string& directoryPath,
                                const std::function<void(const IdentifiedEntry&)>& visit) const override {
        const int count = ++listingCounts[directoryPath];
        if (const auto action = actions.find({directoryPath, count}); action != actions.end()) action->second();
        inner.forEachIdentifiedEntry(directoryPath, visit);
    }

    mutable std::map<std::string, int> listingCounts;
    std::map<std::pair<std::string, int>, std::function<void()>> actions; // before the listings of these numbers

private:
    const LinuxFileIdentification inner;
};

// Remembers the walks by the directories at which they begin.
class CountingDirectoryWalking final : public DirectoryWalking {
public:
    std::unique_ptr<DirectoryWalk> walk(const std::string& directoryPath, FollowLinks links) const override {
        ++walkCounts[directoryPath];
        walkedPaths.push_back(directoryPath);
        return inner.walk(directoryPath, links);
    }

    mutable std::map<std::string, int> walkCounts;
    mutable std::vector<std::string> walkedPaths; // in their order

private:
    const LinuxDirectoryWalking inner;
};
