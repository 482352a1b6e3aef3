#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "tools/console/PlainConsole.h"
#include "tools/console/Recording.h"
#include "tools/console/Replay.h"
#include "tools/console/ScreenConsole.h"
#include "workspace/PathComponents.h"

namespace {

constexpr int failed = 1;
constexpr int usageError = 2;

constexpr auto usage =
    "usage: EditorDocumentConsole [OPTION]... [FOLDER]\n"
    "Talks to EditorDocumentDaemon about a folder, or the current one.\n"
    "\n"
    "  --script FILE     take the commands from a file and stop at the first that fails\n"
    "  --record FILE     write down what is said\n"
    "  --replay FILE     say again what a recording says, and show what is answered otherwise\n"
    "  --run-commands    with --replay: run the shell commands of the recording, too\n"
    "  --daemon PROGRAM  another daemon than the one beside this program\n"
    "  --plain           lines instead of a screen\n"
    "  --help            this text\n";

struct Options {
    std::string folder{"."};
    std::string daemon{};
    std::optional<std::string> script{};
    std::optional<std::string> record{};
    std::optional<std::string> replay{};
    ShellCommands shellCommands = ShellCommands::refused;
    bool isPlain = false;
};

std::string daemonBesideThisProgram() {
    std::error_code error;
    const auto beside = std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / "EditorDocumentDaemon";
    return std::filesystem::exists(beside, error) ? beside.string() : "EditorDocumentDaemon";
}

Options readOptions(int argumentCount, char** arguments) {
    enum { script = 1, record, replay, runCommands, daemon, plain, help };
    const option known[] = {
        {"script", required_argument, nullptr, script}, {"record", required_argument, nullptr, record},
        {"replay", required_argument, nullptr, replay}, {"run-commands", no_argument, nullptr, runCommands},
        {"daemon", required_argument, nullptr, daemon}, {"plain", no_argument, nullptr, plain},
        {"help", no_argument, nullptr, help},           {nullptr, 0, nullptr, 0}};
    Options options{.daemon = daemonBesideThisProgram()};
    for (int found; (found = ::getopt_long(argumentCount, arguments, "", known, nullptr)) != -1;) {
        if (found == script) options.script = ::optarg;
        if (found == record) options.record = ::optarg;
        if (found == replay) options.replay = ::optarg;
        if (found == runCommands) options.shellCommands = ShellCommands::run;
        if (found == daemon) options.daemon = ::optarg;
        if (found == plain) options.isPlain = true;
        if (found != help && found != '?') continue;
        (found == help ? std::cout : std::cerr) << usage;
        std::exit(found == help ? EXIT_SUCCESS : usageError);
    }
    if (::optind < argumentCount) options.folder = arguments[::optind];
    options.folder = standardizedPath(std::filesystem::absolute(options.folder).string());
    return options;
}

// What the last commands lead to belongs to a recording, and comes a little after the answers.
void waitForLastWords(EditorDocumentDaemonClient& client) {
    constexpr std::chrono::milliseconds quietTime{500};
    const auto end = std::chrono::steady_clock::now() + 10 * quietTime;
    while (std::chrono::steady_clock::now() < end && client.wait(quietTime)) continue;
}

int runOnLines(const Options& options, Recording* recording) {
    PlainConsole console(charactersOfTerminal(),
                         ::isatty(STDOUT_FILENO) == 1 && !std::getenv("NO_COLOR") ? Colours::yes : Colours::no);
    if (options.replay) {
        const RecordedSession session = readRecording(*options.replay);
        const auto count = Replay(session, options.daemon, options.folder, options.shellCommands, console).run();
        console.showLine(LineKind::note,
                         count == 0 ? "No differences." : "Differences: " + std::to_string(count) + ".");
        return count == 0 ? EXIT_SUCCESS : failed;
    }
    Descriptor script;
    if (options.script && *options.script != "-") {
        script = Descriptor(::open(options.script->c_str(), O_RDONLY | O_CLOEXEC));
        if (!script) throw posixError(errno, "read the script", *options.script);
    }
    EditorDocumentDaemonClient client(options.daemon);
    ConsoleSession session(client, console, recording);
    session.openWorkspace(options.folder);
    const bool isFine = console.run(client, session, script ? script.get() : STDIN_FILENO);
    if (recording) waitForLastWords(client);
    return isFine ? EXIT_SUCCESS : failed;
}

int runOnScreen(const Options& options, Recording* recording) {
    int errors[2];
    if (::pipe2(errors, O_CLOEXEC) != 0) throw posixError(errno, "make a pipe");
    const Descriptor reading(errors[0]), writing(errors[1]);
    EditorDocumentDaemonClient client(options.daemon, writing.get());
    ScreenConsole console(charactersOfTerminal());
    ConsoleSession session(client, console, recording);
    session.openWorkspace(options.folder);
    console.run(client, session, reading.get());
    if (recording) waitForLastWords(client);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argumentCount, char** arguments) try {
    const Options options = readOptions(argumentCount, arguments);
    std::optional<Recording> recording;
    if (options.record) recording.emplace(*options.record, options.folder);
    const bool isOnLines = options.isPlain || options.script || options.replay || ::isatty(STDIN_FILENO) != 1 ||
                           ::isatty(STDOUT_FILENO) != 1;
    return (isOnLines ? runOnLines : runOnScreen)(options, recording ? &*recording : nullptr);
} catch (const PlatformError& error) {
    std::cerr << printable(error.localizedDescription) << '\n';
    return failed;
}
