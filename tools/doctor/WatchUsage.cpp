#include "tools/doctor/WatchUsage.h"

#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <filesystem>
#include <fstream>

namespace {

using std::filesystem::directory_iterator;
using Verdict = Finding::Verdict;

constexpr std::size_t shownProcesses = 8;
constexpr std::uint64_t usualWatches = 524'288;
constexpr std::uint64_t usualInstances = 1024;
constexpr std::uint64_t usualQueuedEvents = 16'384;

std::optional<std::uint64_t> readNumber(const std::string& path) {
    std::ifstream file(path);
    std::uint64_t number = 0;
    return file >> number ? std::optional(number) : std::nullopt;
}

std::string firstLine(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    return line;
}

// Each line of an instance's description that begins so is one watch.
void countInstance(const std::filesystem::path& description, ProcessWatches& process) {
    std::ifstream file(description);
    bool isInstance = false;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("inotify")) continue;
        isInstance = true;
        ++process.watches;
    }
    process.instances += isInstance;
}

// An instance without watches has no such line; its name in the list of open files tells it.
bool isInstanceWithoutWatches(const std::filesystem::path& processPath, const std::filesystem::path& number) {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(processPath / "fd" / number, error).string();
    return !error && target == "anon_inode:inotify";
}

// False when its open files may not be looked at.
bool countProcess(const std::filesystem::path& processPath, ProcessWatches& process) {
    std::error_code error;
    directory_iterator descriptions(processPath / "fdinfo", error);
    if (error) return false;
    for (; !error && descriptions != directory_iterator(); descriptions.increment(error)) {
        const std::uint64_t before = process.instances;
        countInstance(descriptions->path(), process);
        if (process.instances == before && isInstanceWithoutWatches(processPath, descriptions->path().filename()))
            ++process.instances;
    }
    return true;
}

std::string setting(const std::string& name, std::uint64_t value) {
    return "echo fs.inotify." + name + "=" + std::to_string(value) + " | sudo tee /etc/sysctl.d/60-" + name +
           ".conf && sudo sysctl --system";
}

std::vector<std::string> largestProcesses(const WatchUsage& usage) {
    std::vector<std::string> lines;
    for (const ProcessWatches& process : usage.processes) {
        if (lines.size() == shownProcesses) break;
        lines.push_back(std::to_string(process.watches) + " by " + process.name + " (process " +
                        std::to_string(process.processID) + ", user " + std::to_string(process.user) + ")");
    }
    if (usage.unreadableCount > 0) {
        lines.push_back("Processes of this user that may not be looked at: " + std::to_string(usage.unreadableCount) +
                        ".");
    }
    // The kernel cuts the name.
    if (std::ranges::count(usage.processes, "EditorDocumentD", &ProcessWatches::name) > 0)
        lines.push_back("A daemon is running; the folder's watches may be among its own.");
    return lines;
}

std::string numbered(std::uint64_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

Finding watchFinding(std::uint64_t limit, std::uint64_t used, std::uint64_t folderCount, const WatchUsage& usage) {
    const std::string counts = "This user may have " + std::to_string(limit) + " watches" + ", has " +
                               std::to_string(used) + ", and the folder needs " + std::to_string(folderCount);
    if (used + folderCount <= limit) return {Verdict::fine, counts + ".", largestProcesses(usage), {}};
    return {Verdict::wrong,
            counts +
                ": there are not enough. Folders without a watch are looked through every 2 seconds, and only "
                "those that are expanded or hold open documents.",
            largestProcesses(usage),
            {setting("max_user_watches", std::max(usualWatches, std::bit_ceil(2 * (used + folderCount))))}};
}

Finding instanceFinding(std::uint64_t limit, std::uint64_t used) {
    const std::string counts =
        "This user may have " + numbered(limit, "inotify instance") + ", and has " + std::to_string(used);
    if (used < limit) return {Verdict::fine, counts + ". The daemon needs one.", {}, {}};
    return {Verdict::wrong,
            counts + ": the daemon gets none, and nothing is watched but looked through every second.",
            {},
            {setting("max_user_instances", std::max(usualInstances, std::bit_ceil(2 * used)))}};
}

Finding queueFinding(std::uint64_t limit) {
    const std::string count = "The kernel keeps " + numbered(limit, "event") + " that nobody has read yet";
    if (limit >= usualQueuedEvents) return {Verdict::fine, count + ".", {}, {}};
    return {Verdict::worthKnowing,
            count + ". When more come at once, all folders are looked through again.",
            {},
            {setting("max_queued_events", usualQueuedEvents)}};
}

} // namespace

WatchLimits readWatchLimits(const std::string& procPath) {
    const auto limit = [&](const std::string& name) { return readNumber(procPath + "/sys/fs/inotify/" + name); };
    return {limit("max_user_watches"), limit("max_user_instances"), limit("max_queued_events")};
}

WatchUsage readWatchUsage(const std::string& procPath, uid_t user) {
    WatchUsage usage;
    std::error_code error;
    directory_iterator entries(procPath, error);
    for (; !error && entries != directory_iterator(); entries.increment(error)) {
        const std::string name = entries->path().filename();
        ProcessWatches process;
        const auto parsed = std::from_chars(name.data(), name.data() + name.size(), process.processID);
        struct stat status {};
        if (parsed.ptr != name.data() + name.size() || ::stat(entries->path().c_str(), &status) != 0) continue;
        process.user = status.st_uid;
        process.name = firstLine(entries->path() / "comm");
        if (!countProcess(entries->path(), process) && process.user == user) ++usage.unreadableCount;
        if (process.instances > 0) usage.processes.push_back(process);
    }
    std::ranges::sort(usage.processes, std::ranges::greater(), &ProcessWatches::watches);
    return usage;
}

std::vector<Finding> watchFindings(const WatchLimits& limits, const WatchUsage& usage, uid_t user,
                                   std::uint64_t folderCount) {
    if (!limits.watches || !limits.instances || !limits.queuedEvents)
        return {{Verdict::wrong, "The kernel tells no limits of inotify; it may have been built without it.", {}, {}}};
    std::uint64_t watches = 0, instances = 0;
    for (const ProcessWatches& process : usage.processes) {
        if (process.user != user) continue;
        watches += process.watches;
        instances += process.instances;
    }
    return {watchFinding(*limits.watches, watches, folderCount, usage), instanceFinding(*limits.instances, instances),
            queueFinding(*limits.queuedEvents)};
}
