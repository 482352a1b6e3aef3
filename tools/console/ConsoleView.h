#pragma once

#include <string>

class WorkspaceTree;

// By what a line is coloured, and by which mark it is known where there are no colours.
enum class LineKind { command, success, failure, event, note, text };

constexpr const char* markOf(LineKind kind) {
    switch (kind) {
        case LineKind::command:
            return "> ";
        case LineKind::success:
            return "< ";
        case LineKind::failure:
            return "! ";
        case LineKind::event:
            return "* ";
        case LineKind::note:
            return "- ";
        case LineKind::text:
            return "  ";
    }
    return "";
}

// What a session shows itself on: a screen, or lines. Texts may come from anywhere, and are made printable here.
class ConsoleView {
public:
    virtual ~ConsoleView() = default;

    virtual void showLine(LineKind kind, const std::string& text) = 0;
    virtual void showTree(const WorkspaceTree& tree) = 0;
    // Runs a shell command that has the terminal to itself meanwhile, and returns its exit status.
    virtual int runOnTerminal(const std::string& command) = 0;
};
