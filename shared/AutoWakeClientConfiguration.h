#pragma once

#include <cstdint>
#include <string>

#include "shared/RecordFields.h"

// What a client asks for. The store does not keep it.
struct AutoWakeClientConfiguration {
    std::string clientKey{};
    std::int64_t intervalMinutes{};
};

template <>
inline constexpr auto recordFields<AutoWakeClientConfiguration> = std::tuple{
    field("clientKey", &AutoWakeClientConfiguration::clientKey),
    field("intervalMinutes", &AutoWakeClientConfiguration::intervalMinutes),
};
static_assert(listsEveryMember<AutoWakeClientConfiguration>());
