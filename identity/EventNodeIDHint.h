#pragma once

#include <cstdint>
#include <string>

// The event node ID hint of the item with this file number.
std::string eventNodeIDHint(std::uint64_t fileNumber);
