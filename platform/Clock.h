#pragma once

#include <chrono>

// A clock that only goes forward, from an origin of its own. May be read on any queue.
class Clock {
public:
    virtual ~Clock() = default;

    virtual std::chrono::nanoseconds uptime() const = 0;
};
