#include "watch/RenamePairing.h"

#include <algorithm>
#include <utility>

namespace {

WorkspaceWatchEvent unpairedEvent(RawEvent raw) {
    return {
        .rootPath = std::move(raw.rootPath),
        .path = std::move(raw.path),
        .kind = raw.kind,
        .nodeIDHint = std::move(raw.nodeIDHint),
        .isDirectory = raw.isDirectory,
        .isRegularFile = raw.isRegularFile,
    };
}

bool isRenameWithIdentity(const RawEvent& raw) {
    return raw.kind == WorkspaceWatchEventKind::itemRenamed && raw.nodeIDHint && !raw.nodeIDHint->empty();
}

WorkspaceWatchEvent pairedRenameEvent(const RawEvent& first, const RawEvent& second, const FileManager& fileManager) {
    const bool firstExists = fileManager.fileExists(first.path);
    const bool secondExists = fileManager.fileExists(second.path);
    // Where the disk does not tell the direction, the order of the names decides, so that it is at least always the
    // same.
    const bool isForward = firstExists == secondExists ? first.path <= second.path : secondExists;
    WorkspaceWatchEvent event = unpairedEvent(first);
    event.path = isForward ? first.path : second.path;
    event.relatedPath = isForward ? second.path : first.path;
    if (!event.isDirectory) event.isDirectory = second.isDirectory;
    return event;
}

} // namespace

std::vector<WorkspaceWatchEvent> RenamePairing::pairRenameEvents(std::vector<RawEvent> rawEvents,
                                                                 std::chrono::nanoseconds now,
                                                                 const FileManager& fileManager) {
    std::vector<WorkspaceWatchEvent> events = flushExpiredPendingRenames(now);
    events.reserve(events.size() + rawEvents.size());
    for (RawEvent& raw : rawEvents) {
        if (!isRenameWithIdentity(raw)) {
            events.push_back(unpairedEvent(std::move(raw)));
            continue;
        }
        const auto [pending, isFirst] =
            pendingRenameByIdentity.try_emplace(raw.rootPath + '|' + *raw.nodeIDHint, PendingRename{raw, now});
        if (isFirst) continue;
        events.push_back(pairedRenameEvent(pending->second.event, raw, fileManager));
        pendingRenameByIdentity.erase(pending);
    }
    return events;
}

std::vector<WorkspaceWatchEvent> RenamePairing::flushExpiredPendingRenames(std::chrono::nanoseconds now) {
    std::vector<WorkspaceWatchEvent> events;
    std::erase_if(pendingRenameByIdentity, [&](const auto& entry) {
        const bool isExpired = now - entry.second.recordedAtUptime >= pendingRenameRetention;
        if (isExpired) events.push_back(unpairedEvent(entry.second.event));
        return isExpired;
    });
    return events;
}
