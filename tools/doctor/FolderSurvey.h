#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/files/FileKey.h"
#include "platform/linux/watch/WatchSystem.h"
#include "tools/doctor/Finding.h"

// What there is below a folder, as far as watching is concerned.

struct SurveyedFileSystem {
    std::string path{}; // where it begins, or the folder itself
    std::string type{}; // as the table of mounts calls it
    EventCoverage coverage{};
    DeviceTraits::KeyMethod keyMethod{};
    bool hasBirthTimes = false;
};

struct FolderSurvey {
    int error{}; // why the folder itself cannot be read; 0 when it can
    std::uint64_t folderCount{};
    std::uint64_t unreadableCount{};
    std::string unreadablePath{}; // one of them
    std::vector<SurveyedFileSystem> fileSystems{};
};

// Reads every folder, follows no link, and passes over file systems that the kernel makes up.
FolderSurvey surveyFolder(const std::string& path);

std::vector<Finding> folderFindings(const FolderSurvey& survey, const std::string& path);
std::vector<Finding> fileSystemFindings(const FolderSurvey& survey);

// What the table of mounts calls the file system on which the path lies.
std::string fileSystemType(const std::string& mountInfo, const std::string& path);
