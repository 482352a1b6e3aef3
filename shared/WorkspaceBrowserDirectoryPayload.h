#pragma once

#include <string>
#include <vector>

#include "shared/RecordFields.h"
#include "shared/WorkspaceBrowserNodePayload.h"

// One directory of a workspace with its children in their order.
struct WorkspaceBrowserDirectoryPayload {
    std::string rootPath{};
    std::string directoryPath{};
    std::vector<WorkspaceBrowserNodePayload> nodes{};
};

template <>
inline constexpr auto recordFields<WorkspaceBrowserDirectoryPayload> = std::tuple{
    pathField("rootPath", &WorkspaceBrowserDirectoryPayload::rootPath),
    pathField("directoryPath", &WorkspaceBrowserDirectoryPayload::directoryPath),
    field("nodes", &WorkspaceBrowserDirectoryPayload::nodes),
};
static_assert(listsEveryMember<WorkspaceBrowserDirectoryPayload>());
