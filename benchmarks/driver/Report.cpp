#include "driver/Report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "shared/RecordCoding.h"
#include "shared/RecordDecoder.h"
#include "shared/RecordEncoder.h"

namespace {

std::string optionalNumber(const std::optional<double>& number) {
    return number ? shortNumber(*number) : "";
}

std::string verdict(const std::optional<bool>& isReached) {
    if (!isReached) return "";
    return *isReached ? "reached" : "MISSED";
}

std::string range(const BenchmarkResult& result) {
    if (!result.ratio) return "";
    return shortNumber(*result.smallestRatio) + " to " + shortNumber(*result.largestRatio);
}

} // namespace

std::string shortNumber(double number) {
    const double magnitude = std::abs(number);
    const int digits = magnitude >= 99.5 || magnitude == 0 ? 0 : magnitude >= 9.95 ? 1 : magnitude >= 0.995 ? 2 : 3;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", digits, number);
    return text.data();
}

void printHeading() {
    std::printf("%-52s %-6s %9s %9s %7s %-19s %-12s %-8s %8s %8s %9s\n", "job", "unit", "daemon", "limit", "ratio",
                "smallest to largest", "target", "", "peak MB", "CPU s", "CPU ratio");
}

void print(const BenchmarkResult& result) {
    std::printf("%-52s %-6s %9s %9s %7s %-19s %-12s %-8s %8s %8s %9s\n", result.job.c_str(), result.unit.c_str(),
                shortNumber(result.daemon).c_str(), optionalNumber(result.limit).c_str(),
                optionalNumber(result.ratio).c_str(), range(result).c_str(), result.target.c_str(),
                verdict(result.isReached).c_str(), shortNumber(result.peakMegabytes).c_str(),
                shortNumber(result.processorSeconds).c_str(), optionalNumber(result.processorRatio).c_str());
    std::fflush(stdout);
}

void writeResults(const BenchmarkResults& results, const std::string& path) {
    std::ofstream file(path);
    file << RecordEncoder(JSONLayout::pretty).encode(results).value() << '\n';
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

BenchmarkResults readResults(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw std::runtime_error("cannot read " + path);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t size = text.size();
    text.append(decodingPadding, ' ');
    simdjson::ondemand::parser parser;
    return RecordDecoder(std::string_view(text).substr(0, size)).decode<BenchmarkResults>(parser);
}

void printComparison(const BenchmarkResults& before, const BenchmarkResults& after) {
    std::printf("%-52s %-6s %9s %9s %8s %12s %12s\n", "job", "unit", "before", "after", "change", "ratio before",
                "ratio after");
    for (const BenchmarkResult& now : after.results) {
        const auto then = std::ranges::find(before.results, now.job, &BenchmarkResult::job);
        if (then == before.results.end()) continue;
        const double change = 100 * (now.daemon / then->daemon - 1);
        std::printf("%-52s %-6s %9s %9s %+7.1f%% %12s %12s\n", now.job.c_str(), now.unit.c_str(),
                    shortNumber(then->daemon).c_str(), shortNumber(now.daemon).c_str(), change,
                    optionalNumber(then->ratio).c_str(), optionalNumber(now.ratio).c_str());
    }
}
