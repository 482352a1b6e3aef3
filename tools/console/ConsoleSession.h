#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "shared/EditorDocumentDaemonClient.h"
#include "tools/console/ConsoleView.h"
#include "tools/console/Recording.h"
#include "tools/console/WorkspaceTree.h"

// A conversation with a daemon about one folder: what the user types becomes requests, and what comes back is shown.
// Belongs to whoever waits for the client's descriptor.
class ConsoleSession {
public:
    using Words = std::vector<std::string>;

    ConsoleSession(EditorDocumentDaemonClient& client, ConsoleView& view, Recording* recording = nullptr);

    void openWorkspace(const std::string& rootPath);

    // Carries out a command line: "open notes.txt", "{…}" for a request as it is, "$ …" for a shell command in the
    // folder. Answers come later.
    void run(std::string_view line);

    // Nothing is waited for.
    bool isIdle() const { return openRequestCount == 0; }
    // Of the last command, once the session is idle.
    bool hasFailed() const { return isFailed; }
    bool isOver() const { return wasQuit || client.hasEnded(); }
    bool wasLeft() const { return wasQuit; }

    // How many documents are open.
    std::size_t documentCount() const { return documents.size(); }
    const WorkspaceTree& tree() const { return workspace; }

    // What the word before the cursor may become, in the form in which it is typed.
    Words completions(std::string_view lineBeforeWord, std::string_view word) const;

    // The table of commands; members so that a row can name one.
    struct Command {
        std::string_view name;
        std::string_view arguments; // one word each, and so their number; "[…]" need not be there
        std::string_view explanation;
        void (ConsoleSession::*carryOut)(const Words& arguments);
    };
    static const std::vector<Command>& commands();

private:
    using Envelope = EditorDocumentDaemonEnvelope;
    using Request = EditorDocumentDaemonRequest;
    using Then = std::function<void(const Envelope&)>;

    void attempt(const std::function<void()>& action);
    void runWords(const Words& words);
    void runShell(const std::string& command);
    void sendLine(std::string_view line);
    void send(Request request, Then thenOnSuccess = {});
    EditorDocumentDaemonClient::Receive answered(Then thenOnSuccess);
    void take(const Envelope& envelope);
    void followMutation(const WorkspaceBrowserMutationPayload& mutation);
    void takeEvent(const Envelope& event);
    void fail(const std::string& message);

    void open(const Words& arguments);
    void edit(const Words& arguments);
    void text(const Words& arguments);
    void write(const Words& arguments);
    void close(const Words& arguments);
    void showTree(const Words& arguments);
    void documentList(const Words& arguments);
    void expand(const Words& arguments);
    void collapse(const Words& arguments);
    void touch(const Words& arguments);
    void makeFolder(const Words& arguments);
    void move(const Words& arguments);
    void copy(const Words& arguments);
    void duplicate(const Words& arguments);
    void trash(const Words& arguments);
    void remove(const Words& arguments);
    void setRaw(const Words& arguments);
    void help(const Words& arguments);
    void quit(const Words& arguments);

    std::string pathOf(const std::string& typed) const;
    const EditorDocumentSnapshotPayload* documentAt(const std::string& path) const;
    Request itemRequest(EditorDocumentRequestCommand command, const std::string& typedPath) const;
    Request creationRequest(EditorDocumentRequestCommand command, const std::string& typedPath) const;
    void editText(const EditorDocumentSnapshotPayload& document);

    EditorDocumentDaemonClient& client;
    ConsoleView& view;
    Recording* recording;
    std::string startPath{}; // the folder as it was given
    WorkspaceTree workspace{};
    std::map<std::string, EditorDocumentSnapshotPayload> documents{}; // by documentID
    int openRequestCount = 0;
    bool isFailed = false;
    bool isRaw = false;
    bool wasQuit = false;
};
