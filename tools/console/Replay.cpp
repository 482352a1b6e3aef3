#include "tools/console/Replay.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <stdexcept>

#include "shared/EditorDocumentDaemonClient.h"
#include "shared/RecordCoding.h"
#include "tools/ShellWord.h"
#include "tools/console/ComparableLines.h"
#include "tools/console/ShellCommand.h"

namespace {

using Milliseconds = std::chrono::milliseconds;
using Time = std::chrono::steady_clock::time_point;

// An event of the file system is told within some tenths of a second; a loaded machine gets more.
constexpr Milliseconds longestWait{5000};
// For this long the other daemon may say more than the recorded one, at the end.
constexpr Milliseconds quietTime{500};

struct PendingLine {
    std::string text{};
    std::string request{}; // after which it came
    bool isEvent = false;
};

class Comparison {
public:
    Comparison(EditorDocumentDaemonClient& otherDaemon, ConsoleView& consoleView)
        : client(otherDaemon), view(consoleView) {
        client.onReceivedLine = [this](std::string_view line) { take(received, other, std::string(line)); };
    }

    // The document of the recorded request is another one here.
    void send(const std::string& line) {
        waitForMatches();
        request = line;
        try {
            isAnswered = false;
            client.sendLine(translated(line), [this](const auto&) { isAnswered = true; });
        } catch (const std::invalid_argument& error) {
            isAnswered = true;
            view.showLine(LineKind::note, error.what());
        }
    }

    void expect(const std::string& line) { take(expected, recorded, line); }

    // Until everything that was recorded so far has come, or does not come.
    void waitForMatches() {
        const Time end = std::chrono::steady_clock::now() + longestWait;
        while (removeMatches(), !isAnswered || std::ranges::any_of(expected, &PendingLine::isEvent)) {
            if (!waitUntil(end)) break;
        }
        settle(expected, LineKind::failure, "recorded, but not said: ");
    }

    void waitForMore() {
        const Time end = std::chrono::steady_clock::now() + quietTime;
        while (waitUntil(end)) continue;
        removeMatches();
        settle(received, LineKind::success, "said, but not recorded: ");
    }

    std::size_t differenceCount = 0;

private:
    bool waitUntil(Time end) {
        const auto left = std::chrono::ceil<Milliseconds>(end - std::chrono::steady_clock::now());
        return left.count() > 0 && client.wait(left);
    }

    void take(std::deque<PendingLine>& lines, ComparableLines& side, const std::string& line) {
        const std::string text = side.comparable(line);
        lines.push_back({text, request, text.starts_with(R"({"kind":"event")")});
    }

    void removeMatches() {
        std::erase_if(expected, [&](const PendingLine& line) {
            const auto found = std::ranges::find(received, line.text, &PendingLine::text);
            if (found == received.end()) return false;
            received.erase(found);
            return true;
        });
    }

    void settle(std::deque<PendingLine>& lines, LineKind kind, const std::string& explanation) {
        for (const PendingLine& line : lines) {
            view.showLine(LineKind::command, line.request);
            view.showLine(kind, explanation + line.text);
        }
        differenceCount += lines.size();
        lines.clear();
    }

    std::string translated(const std::string& line) const {
        try {
            auto decoded = decodeRecord<EditorDocumentDaemonRequest>(line);
            if (!decoded.documentID) return line;
            decoded.documentID = other.documentID(recorded.documentName(*decoded.documentID));
            return encodeRecord(decoded).value_or(line);
        } catch (const DecodingError&) {
            return line;
        }
    }

    EditorDocumentDaemonClient& client;
    ConsoleView& view;
    ComparableLines recorded{};
    ComparableLines other{};
    std::deque<PendingLine> expected{};
    std::deque<PendingLine> received{};
    std::string request{};
    bool isAnswered = true;
};

} // namespace

Replay::Replay(const RecordedSession& recordedSession, const std::string& otherExecutable,
               const std::string& replayFolderPath, ShellCommands whetherToRun, ConsoleView& consoleView)
    : session(recordedSession),
      executable(otherExecutable),
      folderPath(replayFolderPath),
      shellCommands(whetherToRun),
      view(consoleView) {}

std::size_t Replay::run() {
    EditorDocumentDaemonClient client(executable);
    Comparison comparison(client, view);
    client.onEnd = [&](const std::string& outcome) { view.showLine(LineKind::failure, "The daemon " + outcome + "."); };
    for (const RecordedLine& line : session.lines) {
        const std::string text = withFolder(line.text, session.folderPath, folderPath);
        if (client.hasEnded()) break;
        if (line.mark == '>') comparison.send(text);
        if (line.mark == '<') comparison.expect(text);
        if (line.mark != '$') continue;
        comparison.waitForMatches();
        if (shellCommands == ShellCommands::refused) {
            view.showLine(LineKind::note, "Not run without --run-commands: " + line.text);
        } else {
            runForOutput("cd " + shellWord(folderPath) + " && " + text, [](const std::string&) {});
        }
    }
    comparison.waitForMatches();
    comparison.waitForMore();
    return comparison.differenceCount;
}
