#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

// The console as a whole, behind pipes and behind a terminal.

namespace {

constexpr std::string_view evilName = "evil\x1B[31mred\x9B\xFF";

class ConsoleTest : public testing::Test {
protected:
    ConsoleTest() {
        writeFile(home.path("project/notes.txt"), "hello\n");
        writeFile(home.path("project/source/main.c"), "");
        writeFile(home.path("project/two words.txt"), "");
        writeFile(home.path("project/" + std::string(evilName)), "");
    }

    // Runs the console with HOME in the temporary directory. What it prints is in output, and errors.
    int console(const std::string& arguments, const std::string& script = "",
                const std::string& editor = "sed -i s/hello/bye/") {
        writeFile(home.path("script"), script);
        const std::string command = "cd '" + home.path() +
                                    "' && HOME=\"$PWD\" TMPDIR=\"$PWD\" LC_ALL=C.UTF-8 VISUAL='" + editor +
                                    "' timeout 120 " CONSOLE_EXECUTABLE " " + arguments + " < script > output 2>&1";
        const int status = std::system(command.c_str());
        output = readFile(home.path("output"));
        return WEXITSTATUS(status);
    }

    bool printed(const std::string& line) const {
        return ("\n" + output).find("\n" + line + "\n") != std::string::npos;
    }

    const TemporaryDirectory home;
    std::string output{};
};

TEST_F(ConsoleTest, CarriesOutCommands) {
    const int status = console("project", R"(
# Blank lines and remarks are passed over.
expand source
open notes.txt
text notes.txt
$ echo changed > ../new && mv ../new notes.txt; printf 'said \033[1m\n'
wait updated notes.txt, version 2
write "two words.txt" 'some text'
text two\ words.txt
open evil\x1B[31mred\x9B\xFF
mkdir source/sub
touch source/sub/new.c
mv notes.txt source
mv source/notes.txt source/renamed.txt
cp source/renamed.txt source/sub
duplicate source/renamed.txt
rm source/renamed.txt
trash source/sub
! rm source/sub
! text source/main.c
! nonsense
! open
! open a b
! open 'a
collapse source
raw on
{"requestID":"mine","command":"closeWorkspace","rootPath":"/elsewhere"}
! {"requestID":"mine"}
raw off
tree
documents
)");
    EXPECT_EQ(status, 0) << output;
    for (
        const char* line : {
            "< open notes.txt, version 1, 6 bytes, lf, encoding 4",
            "  hello",
            "  said \\x1B[1m",
            "* updated notes.txt, version 2, 8 bytes, lf, encoding 4",
            "< save two words.txt, version 2, 10 bytes, lf, encoding 4",
            "  some text",
            "< open evil\\x1B[31mred\\x9B\\xFF, version 1, 0 bytes, lf, encoding 4",
            "< createWorkspaceFile createdFile source/sub/new.c",
            "< moveWorkspaceItem moved notes.txt -> source/notes.txt",
            "< renameWorkspaceItem renamed source/notes.txt -> source/renamed.txt",
            "< copyWorkspaceItem copied source/renamed.txt -> source/sub/renamed.txt",
            "< duplicateWorkspaceItem duplicated source/renamed.txt -> source/renamed copy.txt",
            "! deleteWorkspaceItem failed: The selected item no longer exists.",
            "! There is no command nonsense; try help.",
            "! It is typed: open FILE",
            R"(  {"kind":"response","requestID":"mine","command":"closeWorkspace","success":true,"workspaceRootPath":"/elsewhere"})",
            "    + source/",
        })
        EXPECT_TRUE(printed(line)) << line << "\n" << output;
    EXPECT_EQ(readFile(home.path("project/two words.txt")), "some text\n");
    EXPECT_TRUE(std::filesystem::exists(home.path(".local/share/Trash/files/sub/new.c")));
    EXPECT_EQ(output.find('\x1B'), std::string::npos) << "nothing but plain text goes into a pipe";
}

TEST_F(ConsoleTest, EditsInTheEditorOfTheUser) {
    EXPECT_EQ(console("project", "edit notes.txt\nedit notes.txt\n"), 0) << output;
    EXPECT_EQ(readFile(home.path("project/notes.txt")), "bye\n");
    EXPECT_TRUE(printed("- The text is as it was; nothing was saved.")) << output;

    // Where saving fails the text is not lost.
    writeFile(home.path("clumsyEditor"), "sed -i s/bye/mine/ \"$1\"; rm project/notes.txt; mkdir project/notes.txt\n");
    EXPECT_EQ(console("project", "edit notes.txt\n", "sh clumsyEditor"), 1) << output;
    const std::string before = "- The text is kept in ";
    const std::size_t begin = output.find(before) + before.size();
    const std::string draft = output.substr(begin, output.find(" until it is saved.") - begin);
    EXPECT_EQ(readFile(draft), "mine\n") << output;
}

TEST_F(ConsoleTest, SaysHowAScriptEnded) {
    struct Case {
        std::string arguments;
        std::string script;
        int status;
        std::string line;
    };
    const Case cases[] = {
        {"project", "open none\nopen notes.txt\n", 1, "! open failed: The file could not be found."},
        {"project", "! open notes.txt\n", 1, "! This should have failed."},
        {"project", "open notes.txt", 0, "< open notes.txt, version 1, 6 bytes, lf, encoding 4"},
        {"project", "quit\nopen none\n", 0, "> quit"},
        {"project/none", "", 1, ""},
        {"--daemon /bin/true project", "", 1, "! The daemon ended with status 0."},
        {"--daemon ./none project", "", 1, "Cannot start “./none”: No such file or directory."},
        {"--script none project", "", 1, "Cannot read the script “none”: No such file or directory."},
        {"--nonsense", "", 2, ""},
        {"--help", "", 0, "usage: EditorDocumentConsole [OPTION]... [FOLDER]"},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(console(row.arguments, row.script), row.status) << row.arguments << row.script << "\n" << output;
        EXPECT_TRUE(row.line.empty() || printed(row.line)) << row.line << "\n" << output;
    }
}

TEST_F(ConsoleTest, ReplaysARecording) {
    std::filesystem::copy(home.path("project"), home.path("again"), std::filesystem::copy_options::recursive);
    std::filesystem::copy(home.path("project"), home.path("third"), std::filesystem::copy_options::recursive);
    ASSERT_EQ(console("--record recording project",
                      "expand source\nopen notes.txt\nwrite notes.txt other\n"
                      "! open none\n$ touch source/new.c\nwait new.c, by\n"
                      "mv notes.txt source\nclose source/notes.txt\n"),
              0)
        << output;
    EXPECT_EQ(console("--replay recording --run-commands again"), 0) << output;
    EXPECT_EQ(output, "- No differences.\n");

    // Another executable that puts it otherwise, in another file of the same contents.
    writeFile(home.path("other"), "#!/bin/sh\n" DAEMON_EXECUTABLE " | sed -u 's/could not be found/is missing/'\n");
    ::chmod(home.path("other").c_str(), 0700);
    EXPECT_EQ(console("--replay recording --run-commands --daemon ./other third"), 1);
    for (
        const char* line :
        {R"(! recorded, but not said: {"kind":"response","requestID":"6","command":"open","success":false,"message":"The file could not be found."})",
         R"(< said, but not recorded: {"kind":"response","requestID":"6","command":"open","success":false,"message":"The file is missing."})",
         "- Differences: 2."})
        EXPECT_TRUE(printed(line)) << line << "\n" << output;
}

// A terminal with the console on it.
class Terminal {
public:
    Terminal(const std::string& homePath, const std::string& folderPath) {
        winsize size{.ws_row = 24, .ws_col = 100, .ws_xpixel = 0, .ws_ypixel = 0};
        child = ::forkpty(&master, nullptr, nullptr, &size);
        if (child != 0) return;
        ::setenv("HOME", homePath.c_str(), 1);
        ::setenv("LC_ALL", "C.UTF-8", 1);
        ::setenv("TERM", "xterm", 1);
        ::unsetenv("XDG_STATE_HOME");
        ::execl(CONSOLE_EXECUTABLE, CONSOLE_EXECUTABLE, folderPath.c_str(), nullptr);
        ::_exit(127);
    }
    ~Terminal() {
        ::close(master);
        if (child > 0) ::kill(child, SIGKILL), ::waitpid(child, nullptr, 0);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(const std::string& keys) { ASSERT_EQ(::write(master, keys.data(), keys.size()), std::ssize(keys)); }

    // Waits until this is drawn. A screen draws only what is new, so it must come in one piece.
    void waitFor(const std::string& text) {
        while (drawn.find(text, seen) == std::string::npos) {
            pollfd readable{.fd = master, .events = POLLIN, .revents = 0};
            ASSERT_EQ(::poll(&readable, 1, 60'000), 1) << text << " was not drawn:\n" << drawn;
            std::array<char, 65536> bytes{};
            const ssize_t count = ::read(master, bytes.data(), bytes.size());
            ASSERT_GT(count, 0) << text << " was not drawn:\n" << drawn;
            drawn.append(bytes.data(), static_cast<std::size_t>(count));
        }
        seen = drawn.find(text, seen) + text.size();
    }

    int wait() {
        int status = 0;
        std::array<char, 65536> bytes{};
        while (::read(master, bytes.data(), bytes.size()) > 0) continue;
        ::waitpid(child, &status, 0);
        child = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string drawn{};

private:
    std::size_t seen = 0;
    int master = -1;
    pid_t child = -1;
};

TEST_F(ConsoleTest, CompletesAndRemembersCommands) {
    for (const std::string turn : {"first", "second"}) {
        Terminal terminal(home.path(), home.path("project"));
        terminal.waitFor("evil\\x1B[31mred\\x9B\\xFF");
        terminal.waitFor("4 items");
        if (turn == "first") terminal.type("op\ttw\t\r");
        if (turn == "second") terminal.type("\x1B[A\r"); // the line before, from the session before
        terminal.waitFor("< open two words.txt, version 1");
        terminal.type("open ev\t\r");
        terminal.waitFor("< open evil\\x1B[31mred\\x9B\\xFF, version 1");
        terminal.type("\x03open two\\ words.txt\r\x04");
        EXPECT_EQ(terminal.wait(), 0);
        EXPECT_EQ(terminal.drawn.find(evilName), std::string::npos) << "a file name reached the terminal";
    }
}

} // namespace
