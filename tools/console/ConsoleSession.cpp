#include "tools/console/ConsoleSession.h"

#include <algorithm>
#include <stdexcept>

#include "platform/PlatformError.h"
#include "shared/Whitespace.h"
#include "tools/ShellWord.h"
#include "tools/console/CommandWords.h"
#include "tools/console/EnvelopeSummary.h"
#include "tools/console/ShellCommand.h"
#include "workspace/PathComponents.h"

ConsoleSession::ConsoleSession(EditorDocumentDaemonClient& daemonClient, ConsoleView& consoleView,
                               Recording* sessionRecording)
    : client(daemonClient), view(consoleView), recording(sessionRecording) {
    client.onEvent = [this](const Envelope& event) { takeEvent(event); };
    client.onEnd = [this](const std::string& outcome) {
        if (!wasQuit) view.showLine(LineKind::failure, "The daemon " + outcome + ".");
    };
    client.onSentLine = [this](std::string_view line) {
        if (recording) recording->note('>', line);
        if (isRaw) view.showLine(LineKind::command, std::string(line));
    };
    client.onReceivedLine = [this](std::string_view line) {
        if (recording) recording->note('<', line);
        if (isRaw) view.showLine(LineKind::text, std::string(line));
    };
}

void ConsoleSession::openWorkspace(const std::string& rootPath) {
    startPath = rootPath;
    send({.command = EditorDocumentRequestCommand::openWorkspace, .rootPath = rootPath});
}

void ConsoleSession::run(std::string_view line) {
    line = trimmed(line);
    if (line.empty() || line.starts_with('#')) return;
    isFailed = false;
    view.showLine(LineKind::command, std::string(line));
    attempt([&] {
        if (line.starts_with('$')) return runShell(std::string(trimmed(line.substr(1))));
        if (line.starts_with('{')) return sendLine(line);
        const auto words = wordsOf(line);
        if (!words) return fail("A quote or an escape is not complete.");
        runWords(*words);
    });
}

void ConsoleSession::attempt(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::invalid_argument& error) {
        fail(error.what());
    } catch (const PlatformError& error) {
        fail(error.localizedDescription);
    }
}

void ConsoleSession::runWords(const Words& words) {
    const auto command = std::ranges::find(commands(), words.front(), &Command::name);
    if (command == commands().end()) return fail("There is no command " + words.front() + "; try help.");
    const auto hint = wordsOf(command->arguments).value_or(Words{});
    const auto needed =
        static_cast<std::size_t>(std::ranges::count_if(hint, [](const auto& word) { return !word.starts_with('['); }));
    const Words arguments(words.begin() + 1, words.end());
    if (arguments.size() < needed || arguments.size() > hint.size())
        return fail("It is typed: " + words.front() + " " + std::string(command->arguments));
    (this->*command->carryOut)(arguments);
}

void ConsoleSession::runShell(const std::string& command) {
    if (recording) recording->note('$', command);
    const int status = runForOutput("cd " + shellWord(pathOf("")) + " && " + command,
                                    [&](const std::string& line) { view.showLine(LineKind::text, line); });
    if (status != 0) fail("The shell command ended with status " + std::to_string(status) + ".");
}

void ConsoleSession::sendLine(std::string_view line) {
    client.sendLine(line, answered({}));
    ++openRequestCount;
}

void ConsoleSession::send(Request request, Then thenOnSuccess) {
    client.send(std::move(request), answered(std::move(thenOnSuccess)));
    ++openRequestCount;
}

EditorDocumentDaemonClient::Receive ConsoleSession::answered(Then thenOnSuccess) {
    return [this, thenOnSuccess](const Envelope& envelope) {
        --openRequestCount;
        const bool isSuccess = envelope.success.value_or(false);
        isFailed = isFailed || !isSuccess;
        take(envelope);
        if (!isRaw) {
            view.showLine(isSuccess ? LineKind::success : LineKind::failure, summaryOf(envelope, workspace.rootPath()));
        }
        if (isSuccess && thenOnSuccess) attempt([&] { thenOnSuccess(envelope); });
    };
}

void ConsoleSession::take(const Envelope& envelope) {
    if (envelope.snapshot) documents[envelope.snapshot->documentID] = *envelope.snapshot;
    if (envelope.command == EditorDocumentRequestCommand::close && envelope.success == true)
        documents.erase(envelope.documentID.value_or(""));
    // A deletion makes the version one higher without a snapshot.
    if (envelope.event == EditorDocumentEventKind::deleted) {
        const auto found = documents.find(envelope.documentID.value_or(""));
        if (found != documents.end()) ++found->second.version;
    }
    if (envelope.command && envelope.workspaceMutation) followMutation(*envelope.workspaceMutation);
    workspace.apply(envelope);
    if (envelope.workspaceDirectory || envelope.event == EditorDocumentEventKind::workspaceRootUnavailable)
        view.showTree(workspace);
}

// No event tells what a request does to the documents at or below its item.
void ConsoleSession::followMutation(const WorkspaceBrowserMutationPayload& mutation) {
    using Kind = WorkspaceBrowserMutationKind;
    for (auto& [documentID, document] : documents) {
        if (!mutation.sourcePath || !isAtOrWithin(document.path, *mutation.sourcePath)) continue;
        if (mutation.kind == Kind::trashed || mutation.kind == Kind::deleted) ++document.version;
        if ((mutation.kind == Kind::renamed || mutation.kind == Kind::moved) && mutation.destinationPath)
            document.path.replace(0, mutation.sourcePath->size(), *mutation.destinationPath);
    }
}

void ConsoleSession::takeEvent(const Envelope& event) {
    take(event);
    if (isRaw) return;
    std::string line = summaryOf(event, workspace.rootPath());
    // An event that only names the document says little to people.
    const auto document = documents.find(event.documentID.value_or(""));
    if (!event.snapshot && document != documents.end()) line += " (" + document->second.path + ")";
    view.showLine(LineKind::event, line);
}

void ConsoleSession::fail(const std::string& message) {
    isFailed = true;
    view.showLine(LineKind::failure, message);
}

ConsoleSession::Words ConsoleSession::completions(std::string_view lineBeforeWord, std::string_view word) const {
    Words result;
    if (trimmed(lineBeforeWord).empty()) {
        for (const Command& command : commands()) {
            if (command.name.starts_with(word)) result.emplace_back(command.name);
        }
        return result;
    }
    const std::size_t slash = word.rfind('/');
    const std::string folder(word.substr(0, slash == word.npos ? 0 : slash + 1));
    const auto folderWords = wordsOf(folder);
    if (!folderWords) return result;
    for (const TreeRow& child : workspace.children(pathOf(folderWords->empty() ? "" : folderWords->front()))) {
        const std::string candidate = folder + quotedWord(child.name) + (child.isDirectory ? "/" : "");
        if (candidate.starts_with(word)) result.push_back(candidate);
    }
    return result;
}

// As the daemon will read it, but that a relative path begins at the root and not where this program was started.
std::string ConsoleSession::pathOf(const std::string& typed) const {
    const std::string& root = workspace.rootPath().empty() ? startPath : workspace.rootPath();
    if (typed.empty()) return root;
    if (typed.starts_with('~')) return typed;
    return standardizedPath(typed.starts_with('/') ? typed : appendingPathComponent(root, typed));
}
