#include <fstream>

#include "driver/Jobs.h"
#include "driver/Requests.h"
#include "driver/SampleText.h"
#include "driver/TemporaryTree.h"

namespace {

std::string sizeOf(std::size_t byteCount) {
    return byteCount == 8'388'608 ? "8 MiB" : grouped(byteCount) + " bytes";
}

} // namespace

Measurements measureOpenText(const Programs& programs, std::size_t byteCount, int turns) {
    const TemporaryTree tree;
    const std::string path = tree.path() + "/text.cpp";
    std::ofstream(path) << sampleText(byteCount);
    Program daemon({programs.daemon});
    Program limit(programs.limit("LimitOpenText"));
    Measurement measurement{.job = "open " + sizeOf(byteCount), .unit = "ms", .target = {TargetKind::ratioAtMost, 1.3}};
    daemon.askAndSkip(openRequest(path));
    limit.askAndSkip(path + '\n');
    for (int turn = 0; turn < turns; ++turn) {
        measurement.daemon.push_back(milliseconds(timed([&] { daemon.askAndSkip(openRequest(path)); })));
        measurement.limit.push_back(milliseconds(timed([&] { limit.askAndSkip(path + '\n'); })));
    }
    measurement.usage = daemon.usage();
    measurement.limitUsage = limit.usage();
    return {measurement};
}

Measurements measureSaveText(const Programs& programs, std::size_t byteCount, int turns) {
    const TemporaryTree tree;
    const std::string path = tree.path() + "/text.cpp";
    std::ofstream(path) << "short\n";
    Program daemon({programs.daemon});
    std::vector<std::string> limitCommand = programs.limit("LimitSaveText");
    limitCommand.push_back(tree.path() + "/limit.cpp");
    Program limit(limitCommand);
    Measurement measurement{.job = "save " + sizeOf(byteCount), .unit = "ms", .target = {TargetKind::ratioAtMost, 1.3}};
    const std::string documentID(stringValue(daemon.ask(openRequest(path)), "documentID"));
    const std::string text = sampleText(byteCount);
    for (int turn = 0; turn <= turns; ++turn) {
        const std::string request = saveRequest(documentID, text, turn + 1);
        const Seconds daemonTime = timed([&] { daemon.askAndSkip(request); });
        const Seconds limitTime = timed([&] { limit.askAndSkip(request); });
        if (turn == 0) continue;
        measurement.daemon.push_back(milliseconds(daemonTime));
        measurement.limit.push_back(milliseconds(limitTime));
    }
    measurement.usage = daemon.usage();
    measurement.limitUsage = limit.usage();
    return {measurement};
}
