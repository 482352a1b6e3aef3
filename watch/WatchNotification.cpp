#include "watch/WatchNotification.h"

#include <utility>
#include <variant>

#include "identity/StableNodeID.h"

namespace {

using Kind = WorkspaceWatchEventKind;

constexpr std::pair<std::uint32_t, Kind> kindsByFlag[] = {
    {EventStreamFlag::rootChanged, Kind::rootChanged},   {EventStreamFlag::itemChangeOwner, Kind::itemChangedOwner},
    {EventStreamFlag::itemCreated, Kind::itemCreated},   {EventStreamFlag::itemCloned, Kind::itemCloned},
    {EventStreamFlag::itemModified, Kind::itemModified}, {EventStreamFlag::itemRemoved, Kind::itemRemoved},
    {EventStreamFlag::itemRenamed, Kind::itemRenamed},
};

std::optional<bool> isDirectory(std::uint32_t flags) {
    if ((flags & EventStreamFlag::itemIsDir) != 0) return true;
    if ((flags & (EventStreamFlag::itemIsFile | EventStreamFlag::itemIsSymlink)) != 0) return false;
    return std::nullopt;
}

bool isRegularFile(std::uint32_t flags) {
    constexpr std::uint32_t types =
        EventStreamFlag::itemIsFile | EventStreamFlag::itemIsDir | EventStreamFlag::itemIsSymlink;
    return (flags & types) == EventStreamFlag::itemIsFile;
}

// An identifier that only its platform understands is no hint.
std::optional<std::string> nodeIDHint(const std::optional<FileIdentifier>& fileID) {
    if (!fileID || std::holds_alternative<OpaqueFileIdentifier>(*fileID)) return std::nullopt;
    return stableNodeIDString(*fileID);
}

} // namespace

std::vector<RawEvent> rawEvents(const EventStreamNotification& notification, const std::string& rootPath,
                                std::string path) {
    std::vector<RawEvent> events;
    const std::vector<Kind> kinds = eventKinds(notification.flags);
    for (const Kind& kind : kinds) {
        events.push_back({
            .rootPath = rootPath,
            .path = &kind == &kinds.back() ? std::move(path) : path,
            .kind = kind,
            .nodeIDHint = nodeIDHint(notification.fileID),
            .isDirectory = isDirectory(notification.flags),
            .isRegularFile = isRegularFile(notification.flags),
        });
    }
    return events;
}

std::vector<Kind> eventKinds(std::uint32_t flags) {
    if (flags == 0) return {Kind::changeInDirectory};
    std::vector<Kind> kinds;
    for (const auto& [flag, kind] : kindsByFlag) {
        if ((flags & flag) != 0) kinds.push_back(kind);
    }
    return kinds;
}
