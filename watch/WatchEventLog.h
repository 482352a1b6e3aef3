#pragma once

#include <string>
#include <vector>

#include "watch/RenamePairing.h"
#include "watch/WorkspaceWatchEvent.h"

// The two lines that tell a person what came in from the system and what went on to the daemon.
std::string watchEventLog(const std::vector<RawEvent>& rawEvents, const std::vector<WorkspaceWatchEvent>& pairedEvents);
