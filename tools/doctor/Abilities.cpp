#include "tools/doctor/Abilities.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/fanotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/TemporaryFolder.h"
#include "platform/linux/files/ItemPath.h"
#include "platform/linux/files/SystemCall.h"
#include "platform/linux/files/TrashFolder.h"
#include "platform/linux/text/ICUCollation.h"
#include "platform/linux/watch/LinuxWatchSystem.h"
#include "tools/ShellWord.h"

namespace {

using Verdict = Finding::Verdict;

std::string reason(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

Finding inotifyFinding() {
    LinuxWatchSystem system;
    if (!system.canWatch()) return {Verdict::wrong, "inotify gives no instance to this user.", {}, {}};
    std::string folder;
    try {
        folder = makeTemporaryFolder("editor-document-");
    } catch (const PlatformError& error) {
        const std::string why = reason(static_cast<int>(error.code));
        return {Verdict::wrong, "No temporary folder can be made: " + why + ".", {}, {"df -h /tmp"}};
    }
    const AddedWatch watch = system.watchFolder(folder, FollowLinks::no);
    std::ofstream(folder + "/file") << "changed";
    pollfd readable{.fd = system.inotifyDescriptor(), .events = POLLIN, .revents = 0};
    const bool isTold = watch.watch >= 0 && ::poll(&readable, 1, 1000) == 1;
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    if (isTold) return {Verdict::fine, "inotify works: a file that was made in a temporary folder was told.", {}, {}};
    const std::string why = watch.watch < 0 ? reason(watch.error) : "a new file was not told";
    return {Verdict::wrong, "inotify does not work in the folder for temporary files: " + why + ".", {}, {}};
}

// Not used, since it needs more rights than an editor has; people ask.
Finding fanotifyFinding() {
    const Descriptor whole(::fanotify_init(FAN_CLASS_NOTIF | FAN_CLOEXEC | FAN_REPORT_DFID_NAME, O_RDONLY));
    if (!whole) {
        return {Verdict::fine,
                "fanotify is not open to this user (" + reason(errno) + "); the daemon does without.",
                {},
                {}};
    }
    return {Verdict::fine, "fanotify is open to this user; the daemon does without.", {}, {}};
}

Finding folderWatchFinding(const std::string& folderPath) {
    LinuxWatchSystem system;
    const AddedWatch watch = system.watchFolder(folderPath, FollowLinks::yes);
    if (watch.watch >= 0) return {Verdict::fine, folderPath + " can be watched.", {}, {}};
    return {Verdict::wrong,
            folderPath + " cannot be watched: " + reason(watch.error) + ".",
            {},
            {"ls -ld " + shellWord(folderPath)}};
}

// The trash, or the nearest folder above it in which it would be made.
Finding placeFinding(const std::string& subject, const TrashFolder& trash) {
    std::string existing = trash.path;
    struct stat status {};
    while (::lstat(existing.c_str(), &status) != 0 && existing != "/") existing = parentPath(existing);
    const bool isThere = existing == trash.path;
    if (isThere && (!S_ISDIR(status.st_mode) || status.st_uid != ::geteuid())) {
        return {Verdict::wrong,
                subject + trash.path + ", which is not a folder of the user.",
                {},
                {"ls -ld " + shellWord(trash.path)}};
    }
    if (::eaccess(existing.c_str(), W_OK | X_OK) != 0)
        return {Verdict::wrong,
                subject + trash.path + ", but " + existing + " cannot be written to: " + reason(errno) + ".",
                {},
                {"ls -ld " + shellWord(existing)}};
    return {Verdict::fine, subject + trash.path + (isThere ? "." : ", which will be made when it is needed."), {}, {}};
}

// Where the volume's own trash does not work, what is trashed is copied into the home trash.
Finding volumeFinding(const std::string& folderPath) {
    std::vector<std::string> reasons;
    for (const TrashFolder& place : volumeTrashPlaces(folderPath)) {
        const Finding finding = placeFinding("What is trashed in the folder goes to ", place);
        if (finding.verdict == Verdict::fine) return finding;
        reasons.push_back(finding.text);
    }
    return {Verdict::worthKnowing,
            "The volume of the folder has no trash that can be used. What is trashed is copied into the home trash, "
            "which takes time for large folders.",
            reasons,
            {}};
}

} // namespace

std::vector<Finding> eventFindings(const std::string& folderPath) {
    return {inotifyFinding(), folderWatchFinding(folderPath), fanotifyFinding()};
}

std::vector<Finding> languageFindings(const Environment& environment) {
    const ICUCollation::Locale locale = ICUCollation(environment).locale();
    const std::string wanted = locale.wanted.empty() ? "no language" : "“" + locale.wanted + "”";
    const std::string subject = "LC_ALL, LC_COLLATE and LANG name " + wanted + ": names are listed ";
    if (!locale.used) {
        return {{Verdict::wrong,
                 subject + "by their bytes, since the data of ICU are missing.",
                 {},
                 {"sudo apt-get install --reinstall libicu72"}}};
    }
    if (*locale.used == "root" && locale.wanted.empty()) {
        return {{Verdict::worthKnowing,
                 subject + "in the order for all languages.",
                 {},
                 {"export LANG=sv_SE.UTF-8   # or whichever language it is"}}};
    }
    const bool isRoot = *locale.used == "root";
    return {{Verdict::fine,
             subject + (isRoot ? "in the order for all languages." : "in the order for “" + *locale.used + "”."),
             {},
             {}}};
}

std::vector<Finding> trashFindings(const Environment& environment, const std::string& folderPath) {
    const auto home = homeTrash(environment);
    if (!home) return {{Verdict::wrong, "The user has no home, and so no trash.", {}, {"export HOME=~"}}};
    std::vector<Finding> findings{placeFinding("The home trash is ", *home)};
    try {
        const std::string real = std::filesystem::canonical(folderPath).string();
        if (isOnVolumeOf(*home, real)) {
            findings.push_back({Verdict::fine, "The folder is on its volume.", {}, {}});
        } else {
            findings.push_back(volumeFinding(real));
        }
    } catch (const std::system_error& error) {
        findings.push_back({Verdict::wrong,
                            "The volume of the folder cannot be found out: " + reason(error.code().value()) + ".",
                            {},
                            {}});
    }
    return findings;
}
