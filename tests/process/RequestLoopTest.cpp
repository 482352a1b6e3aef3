#include <gtest/gtest.h>
#include <sys/resource.h>

#include <filesystem>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/RecordCoding.h"
#include "tests/process/DaemonProcess.h"
#include "tests/support/Files.h"
#include "tests/support/ProcessLimits.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

constexpr auto unknownClose = R"({"requestID":"1","command":"close","documentID":"x"})";
constexpr auto unknownCloseAnswer =
    R"({"kind":"response","requestID":"1","command":"close","success":false,"message":"Unknown document."})";

TEST(RequestLoop, AnArgumentIsRefusedBeforeAnythingIsRead) {
    DaemonProcess daemon({"--help"});
    EXPECT_EQ(daemon.wait(), 64);
    EXPECT_EQ(daemon.errors(), "usage: marblefern EditorDocumentDaemon\n");
    EXPECT_EQ(daemon.readLine(), std::nullopt);
}

TEST(RequestLoop, WithoutThreadsItSaysSoAndEnds) {
    if (IS_SANITIZED) GTEST_SKIP() << "a sanitizer starts a thread of its own";
    // No other thread has room for a stack as large as that.
    DaemonProcess daemon({}, {}, {"prlimit", "--stack=1125899906842624:unlimited"});
    EXPECT_EQ(daemon.wait(), 71);
    EXPECT_TRUE(daemon.errors().starts_with("EditorDocumentDaemon: no thread can be started: "));
    EXPECT_EQ(daemon.readLine(), std::nullopt);
}

TEST(RequestLoop, EndsAtTheEndOfInput) {
    DaemonProcess daemon;
    daemon.closeInput();
    EXPECT_EQ(daemon.wait(), 0);
    EXPECT_EQ(daemon.errors(), "");
    EXPECT_EQ(daemon.readLine(), std::nullopt);
}

// The shell closes it before the daemon starts, so that the number is free for what the daemon opens first.
std::vector<std::string> launcherThatCloses(const std::string& redirection) {
    return {"timeout", "30", "sh", "-c", "exec \"$@\" " + redirection, "sh"};
}

TEST(RequestLoop, AClosedInputIsAtItsEnd) {
    for (const char* redirection : {"<&-", "<&- >/dev/null 2>&1", "<&- >&- 2>&-"}) {
        DaemonProcess daemon({}, {}, launcherThatCloses(redirection));
        EXPECT_EQ(daemon.wait(), 0) << redirection;
        EXPECT_EQ(daemon.errors(), "") << redirection;
        EXPECT_EQ(daemon.readLine(), std::nullopt) << redirection;
    }
}

TEST(RequestLoop, NoEnvelopeGoesElsewhereWhereTheOutputIsClosed) {
    DaemonProcess daemon({}, {}, launcherThatCloses(">&-"));
    daemon.sendLine(unknownClose);
    daemon.closeInput();
    EXPECT_EQ(daemon.wait(), 0);
    EXPECT_EQ(daemon.errors(), "");
}

TEST(RequestLoop, NothingStandsBetweenTheEnvelopesWhereTheErrorOutputIsClosed) {
    const TemporaryDirectory directory;
    DaemonProcess daemon({}, {"MARBLEFERN_EDITOR_DOCUMENT_DAEMON_DEBUG_WATCH_EVENTS=1"}, launcherThatCloses("2>&-"));
    daemon.ask(R"({"requestID":"1","command":"openWorkspace","rootPath":")" + directory.path() + "\"}");
    writeFile(directory.path("file"), "");
    daemon.readLine(); // checks that it is an envelope
    daemon.closeInput();
    while (daemon.readLine()) continue;
    EXPECT_EQ(daemon.wait(), 0);
}

TEST(RequestLoop, IgnoresWhatIsNoLineOfText) {
    DaemonProcess daemon;
    for (const char* ignored : {"", " \t ", "\r", "\u2003\u2028", "{\"requestID\":\"\xFF\"}", "\xC0\x80"}) {
        daemon.sendLine(ignored);
    }
    EXPECT_EQ(daemon.ask(unknownClose), unknownCloseAnswer);
}

TEST(RequestLoop, AnswersEveryFramingOfALine) {
    DaemonProcess daemon;
    EXPECT_EQ(daemon.ask(std::string(unknownClose) + "\r"), unknownCloseAnswer);
    EXPECT_EQ(daemon.ask("\u00A0 " + std::string(unknownClose) + " \u2029"), unknownCloseAnswer);
    EXPECT_EQ(daemon.ask("\xEF\xBB\xBF" + std::string(unknownClose)), unknownCloseAnswer);
    daemon.send(unknownClose);
    daemon.closeInput();
    EXPECT_EQ(daemon.readLine(), unknownCloseAnswer) << "a last line without a line feed is a request";
    EXPECT_EQ(daemon.wait(), 0);
}

TEST(RequestLoop, AnUnreadableLineIsAnsweredAndTheNextOneServed) {
    DaemonProcess daemon;
    const std::string brackets(1'000'000, '[');
    const struct {
        const char* name;
        std::string line;
    } cases[] = {
        {"no keys", "{}"},
        {"not an object", "7"},
        {"a NUL", std::string("{\"requestID\":\0}", 14)},
        {"brackets without end", brackets},
        {"an unknown key of brackets", R"({"requestID":"1","command":"close","x":)" + brackets},
        {"a cut number", R"({"requestID":"1","command":"save","expectedVersion":-)"},
        {"an unknown command", R"({"requestID":"1","command":"Open"})"},
        {"a wrong type where it does not matter", R"({"requestID":"1","command":"close","path":7})"},
    };
    for (const auto& row : cases) {
        const auto envelope = decodeRecord<EditorDocumentDaemonEnvelope>(daemon.ask(row.line));
        const std::string prefix = "Failed to decode request: ";
        EXPECT_EQ(envelope.message.value_or("").substr(0, prefix.size()), prefix) << row.name;
        EXPECT_GT(envelope.message.value_or("").size(), prefix.size() + 10) << row.name;
        EXPECT_LT(envelope.message.value_or("").size(), 500U) << row.name;
        EXPECT_EQ(envelope.success, false) << row.name;
        EXPECT_FALSE(envelope.requestID || envelope.command) << row.name;
        EXPECT_EQ(daemon.ask(unknownClose), unknownCloseAnswer) << row.name;
    }
}

TEST(RequestLoop, ServesALargeText) {
    const TemporaryDirectory directory;
    writeFile(directory.path("large"), std::string(8'388'608, '\n'));
    DaemonProcess daemon;
    const auto opened = decodeRecord<EditorDocumentDaemonEnvelope>(
        daemon.ask(R"({"requestID":"1","command":"open","path":")" + directory.path("large") + "\"}"));
    ASSERT_TRUE(opened.snapshot);
    EXPECT_EQ(opened.snapshot->text.size(), 8'388'608U);
    std::string escaped;
    for (int line = 0; line < 8'388'608; ++line) escaped += "\\n";
    const auto saved = decodeRecord<EditorDocumentDaemonEnvelope>(
        daemon.ask(R"({"requestID":"2","command":"save","documentID":")" + opened.snapshot->documentID +
                   R"(","text":")" + escaped + R"(","expectedVersion":1})"));
    EXPECT_EQ(saved.success, true);
    EXPECT_EQ(daemon.ask(unknownClose), unknownCloseAnswer);
}

TEST(RequestLoop, WantOfMemoryFailsOneRequestAndChangesNothing) {
    if (IS_SANITIZED) GTEST_SKIP() << "a sanitizer ends the process instead";
    const TemporaryDirectory directory;
    writeFile(directory.path("a.txt"), "old");
    DaemonProcess daemon;
    const auto opened = decodeRecord<EditorDocumentDaemonEnvelope>(
        daemon.ask(R"({"requestID":"1","command":"open","path":")" + directory.path("a.txt") + "\"}"));
    const auto save = [&](const std::string& text) {
        return decodeRecord<EditorDocumentDaemonEnvelope>(
            daemon.ask(R"({"requestID":"2","command":"save","expectedVersion":1,"documentID":")" +
                       opened.snapshot.value().documentID + R"(","text":")" + text + "\"}"));
    };
    // From a line that finds no room to one whose answer alone finds none: U+007F takes six bytes in it.
    constexpr std::size_t megabyte = 1 << 20;
    const ProcessLimit limit(daemon.processID(), RLIMIT_AS, addressSpace(daemon.processID()) + 90 * megabyte);
    for (const std::size_t size : {200, 60, 20, 12, 8, 6, 4}) {
        const auto answer = save(std::string(size * megabyte, '\x7F'));
        if (answer.success == true) break;
        EXPECT_EQ(answer.message, "Failed to decode request: The request needs more memory than there is.") << size;
        EXPECT_EQ(readFile(directory.path("a.txt")), "old") << size;
        EXPECT_EQ(daemon.ask(unknownClose), unknownCloseAnswer) << size;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1);
}

TEST(RequestLoop, AReaderThatLeavesDoesNotKillTheDaemon) {
    DaemonProcess daemon;
    daemon.closeOutput();
    for (int request = 0; request < 100; ++request) daemon.sendLine(unknownClose);
    daemon.closeInput();
    EXPECT_EQ(daemon.wait(), 0);
}

} // namespace
