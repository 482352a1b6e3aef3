#pragma once

#include "platform/Clock.h"

// The clock by which a SerialQueue delays its tasks.
class SteadyClock final : public Clock {
public:
    std::chrono::nanoseconds uptime() const override { return std::chrono::steady_clock::now().time_since_epoch(); }
};
