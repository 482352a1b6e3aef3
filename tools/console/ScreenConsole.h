#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "tools/PrintableText.h"
#include "tools/console/ConsoleSession.h"
#include "tools/console/ConsoleView.h"
#include "tools/console/LineEditor.h"
#include "tools/console/WorkspaceTree.h"

class Screen;

// A whole terminal: the tree on the left, what is said on the right, a line for commands below.
class ScreenConsole final : public ConsoleView {
public:
    // Throws a PlatformError when the terminal is of no known kind.
    explicit ScreenConsole(TerminalCharacters characters);
    ~ScreenConsole() override;

    void showLine(LineKind kind, const std::string& text) override;
    void showTree(const WorkspaceTree& tree) override;
    int runOnTerminal(const std::string& command) override;

    // Until the user leaves. What the daemon says on standard error can be read from the descriptor.
    void run(EditorDocumentDaemonClient& client, ConsoleSession& session, int errorDescriptor);

private:
    struct Line {
        LineKind kind{};
        std::string text{};
    };

    void takeKey(LineEditor& editor);
    void takeErrors(int errorDescriptor);
    void takeSignal();
    LineEditor::Hooks hooks(ConsoleSession& session);
    void draw(const ConsoleSession& session, const LineEditor& editor);
    void drawTree();
    void drawLog();

    TerminalCharacters characters;
    std::unique_ptr<Screen> screen;
    std::deque<Line> log{};
    std::vector<TreeRow> treeRows{};
    std::size_t linesBelow = 0; // of the log, below the part that is shown
    std::size_t rowsAbove = 0;  // of the tree
    bool isLeaving = false;
};
