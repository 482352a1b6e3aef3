#include <fstream>

#include "driver/Jobs.h"
#include "driver/Requests.h"
#include "driver/SampleText.h"
#include "driver/TemporaryTree.h"

namespace {

double microsecondsToFirstAnswer(const std::vector<std::string>& commandLine, Usage& usage) {
    std::optional<Program> program;
    const Seconds time = timed([&] {
        program.emplace(commandLine);
        program->ask(closeRequest());
    });
    usage = program->usage();
    return 1e6 * time.count();
}

double requestsInASecond(Program& program, int requestCount) {
    const std::string request = closeRequest();
    const Seconds time = timed([&] {
        for (int number = 0; number < requestCount; ++number) program.ask(request);
    });
    return requestCount / time.count();
}

} // namespace

Measurements measureFirstResponse(const Programs& programs, int turns) {
    Measurement measurement{.job = "start to first response", .unit = "us", .target = {TargetKind::ratioAtMost, 2.5}};
    for (int turn = 0; turn < turns; ++turn) {
        Usage ignored;
        measurement.daemon.push_back(microsecondsToFirstAnswer({programs.daemon}, measurement.usage));
        measurement.limit.push_back(microsecondsToFirstAnswer(programs.limit("LimitEchoLines"), ignored));
    }
    return {measurement};
}

Measurements measureSmallRequests(const Programs& programs, int requestCount, int turns) {
    Program daemon({programs.daemon});
    Program limit(programs.limit("LimitEchoLines"));
    Measurement rate{.job = "small requests in a row", .unit = "1/s", .target = {TargetKind::ratioAtLeast, 0.8}};
    Measurement switches{
        .job = "  waits of the daemon for each", .unit = "", .target = {TargetKind::valueAtMost, 1.05}};
    requestsInASecond(daemon, requestCount / 4);
    requestsInASecond(limit, requestCount / 4);
    for (int turn = 0; turn < turns; ++turn) {
        const long switchesBefore = daemon.usage().contextSwitches;
        rate.daemon.push_back(requestsInASecond(daemon, requestCount));
        rate.limit.push_back(requestsInASecond(limit, requestCount));
        switches.daemon.push_back(static_cast<double>(daemon.usage().contextSwitches - switchesBefore) / requestCount);
    }
    rate.usage = switches.usage = daemon.usage();
    rate.limitUsage = limit.usage();
    return {rate, switches};
}

Measurements measureOpenDocuments(const Programs& programs, std::size_t documentCount, std::size_t byteCount) {
    const TemporaryTree tree;
    const std::vector<std::string> folders = tree.makeFolders("project", 0, documentCount / 10);
    const std::string text = sampleText(byteCount);
    Program daemon({programs.daemon});
    const auto pathOf = [&](std::size_t number) {
        return folders[number % folders.size()] + "/document" + std::to_string(number);
    };
    for (std::size_t number = 0; number < documentCount; ++number) std::ofstream(pathOf(number)) << text;
    daemon.askAndSkip(openRequest(pathOf(0)));
    const double before = daemon.usage().residentMegabytes;
    for (std::size_t number = 0; number < documentCount; ++number) daemon.askAndSkip(openRequest(pathOf(number)));
    daemon.waitUntilQuiet(Seconds{0.1});
    Measurement measurement{.job = "memory of each of " + grouped(documentCount) + " open documents",
                            .unit = "kB",
                            .target = {TargetKind::valueAtMost, 2}};
    measurement.usage = daemon.usage();
    measurement.daemon.push_back((measurement.usage.residentMegabytes - before) * 1000 /
                                 static_cast<double>(documentCount));
    return {measurement};
}
