#pragma once

#include <optional>
#include <string>

#include "shared/EnumerationNames.h"

enum class WorkspaceWatchEventKind {
    changeInDirectory,
    rootChanged,
    itemChangedOwner,
    itemCreated,
    itemCloned,
    itemModified,
    itemRemoved,
    itemRenamed,
};

template <>
inline constexpr auto enumerationNames<WorkspaceWatchEventKind> = namesInOrder<WorkspaceWatchEventKind>({
    {WorkspaceWatchEventKind::changeInDirectory, "changeInDirectory"},
    {WorkspaceWatchEventKind::rootChanged, "rootChanged"},
    {WorkspaceWatchEventKind::itemChangedOwner, "itemChangedOwner"},
    {WorkspaceWatchEventKind::itemCreated, "itemCreated"},
    {WorkspaceWatchEventKind::itemCloned, "itemCloned"},
    {WorkspaceWatchEventKind::itemModified, "itemModified"},
    {WorkspaceWatchEventKind::itemRemoved, "itemRemoved"},
    {WorkspaceWatchEventKind::itemRenamed, "itemRenamed"},
});

// One thing that happened to one item below a watched root. Paths are in normal form.
struct WorkspaceWatchEvent {
    std::string rootPath{};
    std::string path{};
    WorkspaceWatchEventKind kind{};
    std::optional<std::string> relatedPath{}; // only of a paired rename: its other end
    std::optional<std::string> nodeIDHint{};
    std::optional<bool> isDirectory{};
    bool isRegularFile = false; // and so leads to no directory, as a link may

    bool operator==(const WorkspaceWatchEvent&) const = default;
};
