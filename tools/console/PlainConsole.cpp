#include "tools/console/PlainConsole.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>

#include "platform/linux/files/SystemCall.h"
#include "shared/Whitespace.h"
#include "tools/console/ShellCommand.h"

namespace {

constexpr std::chrono::seconds longestWait{20};

const char* colourOf(LineKind kind) {
    switch (kind) {
        case LineKind::command:
            return "\x1B[1m";
        case LineKind::success:
            return "\x1B[32m";
        case LineKind::failure:
            return "\x1B[31m";
        case LineKind::event:
            return "\x1B[35m";
        case LineKind::note:
            return "\x1B[36m";
        case LineKind::text:
            return "";
    }
    return "";
}

// Lines of a descriptor, while the daemon is listened to as well.
class CommandLines {
public:
    CommandLines(EditorDocumentDaemonClient& daemonClient, int openDescriptor)
        : client(daemonClient), descriptor(openDescriptor) {}

    // Absent at the end of the lines, and when the daemon has ended.
    std::optional<std::string> next() {
        while (!client.hasEnded()) {
            const std::size_t lineFeed = bytes.find('\n');
            if (lineFeed != std::string::npos || isAtEnd) return take(lineFeed);
            std::array<pollfd, 2> sources{{{.fd = descriptor, .events = POLLIN, .revents = 0},
                                           {.fd = client.descriptor(), .events = POLLIN, .revents = 0}}};
            uninterrupted([&] { return ::poll(sources.data(), sources.size(), -1); });
            if (sources[1].revents != 0) client.exchange();
            if (sources[0].revents != 0) readPiece();
        }
        return std::nullopt;
    }

private:
    std::optional<std::string> take(std::size_t lineFeed) {
        if (lineFeed == std::string::npos && bytes.empty()) return std::nullopt;
        std::string line = bytes.substr(0, lineFeed);
        bytes.erase(0, lineFeed == std::string::npos ? lineFeed : lineFeed + 1);
        return line;
    }

    void readPiece() {
        std::array<char, 4096> piece{};
        const ssize_t count = uninterrupted([&] { return ::read(descriptor, piece.data(), piece.size()); });
        if (count > 0) bytes.append(piece.data(), static_cast<std::size_t>(count));
        isAtEnd = count <= 0;
    }

    EditorDocumentDaemonClient& client;
    const int descriptor;
    std::string bytes{};
    bool isAtEnd = false;
};

} // namespace

PlainConsole::PlainConsole(TerminalCharacters terminalCharacters, Colours whetherColoured)
    : characters(terminalCharacters), colours(whetherColoured) {}

void PlainConsole::showLine(LineKind kind, const std::string& text) {
    const std::string shown = printable(text, characters);
    if (kind != LineKind::command) linesSinceCommand.push_back(shown);
    if (colours == Colours::yes) {
        std::cout << colourOf(kind) << markOf(kind) << shown << "\x1B[0m" << std::endl;
    } else {
        std::cout << markOf(kind) << shown << std::endl;
    }
}

int PlainConsole::runOnTerminal(const std::string& command) {
    return ::runOnTerminal(command);
}

bool PlainConsole::run(EditorDocumentDaemonClient& client, ConsoleSession& session, int descriptor) {
    const bool isTyped = ::isatty(descriptor) == 1;
    while (!session.isIdle() && client.wait()) continue;
    if (session.hasFailed()) return false;
    CommandLines lines(client, descriptor);
    while (!session.isOver()) {
        const auto line = lines.next();
        if (!line) break;
        if (!runOne(client, session, *line) && !isTyped) return false;
    }
    return !client.hasEnded();
}

bool PlainConsole::runOne(EditorDocumentDaemonClient& client, ConsoleSession& session, const std::string& line) {
    std::string_view command = trimmed(line);
    if (command.starts_with("wait ")) return waitForLine(client, std::string(trimmed(command.substr(5))));
    const bool mustFail = command.starts_with('!');
    if (mustFail) command = trimmed(command.substr(1));
    linesSinceCommand.clear();
    session.run(command);
    while (!session.isIdle() && client.wait()) continue;
    if (session.hasFailed() == mustFail || command.empty() || command.starts_with('#')) return true;
    if (mustFail) showLine(LineKind::failure, "This should have failed.");
    return false;
}

bool PlainConsole::waitForLine(EditorDocumentDaemonClient& client, const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + longestWait;
    const auto hasCome = [&] {
        return std::ranges::any_of(linesSinceCommand, [&](const auto& line) { return line.find(text) != line.npos; });
    };
    while (!hasCome()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() > 0 && client.wait(left)) continue;
        showLine(LineKind::failure, "Waited in vain for: " + text);
        return false;
    }
    return true;
}
