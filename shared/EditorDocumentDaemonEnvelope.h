#pragma once

#include <optional>
#include <string>

#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/EditorDocumentSnapshotPayload.h"
#include "shared/EnumerationNames.h"
#include "shared/RecordFields.h"
#include "shared/WorkspaceBrowserDirectoryPayload.h"
#include "shared/WorkspaceBrowserMutationPayload.h"

enum class EditorDocumentEnvelopeKind { response, event };

template <>
inline constexpr auto enumerationNames<EditorDocumentEnvelopeKind> = namesInOrder<EditorDocumentEnvelopeKind>({
    {EditorDocumentEnvelopeKind::response, "response"},
    {EditorDocumentEnvelopeKind::event, "event"},
});

enum class EditorDocumentEventKind {
    updated,
    deleted,
    unavailable,
    workspaceChildrenUpdated,
    workspaceRootUnavailable,
    workspaceMutation,
};

template <>
inline constexpr auto enumerationNames<EditorDocumentEventKind> = namesInOrder<EditorDocumentEventKind>({
    {EditorDocumentEventKind::updated, "updated"},
    {EditorDocumentEventKind::deleted, "deleted"},
    {EditorDocumentEventKind::unavailable, "unavailable"},
    {EditorDocumentEventKind::workspaceChildrenUpdated, "workspaceChildrenUpdated"},
    {EditorDocumentEventKind::workspaceRootUnavailable, "workspaceRootUnavailable"},
    {EditorDocumentEventKind::workspaceMutation, "workspaceMutation"},
});

// One line to the client: the response to a request, or an event. Only the fields that its kind fills are present.
struct EditorDocumentDaemonEnvelope {
    EditorDocumentEnvelopeKind kind{};
    std::optional<std::string> requestID{};
    std::optional<EditorDocumentRequestCommand> command{};
    std::optional<bool> success{};
    std::optional<std::string> message{};
    std::optional<EditorDocumentEventKind> event{};
    std::optional<std::string> documentID{};
    std::optional<EditorDocumentSnapshotPayload> snapshot{};
    std::optional<std::string> workspaceRootPath{};
    std::optional<WorkspaceBrowserDirectoryPayload> workspaceDirectory{};
    std::optional<WorkspaceBrowserMutationPayload> workspaceMutation{};
};

template <>
inline constexpr auto recordFields<EditorDocumentDaemonEnvelope> = std::tuple{
    field("kind", &EditorDocumentDaemonEnvelope::kind),
    field("requestID", &EditorDocumentDaemonEnvelope::requestID),
    field("command", &EditorDocumentDaemonEnvelope::command),
    field("success", &EditorDocumentDaemonEnvelope::success),
    pathField("message", &EditorDocumentDaemonEnvelope::message),
    field("event", &EditorDocumentDaemonEnvelope::event),
    field("documentID", &EditorDocumentDaemonEnvelope::documentID),
    field("snapshot", &EditorDocumentDaemonEnvelope::snapshot),
    pathField("workspaceRootPath", &EditorDocumentDaemonEnvelope::workspaceRootPath),
    field("workspaceDirectory", &EditorDocumentDaemonEnvelope::workspaceDirectory),
    field("workspaceMutation", &EditorDocumentDaemonEnvelope::workspaceMutation),
};
static_assert(listsEveryMember<EditorDocumentDaemonEnvelope>());
