#pragma once

#include <optional>
#include <string>

#include "shared/RecordFields.h"

// One item of a workspace's tree. The node ID holds the path itself where the file system gives no identity.
struct WorkspaceBrowserNodePayload {
    std::string nodeID{};
    std::string path{};
    std::optional<std::string> parentPath{};
    std::string name{};
    bool isDirectory{};
    bool isRoot{};
};

template <>
inline constexpr auto recordFields<WorkspaceBrowserNodePayload> = std::tuple{
    pathField("nodeID", &WorkspaceBrowserNodePayload::nodeID),
    pathField("path", &WorkspaceBrowserNodePayload::path),
    pathField("parentPath", &WorkspaceBrowserNodePayload::parentPath),
    pathField("name", &WorkspaceBrowserNodePayload::name),
    field("isDirectory", &WorkspaceBrowserNodePayload::isDirectory),
    field("isRoot", &WorkspaceBrowserNodePayload::isRoot),
};
static_assert(listsEveryMember<WorkspaceBrowserNodePayload>());
