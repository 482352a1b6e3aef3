#include <algorithm>

#include "tools/ShellWord.h"
#include "tools/console/CommandWords.h"
#include "tools/console/ConsoleSession.h"
#include "tools/console/ShellCommand.h"
#include "workspace/PathComponents.h"

using RequestCommand = EditorDocumentRequestCommand;

const std::vector<ConsoleSession::Command>& ConsoleSession::commands() {
    using Session = ConsoleSession;
    static const std::vector<Command> table{
        {"open", "FILE", "open a document, or read it again", &Session::open},
        {"edit", "FILE", "open it, edit it in $EDITOR, and save it", &Session::edit},
        {"write", "FILE TEXT", "open it, and save this text and a line end", &Session::write},
        {"text", "FILE", "show the text of an open document", &Session::text},
        {"close", "FILE", "close a document", &Session::close},
        {"tree", "", "show what is expanded", &Session::showTree},
        {"documents", "", "list the open documents", &Session::documentList},
        {"expand", "FOLDER", "list a folder, and follow its changes", &Session::expand},
        {"collapse", "FOLDER", "fold it up", &Session::collapse},
        {"touch", "FILE", "make an empty file", &Session::touch},
        {"mkdir", "FOLDER", "make a folder", &Session::makeFolder},
        {"mv", "ITEM DESTINATION", "rename it, or move it into a folder", &Session::move},
        {"cp", "ITEM DESTINATION", "copy it", &Session::copy},
        {"duplicate", "ITEM [DESTINATION]", "copy it beside itself", &Session::duplicate},
        {"trash", "ITEM", "move it to the trash", &Session::trash},
        {"rm", "ITEM", "delete it for good", &Session::remove},
        {"raw", "on|off", "show the lines of the protocol themselves", &Session::setRaw},
        {"help", "", "this list", &Session::help},
        {"quit", "", "end the daemon and leave; so does Control-D", &Session::quit},
    };
    return table;
}

void ConsoleSession::open(const Words& arguments) {
    send({.command = RequestCommand::open, .path = pathOf(arguments[0])});
}

void ConsoleSession::edit(const Words& arguments) {
    send({.command = RequestCommand::open, .path = pathOf(arguments[0])},
         [this](const Envelope& opened) { editText(opened.snapshot.value()); });
}

void ConsoleSession::write(const Words& arguments) {
    send({.command = RequestCommand::open, .path = pathOf(arguments[0])},
         [this, text = arguments[1] + "\n"](const Envelope& opened) {
             send({.command = RequestCommand::save,
                   .documentID = opened.snapshot.value().documentID,
                   .text = text,
                   .expectedVersion = opened.snapshot->version});
         });
}

void ConsoleSession::text(const Words& arguments) {
    const auto* document = documentAt(pathOf(arguments[0]));
    if (!document) return fail("It is not open.");
    for (std::size_t begin = 0; begin < document->text.size();) {
        const std::size_t end = std::min(document->text.find('\n', begin), document->text.size());
        view.showLine(LineKind::text, document->text.substr(begin, end - begin));
        begin = end + 1;
    }
}

void ConsoleSession::close(const Words& arguments) {
    const auto* document = documentAt(pathOf(arguments[0]));
    if (!document) return fail("It is not open.");
    send({.command = RequestCommand::close, .documentID = document->documentID});
}

void ConsoleSession::showTree(const Words&) {
    for (const TreeRow& row : workspace.rows()) view.showLine(LineKind::text, treeLine(row));
}

void ConsoleSession::documentList(const Words&) {
    for (const auto& [documentID, document] : documents)
        view.showLine(LineKind::note, document.path + ", version " + std::to_string(document.version));
    if (documents.empty()) view.showLine(LineKind::note, "No document is open.");
}

void ConsoleSession::expand(const Words& arguments) {
    send(itemRequest(RequestCommand::loadWorkspaceChildren, arguments[0]));
}

void ConsoleSession::collapse(const Words& arguments) {
    workspace.collapse(pathOf(arguments[0]));
    view.showTree(workspace);
}

void ConsoleSession::touch(const Words& arguments) {
    send(creationRequest(RequestCommand::createWorkspaceFile, arguments[0]));
}

void ConsoleSession::makeFolder(const Words& arguments) {
    send(creationRequest(RequestCommand::createWorkspaceFolder, arguments[0]));
}

// The daemon has two requests for what one command does in a shell.
void ConsoleSession::move(const Words& arguments) {
    const std::string destination = pathOf(arguments[1]);
    const bool staysInFolder =
        parentPath(pathOf(arguments[0])) == parentPath(destination) && !workspace.isDirectory(destination);
    Request request = itemRequest(
        staysInFolder ? RequestCommand::renameWorkspaceItem : RequestCommand::moveWorkspaceItem, arguments[0]);
    request.destinationPath = destination;
    send(std::move(request));
}

void ConsoleSession::copy(const Words& arguments) {
    Request request = itemRequest(RequestCommand::copyWorkspaceItem, arguments[0]);
    request.destinationPath = pathOf(arguments[1]);
    send(std::move(request));
}

void ConsoleSession::duplicate(const Words& arguments) {
    Request request = itemRequest(RequestCommand::duplicateWorkspaceItem, arguments[0]);
    if (arguments.size() > 1) request.destinationPath = pathOf(arguments[1]);
    send(std::move(request));
}

void ConsoleSession::trash(const Words& arguments) {
    send(itemRequest(RequestCommand::trashWorkspaceItem, arguments[0]));
}

void ConsoleSession::remove(const Words& arguments) {
    send(itemRequest(RequestCommand::deleteWorkspaceItem, arguments[0]));
}

void ConsoleSession::setRaw(const Words& arguments) {
    if (arguments[0] != "on" && arguments[0] != "off") return fail("It is typed: raw on, or raw off");
    isRaw = arguments[0] == "on";
}

void ConsoleSession::help(const Words&) {
    for (const Command& command : commands()) {
        std::string typed = std::string(command.name) + " " + std::string(command.arguments);
        typed.resize(std::max<std::size_t>(typed.size(), 22), ' ');
        view.showLine(LineKind::note, typed + " " + std::string(command.explanation));
    }
    view.showLine(LineKind::note, "{…}                    send a request as it stands");
    view.showLine(LineKind::note, "$ …                    run a shell command in the folder");
}

void ConsoleSession::quit(const Words&) {
    wasQuit = true;
}

const EditorDocumentSnapshotPayload* ConsoleSession::documentAt(const std::string& path) const {
    const auto found =
        std::ranges::find_if(documents, [&](const auto& document) { return document.second.path == path; });
    return found == documents.end() ? nullptr : &found->second;
}

EditorDocumentDaemonRequest ConsoleSession::itemRequest(RequestCommand command, const std::string& typedPath) const {
    return {.command = command, .rootPath = pathOf(""), .path = pathOf(typedPath)};
}

EditorDocumentDaemonRequest ConsoleSession::creationRequest(RequestCommand command,
                                                            const std::string& typedPath) const {
    const std::string path = pathOf(typedPath);
    return {.command = command, .rootPath = pathOf(""), .path = parentPath(path), .name = lastPathComponent(path)};
}

// The text is only thrown away once it is in the file: another program may have changed that meanwhile.
void ConsoleSession::editText(const EditorDocumentSnapshotPayload& document) {
    const auto draft = std::make_shared<Draft>(document.text, nameParts(lastPathComponent(document.path)).extension);
    const int status = view.runOnTerminal(editorCommand() + " " + shellWord(draft->path()));
    const auto text = status == 0 ? draft->text() : std::nullopt;
    if (!text) return fail("The editor ended with status " + std::to_string(status) + "; nothing was saved.");
    if (*text == document.text) return view.showLine(LineKind::note, "The text is as it was; nothing was saved.");
    view.showLine(LineKind::note, "The text is kept in " + draft->path() + " until it is saved.");
    draft->keep();
    send({.command = RequestCommand::save,
          .documentID = document.documentID,
          .text = *text,
          .expectedVersion = document.version},
         [draft](const Envelope&) { draft->discard(); });
}
