#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileManager.h"
#include "watch/WorkspaceWatchEvent.h"

// One kind of one notification, before the halves of renames are joined.
struct RawEvent {
    std::string rootPath{};
    std::string path{};
    WorkspaceWatchEventKind kind{};
    std::optional<std::string> nodeIDHint{};
    std::optional<bool> isDirectory{};
    bool isRegularFile = false;

    bool operator==(const RawEvent&) const = default;
};

// Joins the two halves of a rename, which are told separately and may come in different batches, by the item's
// identity. A half whose partner does not come goes out alone. Times are those of one clock.
class RenamePairing {
public:
    // How long a half waits for its partner.
    static constexpr std::chrono::nanoseconds pendingRenameRetention = std::chrono::seconds(1);

    // The events to deliver now: first the halves that have waited too long, then those of this batch in their order.
    std::vector<WorkspaceWatchEvent> pairRenameEvents(std::vector<RawEvent> rawEvents, std::chrono::nanoseconds now,
                                                      const FileManager& fileManager);

    std::vector<WorkspaceWatchEvent> flushExpiredPendingRenames(std::chrono::nanoseconds now);

    bool isWaiting() const { return !pendingRenameByIdentity.empty(); }
    void discardAll() { pendingRenameByIdentity.clear(); }

private:
    struct PendingRename {
        RawEvent event{};
        std::chrono::nanoseconds recordedAtUptime{};
    };

    std::map<std::string, PendingRename> pendingRenameByIdentity; // by root path, "|" and node ID hint
};
