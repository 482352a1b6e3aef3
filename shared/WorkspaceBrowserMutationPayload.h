#pragma once

#include <optional>
#include <string>
#include <vector>

#include "shared/EnumerationNames.h"
#include "shared/RecordFields.h"

enum class WorkspaceBrowserMutationKind {
    createdFile,
    createdFolder,
    renamed,
    moved,
    copied,
    duplicated,
    trashed,
    deleted,
};

template <>
inline constexpr auto enumerationNames<WorkspaceBrowserMutationKind> = namesInOrder<WorkspaceBrowserMutationKind>({
    {WorkspaceBrowserMutationKind::createdFile, "createdFile"},
    {WorkspaceBrowserMutationKind::createdFolder, "createdFolder"},
    {WorkspaceBrowserMutationKind::renamed, "renamed"},
    {WorkspaceBrowserMutationKind::moved, "moved"},
    {WorkspaceBrowserMutationKind::copied, "copied"},
    {WorkspaceBrowserMutationKind::duplicated, "duplicated"},
    {WorkspaceBrowserMutationKind::trashed, "trashed"},
    {WorkspaceBrowserMutationKind::deleted, "deleted"},
});

// Whether the daemon made the change itself on request, or saw it happen.
enum class WorkspaceBrowserMutationOrigin { internalOperation, externalWatch };

template <>
inline constexpr auto enumerationNames<WorkspaceBrowserMutationOrigin> = namesInOrder<WorkspaceBrowserMutationOrigin>({
    {WorkspaceBrowserMutationOrigin::internalOperation, "internalOperation"},
    {WorkspaceBrowserMutationOrigin::externalWatch, "externalWatch"},
});

// One change of one workspace item.
struct WorkspaceBrowserMutationPayload {
    std::string rootPath{};
    WorkspaceBrowserMutationOrigin origin{};
    WorkspaceBrowserMutationKind kind{};
    std::optional<std::string> itemNodeID{};
    std::optional<bool> isDirectory{};
    std::optional<std::string> sourcePath{};
    std::optional<std::string> destinationPath{};
    std::vector<std::string> affectedDirectoryPaths{};
};

template <>
inline constexpr auto recordFields<WorkspaceBrowserMutationPayload> = std::tuple{
    pathField("rootPath", &WorkspaceBrowserMutationPayload::rootPath),
    field("origin", &WorkspaceBrowserMutationPayload::origin),
    field("kind", &WorkspaceBrowserMutationPayload::kind),
    pathField("itemNodeID", &WorkspaceBrowserMutationPayload::itemNodeID),
    field("isDirectory", &WorkspaceBrowserMutationPayload::isDirectory),
    pathField("sourcePath", &WorkspaceBrowserMutationPayload::sourcePath),
    pathField("destinationPath", &WorkspaceBrowserMutationPayload::destinationPath),
    pathField("affectedDirectoryPaths", &WorkspaceBrowserMutationPayload::affectedDirectoryPaths),
};
static_assert(listsEveryMember<WorkspaceBrowserMutationPayload>());
