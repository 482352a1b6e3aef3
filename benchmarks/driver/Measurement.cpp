#include "driver/Measurement.h"

#include <algorithm>

#include "driver/Report.h"

namespace {

std::string description(const Target& target, const std::string& unit) {
    switch (target.kind) {
        case TargetKind::none:
            return "";
        case TargetKind::ratioAtMost:
            return "<= " + shortNumber(target.bound) + " x";
        case TargetKind::ratioAtLeast:
            return ">= " + shortNumber(target.bound) + " x";
        case TargetKind::valueAtMost:
            return "<= " + shortNumber(target.bound) + " " + unit;
    }
    return "";
}

std::optional<bool> isReached(const Target& target, const BenchmarkResult& result) {
    switch (target.kind) {
        case TargetKind::none:
            return std::nullopt;
        case TargetKind::ratioAtMost:
            return result.ratio <= target.bound;
        case TargetKind::ratioAtLeast:
            return result.ratio >= target.bound;
        case TargetKind::valueAtMost:
            return result.daemon <= target.bound;
    }
    return std::nullopt;
}

} // namespace

double quantile(std::vector<double> values, double fraction) {
    std::ranges::sort(values);
    const double position = fraction * static_cast<double>(values.size() - 1);
    const auto lower = static_cast<std::size_t>(position);
    const std::size_t upper = std::min(lower + 1, values.size() - 1);
    return values[lower] + (values[upper] - values[lower]) * (position - static_cast<double>(lower));
}

BenchmarkResult resultOf(const Measurement& measurement) {
    BenchmarkResult result{
        .job = measurement.job,
        .unit = measurement.unit,
        .daemon = median(measurement.daemon),
        .target = description(measurement.target, measurement.unit),
        .peakMegabytes = measurement.usage.peakMegabytes,
        .processorSeconds = measurement.usage.processorTime.count(),
    };
    if (!measurement.limit.empty()) {
        std::vector<double> ratios;
        for (std::size_t turn = 0; turn < measurement.limit.size(); ++turn) {
            ratios.push_back(measurement.daemon[turn] / measurement.limit[turn]);
        }
        result.limit = median(measurement.limit);
        result.ratio = median(ratios);
        result.smallestRatio = std::ranges::min(ratios);
        result.largestRatio = std::ranges::max(ratios);
    }
    if (const double limit = measurement.limitUsage.processorTime.count(); limit > 0) {
        result.processorRatio = result.processorSeconds / limit;
    }
    result.isReached = isReached(measurement.target, result);
    return result;
}
