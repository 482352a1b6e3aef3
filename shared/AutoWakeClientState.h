#pragma once

#include <cstdint>

#include "shared/MillisecondDate.h"
#include "shared/RecordFields.h"

// What was in force when an event was last scheduled for a client.
struct AutoWakeClientState {
    std::int64_t intervalMinutes{};
    MillisecondDate lastScheduledAt{};
};

template <>
inline constexpr auto recordFields<AutoWakeClientState> = std::tuple{
    field("intervalMinutes", &AutoWakeClientState::intervalMinutes),
    field("lastScheduledAt", &AutoWakeClientState::lastScheduledAt),
};
static_assert(listsEveryMember<AutoWakeClientState>());
