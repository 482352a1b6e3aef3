#include <atomic>
#include <thread>
#include <unordered_set>

#include "driver/Jobs.h"
#include "driver/Requests.h"
#include "driver/TemporaryTree.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Storm {
    std::size_t toldCount = 0;
    Seconds processorTime{};
    Seconds creation{}; // how long the files took to make
    Seconds lastLine{}; // after the last operation
    Usage usage{};
};

void makeFiles(const std::vector<std::string>& folders, std::size_t fileCount, const std::string& prefix) {
    for (std::size_t number = 0; number < fileCount; ++number) {
        makeFile(folders[number % folders.size()] + '/' + prefix + std::to_string(number));
    }
}

// The program's lines are read while the files are made: a pipe that is full would hold it up.
template <typename IsTold>
Storm storm(Program& program, const std::vector<std::string>& folders, std::size_t fileCount, const std::string& prefix,
            const IsTold& isTold) {
    Storm result;
    const Seconds processorTimeBefore = program.processorTime();
    Clock::time_point lastOperation;
    std::atomic<bool> isMade = false;
    std::thread maker([&] {
        result.creation = timed([&] { makeFiles(folders, fileCount, prefix); });
        lastOperation = Clock::now();
        isMade = true;
    });
    Clock::time_point lastLine = Clock::now();
    // On a busy machine the program may say nothing for a while though it is far from the end.
    for (bool isOver = false; !isOver;) {
        const bool wasMade = isMade;
        if (const auto line = program.lineWithin(Seconds{1})) {
            lastLine = Clock::now();
            if (isTold(*line)) ++result.toldCount;
        } else {
            isOver = wasMade;
        }
    }
    maker.join();
    result.lastLine = lastLine - lastOperation;
    result.usage = program.usage();
    result.processorTime = result.usage.processorTime - processorTimeBefore;
    return result;
}

Storm stormOnDaemon(const Programs& programs, const std::vector<std::string>& folders, std::size_t fileCount,
                    const std::string& prefix) {
    Program daemon({programs.daemon});
    daemon.ask(openWorkspaceRequest(folders[0]));
    daemon.waitUntilQuiet(Seconds{0.15});
    std::unordered_set<std::string> paths;
    return storm(daemon, folders, fileCount, prefix, [&](std::string_view line) {
        const bool isCreation = line.find("\"createdFile\"") != std::string_view::npos;
        return isCreation && paths.emplace(stringValue(line, "destinationPath")).second;
    });
}

Storm stormOnLimit(const Programs& programs, const std::vector<std::string>& folders, std::size_t fileCount,
                   const std::string& prefix) {
    Program limit(programs.limit("LimitWatchTree"));
    limit.ask(folders[0] + '\n');
    return storm(limit, folders, fileCount, prefix, [](std::string_view) { return true; });
}

} // namespace

Measurements measureManyFiles(const Programs& programs, std::size_t fileCount, std::size_t folderCount, int turns) {
    const TemporaryTree tree;
    std::vector<std::string> folders = tree.makeFolders("project", 0, folderCount + 1);
    Measurement processor{.job = "create " + grouped(fileCount) + " files in " + grouped(folderCount) + " folders: CPU",
                          .unit = "s",
                          .target = {TargetKind::ratioAtMost, 2}};
    Measurement quiet{.job = "  last line after the last file", .unit = "ms", .target = {TargetKind::valueAtMost, 150}};
    Measurement lost{.job = "  files not told of", .unit = "files", .target = {TargetKind::valueAtMost, 0}};
    for (int turn = 0; turn < turns; ++turn) {
        const Storm ours = stormOnDaemon(programs, folders, fileCount, std::to_string(turn) + "a-");
        const Storm limit = stormOnLimit(programs, folders, fileCount, std::to_string(turn) + "b-");
        processor.daemon.push_back(ours.processorTime.count());
        processor.limit.push_back(limit.processorTime.count());
        quiet.daemon.push_back(milliseconds(ours.lastLine));
        lost.daemon.push_back(static_cast<double>(fileCount - ours.toldCount));
        processor.usage = quiet.usage = lost.usage = ours.usage;
    }
    return {processor, quiet, lost};
}
