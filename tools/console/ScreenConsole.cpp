#include "tools/console/ScreenConsole.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "platform/linux/files/SystemCall.h"
#include "tools/console/Screen.h"
#include "tools/console/ShellCommand.h"

namespace {

constexpr std::size_t keptLines = 5000;
constexpr std::size_t mostRowsOfALine = 40;

std::string historyPath() {
    if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state == '/')
        return std::string(state) + "/EditorDocumentConsole/history";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.local/state/EditorDocumentConsole/history";
}

Screen::Style styleOf(LineKind kind) {
    switch (kind) {
        case LineKind::command:
            return Screen::Style::command;
        case LineKind::success:
            return Screen::Style::success;
        case LineKind::failure:
            return Screen::Style::failure;
        case LineKind::event:
            return Screen::Style::event;
        case LineKind::note:
            return Screen::Style::note;
        case LineKind::text:
            return Screen::Style::plain;
    }
    return Screen::Style::plain;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    std::vector<std::string> rows;
    do {
        const std::size_t length = fittingLength(text, width);
        rows.emplace_back((rows.empty() ? "" : "  ") + std::string(text.substr(0, length)));
        text.remove_prefix(length);
        if (rows.size() == 1) width = width > 3 ? width - 2 : 1;
    } while (!text.empty() && rows.size() < mostRowsOfALine);
    if (!text.empty()) rows.back() = "  …";
    return rows;
}

} // namespace

ScreenConsole::ScreenConsole(TerminalCharacters terminalCharacters)
    : characters(terminalCharacters), screen(std::make_unique<Screen>()) {}

ScreenConsole::~ScreenConsole() = default;

void ScreenConsole::showLine(LineKind kind, const std::string& text) {
    log.push_back({kind, markOf(kind) + printable(text, characters)});
    if (log.size() > keptLines) log.pop_front();
    if (linesBelow > 0) ++linesBelow; // what is being read stays where it is
}

void ScreenConsole::showTree(const WorkspaceTree& tree) {
    treeRows = tree.rows();
}

int ScreenConsole::runOnTerminal(const std::string& command) {
    screen->leave();
    const int status = ::runOnTerminal(command);
    screen->comeBack();
    return status;
}

void ScreenConsole::run(EditorDocumentDaemonClient& client, ConsoleSession& session, int errorDescriptor) {
    LineEditor editor(hooks(session), historyPath());
    while (!session.wasLeft() && !isLeaving) {
        draw(session, editor);
        std::array<pollfd, 4> sources{{{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0},
                                       {.fd = screen->signalDescriptor(), .events = POLLIN, .revents = 0},
                                       {.fd = errorDescriptor, .events = POLLIN, .revents = 0},
                                       {.fd = client.descriptor(), .events = POLLIN, .revents = 0}}};
        if (::poll(sources.data(), sources.size(), -1) < 0) continue;
        if (sources[0].revents != 0) takeKey(editor);
        if (sources[1].revents != 0) takeSignal();
        if (sources[2].revents != 0) takeErrors(errorDescriptor);
        if (sources[3].revents != 0) client.exchange();
    }
}

// A terminal that has gone away is readable for ever.
void ScreenConsole::takeKey(LineEditor& editor) {
    pollfd terminal{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    do {
        if ((terminal.revents & (POLLHUP | POLLERR)) != 0) isLeaving = true;
        if (isLeaving) return;
        editor.readKey();
    } while (::poll(&terminal, 1, 0) > 0);
}

void ScreenConsole::takeErrors(int errorDescriptor) {
    std::array<char, 4096> bytes{};
    const ssize_t count = uninterrupted([&] { return ::read(errorDescriptor, bytes.data(), bytes.size()); });
    std::string_view text(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        showLine(LineKind::note, std::string(line));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
}

void ScreenConsole::takeSignal() {
    if (screen->takeSignal() == Screen::Signal::terminated) isLeaving = true;
}

LineEditor::Hooks ScreenConsole::hooks(ConsoleSession& session) {
    const auto moved = [](std::size_t from, int by) {
        return by < 0 ? from - std::min(from, static_cast<std::size_t>(-by)) : from + static_cast<std::size_t>(by);
    };
    return {
        .takeLine =
            [this, &session](const std::optional<std::string>& line) {
                linesBelow = 0;
                if (line) {
                    session.run(*line);
                } else {
                    isLeaving = true;
                }
            },
        .complete = [&session](std::string_view before,
                               std::string_view word) { return session.completions(before, word); },
        .showCandidates =
            [this](const std::vector<std::string>& candidates) {
                std::string line;
                for (const std::string& candidate : candidates) line += (line.empty() ? "" : "  ") + candidate;
                showLine(LineKind::note, line);
            },
        .scrollLog =
            [this, moved](int pages) {
                linesBelow = std::min(moved(linesBelow, pages * std::max(screen->height() / 2, 1)),
                                      log.empty() ? 0 : log.size() - 1);
            },
        .scrollTree =
            [this, moved](int lines) {
                rowsAbove = std::min(moved(rowsAbove, lines), treeRows.empty() ? 0 : treeRows.size() - 1);
            },
    };
}

void ScreenConsole::draw(const ConsoleSession& session, const LineEditor& editor) {
    screen->clear();
    drawTree();
    drawLog();
    const std::string documents = std::to_string(session.documentCount()) + " open";
    screen->drawBar(printable(session.tree().rootPath(), characters) + "  " + documents +
                    "   Tab completes, PgUp and PgDn scroll, help lists the commands, Control-D leaves");

    const std::string prompt = "> ";
    const std::string before = prompt + printable(editor.text().substr(0, editor.cursor()), characters);
    const std::string text = before + printable(editor.text().substr(editor.cursor()), characters);
    // Of a line that is too long the part with the cursor is shown.
    const std::size_t width = static_cast<std::size_t>(screen->logWidth() + screen->treeWidth());
    const std::size_t column = columnCount(before);
    const std::size_t hidden = column < width ? 0 : fittingLength(text, column - width / 2);
    screen->drawInput(text.substr(hidden),
                      static_cast<int>(columnCount(before.substr(std::min(hidden, before.size())))));
    screen->show();
}

void ScreenConsole::drawTree() {
    const auto rows = static_cast<std::size_t>(screen->height());
    rowsAbove = std::min(rowsAbove, treeRows.size() - std::min(treeRows.size(), rows));
    for (std::size_t row = 0; row < rows && rowsAbove + row < treeRows.size(); ++row) {
        const TreeRow& shown = treeRows[rowsAbove + row];
        const std::string text = printable(treeLine(shown), characters);
        screen->drawTreeRow(static_cast<int>(row), shown.isDirectory ? Screen::Style::folder : Screen::Style::plain,
                            text.substr(0, fittingLength(text, static_cast<std::size_t>(screen->treeWidth()))));
    }
}

void ScreenConsole::drawLog() {
    int row = screen->height();
    for (std::size_t index = log.size() - std::min(log.size(), linesBelow); index > 0 && row > 0; --index) {
        const Line& line = log[index - 1];
        const auto rows = wrapped(line.text, static_cast<std::size_t>(screen->logWidth()));
        for (auto text = rows.rbegin(); text != rows.rend() && row > 0; ++text)
            screen->drawLogRow(--row, styleOf(line.kind), *text);
    }
}
