#include <stdexcept>

#include "driver/Jobs.h"
#include "driver/Requests.h"
#include "driver/TemporaryTree.h"

namespace {

constexpr Seconds silence{0.15};

struct Opening {
    Seconds response{};
    Seconds complete{};
    double megabytes{}; // beyond those of the empty daemon
    Usage usage{};
};

// Whether the whole tree is watched shows in its folder that is reached last, and whether it is indexed in the event's
// coming at all.
void requireWatched(Program& daemon, const std::string& folder) {
    makeFile(folder + "/watched");
    while (daemon.line().find(folder + "/watched") == std::string_view::npos) {
    }
    if (::unlink((folder + "/watched").c_str()) != 0) throw std::runtime_error("unlink");
}

Opening openedByDaemon(const Programs& programs, const std::vector<std::string>& folders) {
    Program daemon({programs.daemon});
    daemon.ask(closeRequest());
    const double empty = daemon.usage().residentMegabytes;
    Opening opening;
    const auto begin = std::chrono::steady_clock::now();
    opening.response = timed([&] { daemon.ask(openWorkspaceRequest(folders[0])); });
    opening.complete = daemon.waitUntilQuiet(silence) - begin;
    opening.usage = daemon.usage();
    opening.megabytes = opening.usage.residentMegabytes - empty;
    requireWatched(daemon, folders.back());
    return opening;
}

Seconds openedByLimit(const Programs& programs, const std::string& folder) {
    Program limit(programs.limit("LimitWatchTree"));
    return timed([&] { limit.ask(folder + '\n'); });
}

Seconds listedByLimit(const Programs& programs, const std::string& folder) {
    Program limit(programs.limit("LimitListFolder"));
    limit.ask(folder + '\n');
    return timed([&] { limit.ask(folder + '\n'); });
}

} // namespace

Measurements measureOpenWorkspace(const Programs& programs, std::size_t fileCount, std::size_t folderCount, int turns) {
    const TemporaryTree tree;
    const std::vector<std::string> folders = tree.makeFolders("project", fileCount, folderCount);
    const std::string size = grouped(fileCount) + " files in " + grouped(folderCount) + " folders";
    Measurement complete{.job = "open " + size, .unit = "s", .target = {TargetKind::ratioAtMost, 1.3}};
    Measurement response{.job = "  its response", .unit = "ms"};
    Measurement memory{.job = "  its memory for each file", .unit = "bytes", .target = {TargetKind::valueAtMost, 96}};
    openedByLimit(programs, folders[0]);
    for (int turn = 0; turn < turns; ++turn) {
        const Opening opening = openedByDaemon(programs, folders);
        complete.daemon.push_back(opening.complete.count());
        complete.limit.push_back(openedByLimit(programs, folders[0]).count());
        response.daemon.push_back(milliseconds(opening.response));
        response.limit.push_back(milliseconds(listedByLimit(programs, folders[0])));
        memory.daemon.push_back(opening.megabytes * 1e6 / static_cast<double>(fileCount));
        complete.usage = response.usage = memory.usage = opening.usage;
    }
    // The response may take the time that is spent on watching before it, and the listing.
    response.target = {TargetKind::valueAtMost, 50 + median(response.limit)};
    return {complete, response, memory};
}
