#pragma once

#include <functional>

#include "platform/PlatformError.h"

// The error that the action throws; one with the code 0 and no words when it throws none.
inline PlatformError errorOf(const std::function<void()>& action) {
    try {
        action();
        return PlatformError("", 0, "");
    } catch (const PlatformError& error) {
        return error;
    }
}
