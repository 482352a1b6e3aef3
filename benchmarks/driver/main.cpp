// Drives the daemon over its pipes and, in the same run and in turns with it, bare programs that do only the
// unavoidable system calls of the same jobs. Called by benchmarks/run.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "driver/Jobs.h"
#include "driver/Report.h"

namespace {

struct Choice {
    Programs programs{};
    std::string mode = "quick";
    std::optional<std::string> onlyJob{};
    std::optional<std::string> resultsPath{};
};

double loadAverage() {
    double load = 0;
    return ::getloadavg(&load, 1) == 1 ? load : 0;
}

Choice choiceFrom(int count, char** arguments) {
    Choice choice{.programs = {.daemon = arguments[1], .limitFolder = arguments[2]}};
    for (int position = 3; position < count; ++position) {
        const std::string_view argument = arguments[position];
        if (argument == "--json" && position + 1 < count) {
            choice.resultsPath = arguments[++position];
        } else if (argument == "--only" && position + 1 < count) {
            choice.onlyJob = arguments[++position];
        } else {
            choice.mode = argument;
        }
    }
    return choice;
}

void run(const Choice& choice) {
    BenchmarkResults results{.mode = choice.mode, .loadBefore = loadAverage()};
    printHeading();
    for (const Job& job : jobsOfMode(choice.mode)) {
        if (choice.onlyJob && *choice.onlyJob != job.name) continue;
        for (const Measurement& measurement : job.measure(choice.programs)) {
            results.results.push_back(resultOf(measurement));
            print(results.results.back());
        }
    }
    results.loadAfter = loadAverage();
    std::printf("load average of the last minute: %.2f before, %.2f after\n", results.loadBefore, results.loadAfter);
    if (choice.resultsPath) writeResults(results, *choice.resultsPath);
}

} // namespace

int main(int count, char** arguments) {
    try {
        if (count == 4 && std::string_view(arguments[1]) == "--compare") {
            printComparison(readResults(arguments[2]), readResults(arguments[3]));
        } else if (count >= 3) {
            run(choiceFrom(count, arguments));
        } else {
            std::fputs("usage: benchmarks/run [quick|full|growth] [--only JOB] [--json FILE] | --compare FILE FILE\n",
                       stderr);
            return EXIT_FAILURE;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
