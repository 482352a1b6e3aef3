#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

using WatchTime = std::chrono::steady_clock::time_point;

// When what has been gathered is told. A change is told as soon as things are quiet, since most are complete at once.
// But a file that has just vanished may be about to come back (a save by way of a backup), and one that is being
// written is no use yet: such names are waited for. Whoever keeps writing is not waited for indefinitely.
struct DeliveryPolicy {
    std::chrono::nanoseconds quiet = std::chrono::milliseconds(5);
    std::chrono::nanoseconds hold = std::chrono::milliseconds(100);
    std::chrono::nanoseconds cap = std::chrono::milliseconds(250);
};

struct DeliveryWindow {
    WatchTime first{}; // event
    WatchTime last{};
    std::optional<WatchTime> youngestUnsettled{};

    WatchTime closing(const DeliveryPolicy& policy) const {
        WatchTime time = last + policy.quiet;
        if (youngestUnsettled) time = std::max(time, *youngestUnsettled + policy.hold);
        return std::min(time, first + policy.cap);
    }
};
