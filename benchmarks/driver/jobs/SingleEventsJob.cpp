#include <unistd.h>

#include <fstream>
#include <random>
#include <thread>

#include "driver/Jobs.h"
#include "driver/Requests.h"
#include "driver/TemporaryTree.h"

namespace {

using Clock = std::chrono::steady_clock;

// Waits that the delivery makes on purpose: until a change is complete, and until a lost file has had the chance to
// come back.
constexpr Seconds quietWait{0.005};
constexpr Seconds holdWait{0.1};

struct Latencies {
    std::vector<double> created{}, deleted{}, changed{}; // milliseconds beyond those waits
};

void rest() {
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
}

// The time from now, the end of the change, to the line that mentions the path, the given number of times.
double timeToLine(Program& program, const std::string& path, int mentions, Seconds wait) {
    const Clock::time_point begin = Clock::now();
    while (mentions > 0) {
        if (program.line().find(path) != std::string_view::npos) --mentions;
    }
    return milliseconds(Clock::now() - begin - wait);
}

void appendTo(const std::string& path) {
    std::ofstream(path, std::ios::app) << "line\n";
}

void measureWithDaemon(const Programs& programs, const std::vector<std::string>& folders, int changes,
                       std::mt19937& random, Latencies& latencies, Usage& usage) {
    Program daemon({programs.daemon});
    daemon.ask(openWorkspaceRequest(folders[0]));
    daemon.waitUntilQuiet(Seconds{0.15});
    const std::string document = folders.back() + "/document";
    appendTo(document);
    daemon.ask(openRequest(document));
    while (daemon.lineWithin(Seconds{0.2})) {
    }
    for (int change = 0; change < changes; ++change) {
        const std::string path = folders[random() % folders.size()] + "/new";
        makeFile(path);
        latencies.created.push_back(timeToLine(daemon, path, 1, quietWait));
        rest();
        ::unlink(path.c_str());
        latencies.deleted.push_back(timeToLine(daemon, path, 1, holdWait));
        rest();
        appendTo(document);
        latencies.changed.push_back(timeToLine(daemon, document, 1, quietWait));
        rest();
    }
    usage = daemon.usage();
    ::unlink(document.c_str());
}

// The kernel tells a creation and a change in two events each.
void measureWithLimit(const Programs& programs, const std::vector<std::string>& folders, int changes,
                      std::mt19937& random, Latencies& latencies) {
    Program limit(programs.limit("LimitWatchTree"));
    const std::string document = folders.back() + "/document";
    appendTo(document);
    limit.ask(folders[0] + '\n');
    for (int change = 0; change < changes; ++change) {
        const std::string path = folders[random() % folders.size()] + "/new";
        makeFile(path);
        latencies.created.push_back(timeToLine(limit, path, 2, {}));
        rest();
        ::unlink(path.c_str());
        latencies.deleted.push_back(timeToLine(limit, path, 1, {}));
        rest();
        appendTo(document);
        latencies.changed.push_back(timeToLine(limit, document, 2, {}));
        rest();
    }
    ::unlink(document.c_str());
}

void add(Measurements& measurements, const std::string& job, const std::vector<double>& daemon,
         const std::vector<double>& limit, const Usage& usage) {
    measurements.push_back({job, "ms", {TargetKind::valueAtMost, 0.5}, daemon, limit, usage});
    measurements.push_back({"  99th percentile",
                            "ms",
                            {TargetKind::valueAtMost, 5},
                            {quantile(daemon, 0.99)},
                            {quantile(limit, 0.99)},
                            usage});
}

} // namespace

Measurements measureSingleEvents(const Programs& programs, std::size_t fileCount, int turns, int changes) {
    const TemporaryTree tree;
    const std::vector<std::string> folders = tree.makeFolders("project", fileCount, fileCount / 10);
    std::mt19937 random(1);
    Latencies daemon, limit;
    Usage usage;
    for (int turn = 0; turn < turns; ++turn) {
        measureWithDaemon(programs, folders, changes, random, daemon, usage);
        measureWithLimit(programs, folders, changes, random, limit);
    }
    const std::string place = ", in " + grouped(fileCount) + " files";
    Measurements measurements;
    add(measurements, "event of a created file" + place, daemon.created, limit.created, usage);
    add(measurements, "event of a deleted file" + place, daemon.deleted, limit.deleted, usage);
    add(measurements, "event of a changed document" + place, daemon.changed, limit.changed, usage);
    return measurements;
}
