#pragma once

#include <string>
#include <vector>

#include "platform/EventStream.h"
#include "watch/RenamePairing.h"

// What the notifications of the system mean.

// One event for each kind that the flags name, none for those that name no kind: changes of metadata alone and requests
// to look again are not told. The paths lie at or within the root.
std::vector<RawEvent> rawEvents(const EventStreamNotification& notification, const std::string& rootPath,
                                std::string path);

// The kinds that the flags name; a notification without any flag is a change somewhere in the directory.
std::vector<WorkspaceWatchEventKind> eventKinds(std::uint32_t flags);
