#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "shared/MillisecondDate.h"
#include "shared/RecordFields.h"

// One scheduled wake-up of a client, and what became of it.
struct AutoWakeEventRecord {
    std::string id{};
    std::string clientKey{};
    MillisecondDate scheduledAt{}; // when it is due
    MillisecondDate createdAt{};
    std::optional<MillisecondDate> lastDispatchAt{};
    std::int64_t dispatchAttemptCount{};
    std::optional<MillisecondDate> consumedAt{};
    std::optional<MillisecondDate> cancelledAt{};
};

template <>
inline constexpr auto recordFields<AutoWakeEventRecord> = std::tuple{
    field("id", &AutoWakeEventRecord::id),
    field("clientKey", &AutoWakeEventRecord::clientKey),
    field("scheduledAt", &AutoWakeEventRecord::scheduledAt),
    field("createdAt", &AutoWakeEventRecord::createdAt),
    field("lastDispatchAt", &AutoWakeEventRecord::lastDispatchAt),
    field("dispatchAttemptCount", &AutoWakeEventRecord::dispatchAttemptCount),
    field("consumedAt", &AutoWakeEventRecord::consumedAt),
    field("cancelledAt", &AutoWakeEventRecord::cancelledAt),
};
static_assert(listsEveryMember<AutoWakeEventRecord>());
