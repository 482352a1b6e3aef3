#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "shared/EnumerationNames.h"
#include "shared/RecordFields.h"

enum class EditorDocumentRequestCommand {
    open,
    save,
    close,
    openWorkspace,
    closeWorkspace,
    loadWorkspaceChildren,
    createWorkspaceFile,
    createWorkspaceFolder,
    renameWorkspaceItem,
    moveWorkspaceItem,
    copyWorkspaceItem,
    duplicateWorkspaceItem,
    trashWorkspaceItem,
    deleteWorkspaceItem,
};

template <>
inline constexpr auto enumerationNames<EditorDocumentRequestCommand> = namesInOrder<EditorDocumentRequestCommand>({
    {EditorDocumentRequestCommand::open, "open"},
    {EditorDocumentRequestCommand::save, "save"},
    {EditorDocumentRequestCommand::close, "close"},
    {EditorDocumentRequestCommand::openWorkspace, "openWorkspace"},
    {EditorDocumentRequestCommand::closeWorkspace, "closeWorkspace"},
    {EditorDocumentRequestCommand::loadWorkspaceChildren, "loadWorkspaceChildren"},
    {EditorDocumentRequestCommand::createWorkspaceFile, "createWorkspaceFile"},
    {EditorDocumentRequestCommand::createWorkspaceFolder, "createWorkspaceFolder"},
    {EditorDocumentRequestCommand::renameWorkspaceItem, "renameWorkspaceItem"},
    {EditorDocumentRequestCommand::moveWorkspaceItem, "moveWorkspaceItem"},
    {EditorDocumentRequestCommand::copyWorkspaceItem, "copyWorkspaceItem"},
    {EditorDocumentRequestCommand::duplicateWorkspaceItem, "duplicateWorkspaceItem"},
    {EditorDocumentRequestCommand::trashWorkspaceItem, "trashWorkspaceItem"},
    {EditorDocumentRequestCommand::deleteWorkspaceItem, "deleteWorkspaceItem"},
});

// One line from the client. Which fields a command reads is told with the commands; the others are ignored, but their
// types are checked.
struct EditorDocumentDaemonRequest {
    std::string requestID{};
    EditorDocumentRequestCommand command{};
    std::optional<std::string> rootPath{};
    std::optional<std::string> path{};
    std::optional<std::string> destinationPath{};
    std::optional<std::string> name{};
    std::optional<std::string> documentID{};
    std::optional<std::string> text{};
    std::optional<std::int64_t> expectedVersion{};
};

template <>
inline constexpr auto recordFields<EditorDocumentDaemonRequest> = std::tuple{
    field("requestID", &EditorDocumentDaemonRequest::requestID),
    field("command", &EditorDocumentDaemonRequest::command),
    pathField("rootPath", &EditorDocumentDaemonRequest::rootPath),
    pathField("path", &EditorDocumentDaemonRequest::path),
    pathField("destinationPath", &EditorDocumentDaemonRequest::destinationPath),
    pathField("name", &EditorDocumentDaemonRequest::name),
    field("documentID", &EditorDocumentDaemonRequest::documentID),
    field("text", &EditorDocumentDaemonRequest::text),
    field("expectedVersion", &EditorDocumentDaemonRequest::expectedVersion),
};
static_assert(listsEveryMember<EditorDocumentDaemonRequest>());
