#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "shared/AutoWakeClientState.h"
#include "shared/AutoWakeEventRecord.h"
#include "shared/RecordFields.h"

// The whole of the state file; by default that of a new store.
struct AutoWakeStoreSnapshot {
    std::int64_t schemaVersion = 1;
    std::map<std::string, AutoWakeClientState> clientStatesByKey{};
    std::vector<AutoWakeEventRecord> events{}; // in the order of the scheduler
};

template <>
inline constexpr auto recordFields<AutoWakeStoreSnapshot> = std::tuple{
    field("schemaVersion", &AutoWakeStoreSnapshot::schemaVersion),
    field("clientStatesByKey", &AutoWakeStoreSnapshot::clientStatesByKey),
    field("events", &AutoWakeStoreSnapshot::events),
};
static_assert(listsEveryMember<AutoWakeStoreSnapshot>());
