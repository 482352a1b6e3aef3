#include "driver/Jobs.h"
#include "driver/Requests.h"
#include "driver/TemporaryTree.h"

Measurements measureListFolder(const Programs& programs, std::size_t entryCount, int turns) {
    const TemporaryTree tree;
    const std::string folder = tree.makeFlatFolder("folder", entryCount);
    Measurement listing{
        .job = "list " + grouped(entryCount) + " entries", .unit = "ms", .target = {TargetKind::ratioAtMost, 1.2}};
    Measurement first{.job = "  the first time", .unit = "ms"};
    for (int start = 0; start < 3; ++start) {
        Program daemon({programs.daemon});
        Program limit(programs.limit("LimitListFolder"));
        daemon.ask(closeRequest());
        const std::string request = listRequest(folder);
        const auto turn = [&](Measurement& measurement) {
            measurement.daemon.push_back(milliseconds(timed([&] { daemon.askAndSkip(request); })));
            measurement.limit.push_back(milliseconds(timed([&] { limit.askAndSkip(folder + '\n'); })));
        };
        turn(first);
        daemon.waitUntilQuiet(Seconds{0.05});
        for (int number = 0; number < turns; ++number) turn(listing);
        first.usage = listing.usage = daemon.usage();
        listing.limitUsage = limit.usage();
    }
    return {listing, first};
}
