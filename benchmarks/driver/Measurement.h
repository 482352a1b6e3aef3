#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "driver/Program.h"
#include "shared/RecordFields.h"

// What was measured of one job: how the daemon and the limit program did it, in turns.

enum class TargetKind { none, ratioAtMost, ratioAtLeast, valueAtMost };

struct Target {
    TargetKind kind = TargetKind::none;
    double bound = 0;
};

struct Measurement {
    std::string job{};
    std::string unit{};
    Target target{};
    std::vector<double> daemon{};
    std::vector<double> limit{}; // as many, or none where there is nothing to compare with
    Usage usage{};               // of the daemon, at the end
    // Of the limit program, at the same moment after the same work; zero where the two cannot be compared.
    Usage limitUsage{};
};

double quantile(std::vector<double> values, double fraction);
inline double median(const std::vector<double>& values) {
    return quantile(values, 0.5);
}

// One line of the table.
struct BenchmarkResult {
    std::string job{};
    std::string unit{};
    double daemon{}; // medians
    std::optional<double> limit{};
    std::optional<double> ratio{}; // the median, smallest and largest ratio of two turns
    std::optional<double> smallestRatio{};
    std::optional<double> largestRatio{};
    std::string target{};
    std::optional<bool> isReached{};
    double peakMegabytes{};
    double processorSeconds{};
    std::optional<double> processorRatio{}; // to the limit program's, which a busy machine moves less than time
};

template <>
inline constexpr auto recordFields<BenchmarkResult> = std::tuple{
    field("job", &BenchmarkResult::job),
    field("unit", &BenchmarkResult::unit),
    field("daemon", &BenchmarkResult::daemon),
    field("limit", &BenchmarkResult::limit),
    field("ratio", &BenchmarkResult::ratio),
    field("smallestRatio", &BenchmarkResult::smallestRatio),
    field("largestRatio", &BenchmarkResult::largestRatio),
    field("target", &BenchmarkResult::target),
    field("isReached", &BenchmarkResult::isReached),
    field("peakMegabytes", &BenchmarkResult::peakMegabytes),
    field("processorSeconds", &BenchmarkResult::processorSeconds),
    field("processorRatio", &BenchmarkResult::processorRatio),
};

struct BenchmarkResults {
    std::string mode{};
    double loadBefore{}; // the load average of the last minute
    double loadAfter{};
    std::vector<BenchmarkResult> results{};
};

template <>
inline constexpr auto recordFields<BenchmarkResults> = std::tuple{
    field("mode", &BenchmarkResults::mode),
    field("loadBefore", &BenchmarkResults::loadBefore),
    field("loadAfter", &BenchmarkResults::loadAfter),
    field("results", &BenchmarkResults::results),
};

BenchmarkResult resultOf(const Measurement& measurement);
