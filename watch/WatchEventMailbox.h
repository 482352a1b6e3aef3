#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "watch/WorkspaceWatchEvent.h"

struct WatchEventNews {
    std::vector<WorkspaceWatchEvent> events{};
    bool isIncomplete = false; // more has happened, and nobody knows what
};

// Where events wait while their receiver is busy, be it for a client that does not read. Lists that wait are put
// together so that they need room in proportion to what changed, not to the time. May be used on any thread.
class WatchEventMailbox {
public:
    // Announces that there is something to take, once until it is taken. An empty list stands for events that were
    // lost. Where memory is short, events turn into the news that some are missing; nothing is thrown.
    void put(std::vector<WorkspaceWatchEvent> events, const std::function<void()>& announce) noexcept;

    WatchEventNews take();

private:
    bool isEmpty() const { return onlyList.empty() && events.empty(); }
    void enter(WorkspaceWatchEvent event);
    void giveUpEvents();

    std::mutex mutex{};
    bool isAnnounced = false;
    bool isIncomplete = false;
    // As a rule a list is taken before the next one comes, and nothing need be put together.
    std::vector<WorkspaceWatchEvent> onlyList{};
    std::list<WorkspaceWatchEvent> events{};
    std::unordered_map<std::string, std::list<WorkspaceWatchEvent>::iterator> eventsSinceRename{};
    std::unordered_set<std::size_t> distinctEvents{};
};
