#include "tools/doctor/FolderSurvey.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include "platform/linux/Descriptor.h"
#include "platform/linux/MountPoints.h"
#include "platform/linux/files/ItemPath.h"
#include "platform/linux/watch/LinuxWatchSystem.h"
#include "platform/linux/watch/MountTable.h"
#include "tools/ShellWord.h"

namespace {

using Verdict = Finding::Verdict;

bool hasBirthTime(const std::string& path) {
    struct statx status {};
    return ::statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &status) == 0 && (status.stx_mask & STATX_BTIME) != 0;
}

DeviceTraits::KeyMethod keyMethodAt(const std::string& path) {
    const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0) return DeviceTraits::KeyMethod::none;
    return FileKeys().directoryTraits(status, folder.get()).keyMethod;
}

std::string readMountInfo() {
    std::ifstream table("/proc/self/mountinfo", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(table), {});
}

// Folder by folder, from the top.
class Surveyor {
public:
    FolderSurvey survey(const std::string& path) {
        visit({path, 0});
        while (!waiting.empty() && result.error == 0) {
            const Place next = std::move(waiting.back());
            waiting.pop_back();
            visit(next);
        }
        return std::move(result);
    }

private:
    struct Place {
        std::string path{};
        dev_t parentDevice{};
    };

    void visit(const Place& place) {
        const bool isTop = result.folderCount == 0;
        const auto opened = system.openFolder(place.path, isTop ? FollowLinks::yes : FollowLinks::no, OpenFor::listing);
        if (!opened.folder) {
            if (isTop) result.error = opened.error;
            if (opened.error == EACCES || opened.error == EPERM) noteUnreadable(place.path);
            return;
        }
        const FolderStatus status = opened.folder->status();
        if (isTop || status.identity.device != place.parentDevice) noteFileSystem(place.path, status.coverage);
        if (status.coverage == EventCoverage::pointless && !isTop) return;
        ++result.folderCount;
        opened.folder->forEachEntry([&](std::string_view name, ItemIdentity item) {
            if (item.isDirectory()) waiting.push_back({joinedPath(place.path, name), status.identity.device});
        });
    }

    void noteUnreadable(const std::string& path) {
        if (result.unreadableCount++ == 0) result.unreadablePath = path;
    }

    void noteFileSystem(const std::string& path, EventCoverage coverage) {
        result.fileSystems.push_back({.path = path,
                                      .type = fileSystemType(mountInfo, path),
                                      .coverage = coverage,
                                      .keyMethod = keyMethodAt(path),
                                      .hasBirthTimes = hasBirthTime(path)});
    }

    const std::string mountInfo = readMountInfo();
    LinuxWatchSystem system{};
    FolderSurvey result{};
    std::vector<Place> waiting{};
};

Finding coverageFinding(const SurveyedFileSystem& fileSystem) {
    const std::string subject = fileSystem.path + " is " + fileSystem.type + ": ";
    switch (fileSystem.coverage) {
        case EventCoverage::complete:
            return {Verdict::fine, subject + "every change is told at once.", {}, {}};
        case EventCoverage::ownChangesOnly:
            return {Verdict::worthKnowing,
                    subject +
                        "what other machines or the program behind it change is told by nobody. Expanded folders "
                        "and open documents are looked at every 2 seconds instead, other folders not at all.",
                    {},
                    {}};
        case EventCoverage::pointless:
            return {Verdict::worthKnowing, subject + "the kernel makes it up; it is not watched.", {}, {}};
    }
    return {};
}

Finding identityFinding(const SurveyedFileSystem& fileSystem) {
    const std::string subject = "Items of " + fileSystem.path + " are known again ";
    const std::string birthTimes =
        fileSystem.hasBirthTimes ? "It keeps birth times as well." : "It keeps no birth times.";
    switch (fileSystem.keyMethod) {
        case DeviceTraits::KeyMethod::handle:
            return {Verdict::fine,
                    subject + "by the handles of the file system, also after a rename. " + birthTimes,
                    {},
                    {}};
        case DeviceTraits::KeyMethod::birthTime:
            return {Verdict::fine, subject + "by number and birth time, also after a rename.", {}, {}};
        case DeviceTraits::KeyMethod::none:
            return {Verdict::worthKnowing,
                    subject +
                        "by their paths alone: an item that another program renames is a new one in the tree, "
                        "and loses its selection. " +
                        birthTimes,
                    {},
                    {}};
    }
    return {};
}

} // namespace

FolderSurvey surveyFolder(const std::string& path) {
    return Surveyor().survey(path);
}

std::vector<Finding> folderFindings(const FolderSurvey& survey, const std::string& path) {
    if (survey.error != 0) {
        return {{Verdict::wrong,
                 path + " cannot be read: " + std::generic_category().message(survey.error) + ".",
                 {},
                 {"ls -ld " + shellWord(path)}}};
    }
    std::vector<Finding> findings{
        {Verdict::fine,
         path + " can be read. Folders, itself included: " + std::to_string(survey.folderCount) + ".",
         {},
         {}}};
    if (survey.unreadableCount > 0) {
        findings.push_back({Verdict::worthKnowing,
                            std::to_string(survey.unreadableCount) +
                                " of the folders below it cannot be read, and are neither listed nor watched.",
                            {"One is " + survey.unreadablePath},
                            {"find " + shellWord(path) + " -type d ! -readable"}});
    }
    return findings;
}

std::vector<Finding> fileSystemFindings(const FolderSurvey& survey) {
    std::vector<Finding> findings;
    for (const SurveyedFileSystem& fileSystem : survey.fileSystems) {
        findings.push_back(coverageFinding(fileSystem));
        if (fileSystem.coverage != EventCoverage::pointless) findings.push_back(identityFinding(fileSystem));
    }
    return findings;
}

// Of several mounts at one place the last one is seen.
std::string fileSystemType(const std::string& mountInfo, const std::string& path) {
    std::string type = "of an unknown kind", longest;
    std::istringstream lines(mountInfo);
    for (std::string line; std::getline(lines, line);) {
        const std::string mountPoint = mountPointInLine(line);
        const std::size_t separator = line.find(" - ");
        if (separator == line.npos || !isAtOrBelow(path, mountPoint) || mountPoint.size() < longest.size()) continue;
        longest = mountPoint;
        type = line.substr(separator + 3, line.find(' ', separator + 3) - separator - 3);
    }
    return type;
}
