#include "tools/schema/EnvelopeForms.h"

namespace {

using Command = EditorDocumentRequestCommand;
using Event = EditorDocumentEventKind;

EnvelopeForm response(std::string_view name, std::vector<Command> commands, std::vector<std::string_view> carries) {
    return {.name = name,
            .kind = EditorDocumentEnvelopeKind::response,
            .commands = std::move(commands),
            .success = true,
            .carries = std::move(carries)};
}

EnvelopeForm failure(std::string_view name, std::vector<Command> commands) {
    return {.name = name,
            .kind = EditorDocumentEnvelopeKind::response,
            .commands = std::move(commands),
            .success = false,
            .carries = {"message"}};
}

EnvelopeForm event(std::string_view name, Event event, std::vector<std::string_view> carries,
                   std::vector<std::string_view> mayCarry = {}) {
    return {.name = name,
            .kind = EditorDocumentEnvelopeKind::event,
            .event = event,
            .carries = std::move(carries),
            .mayCarry = std::move(mayCarry)};
}

std::vector<Command> everyCommand() {
    std::vector<Command> commands;
    for (const auto& entry : enumerationNames<Command>) commands.push_back(entry.first);
    return commands;
}

} // namespace

const std::vector<EnvelopeForm>& envelopeForms() {
    static const std::vector<EnvelopeForm> forms{
        response("SnapshotResponse", {Command::open, Command::save}, {"snapshot"}),
        response("CloseResponse", {Command::close}, {"documentID"}),
        response("WorkspaceDirectoryResponse", {Command::openWorkspace, Command::loadWorkspaceChildren},
                 {"workspaceRootPath", "workspaceDirectory"}),
        response("CloseWorkspaceResponse", {Command::closeWorkspace}, {"workspaceRootPath"}),
        response("WorkspaceMutationResponse",
                 {Command::createWorkspaceFile, Command::createWorkspaceFolder, Command::renameWorkspaceItem,
                  Command::moveWorkspaceItem, Command::copyWorkspaceItem, Command::duplicateWorkspaceItem,
                  Command::trashWorkspaceItem, Command::deleteWorkspaceItem},
                 {"workspaceRootPath", "workspaceMutation"}),
        failure("RefusedResponse", everyCommand()),
        failure("FailedResponse", {}),
        event("UpdatedEvent", Event::updated, {"documentID", "snapshot"}),
        event("DeletedEvent", Event::deleted, {"documentID"}),
        event("UnavailableEvent", Event::unavailable, {"documentID", "message"}),
        event("WorkspaceChildrenUpdatedEvent", Event::workspaceChildrenUpdated,
              {"workspaceRootPath", "workspaceDirectory"}),
        event("WorkspaceRootUnavailableEvent", Event::workspaceRootUnavailable, {"workspaceRootPath"}, {"message"}),
        event("WorkspaceMutationEvent", Event::workspaceMutation, {"workspaceRootPath", "workspaceMutation"}),
    };
    return forms;
}
