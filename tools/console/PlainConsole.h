#pragma once

#include <string>
#include <vector>

#include "tools/PrintableText.h"
#include "tools/console/ConsoleSession.h"
#include "tools/console/ConsoleView.h"

enum class Colours { no, yes };

// Lines in, lines out: for scripts, pipes and logs.
class PlainConsole final : public ConsoleView {
public:
    PlainConsole(TerminalCharacters characters, Colours colours);

    void showLine(LineKind kind, const std::string& text) override;
    void showTree(const WorkspaceTree&) override {}
    int runOnTerminal(const std::string& command) override;

    // Carries out the commands that can be read from the descriptor, each after the answers to the one before. Beyond
    // those of a session there are "wait TEXT", which waits for a line with the text since the last command, and "!"
    // before a command that must fail. False as soon as something goes otherwise, unless people are typing.
    bool run(EditorDocumentDaemonClient& client, ConsoleSession& session, int descriptor);

private:
    bool runOne(EditorDocumentDaemonClient& client, ConsoleSession& session, const std::string& line);
    bool waitForLine(EditorDocumentDaemonClient& client, const std::string& text);

    TerminalCharacters characters;
    Colours colours;
    std::vector<std::string> linesSinceCommand{};
};
