#include "shared/EditorDocumentDaemonClient.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>

#include <stdexcept>
#include <vector>

#include "platform/PlatformError.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using Command = EditorDocumentRequestCommand;
constexpr std::chrono::seconds deadline{60};

class EditorDocumentDaemonClientTest : public testing::Test {
protected:
    // A daemon of a few lines of shell, for what the real one never does.
    std::string executable(const std::string& script) {
        writeFile(home.path("daemon"), "#!/bin/sh\n" + script);
        ::chmod(home.path("daemon").c_str(), 0700);
        return home.path("daemon");
    }

    static void waitUntil(EditorDocumentDaemonClient& client, const std::function<bool()>& condition) {
        while (!condition()) ASSERT_TRUE(client.wait(deadline)) << "it ended, or nothing came in time";
    }

    // Notes each answer as "ID: message" or "ID: yes".
    EditorDocumentDaemonClient::Receive note(const std::string& name) {
        return [this, name](const EditorDocumentDaemonEnvelope& answer) {
            noted.push_back(name + ": " + (answer.success.value_or(false) ? "yes" : answer.message.value_or("")));
        };
    }

    const TemporaryDirectory home;
    std::vector<std::string> noted{};
};

TEST_F(EditorDocumentDaemonClientTest, GivesAFailureWithoutNameToTheOldestRequest) {
    EditorDocumentDaemonClient client(DAEMON_EXECUTABLE);
    client.send({.command = Command::close, .documentID = "none"}, note("first"));
    client.sendLine("nonsense", note("second"));
    client.sendLine(R"({"requestID":"mine","command":"closeWorkspace","rootPath":"/"})", note("third"));
    client.sendLine(R"({"requestID":"x"})", note("fourth"));
    client.ask({.command = Command::closeWorkspace, .rootPath = "/"});
    EXPECT_EQ(noted, (std::vector<std::string>{
                         "first: Unknown document.",
                         "second: Failed to decode request: Invalid JSON at byte 0: a value is expected.",
                         "third: yes",
                         "fourth: Failed to decode request: The key “command” is missing.",
                     }));
}

TEST_F(EditorDocumentDaemonClientTest, AnswersEveryRequestWhateverTheDaemonDoes) {
    struct Case {
        std::string whatItDoes;
        std::string script;
        std::vector<std::string> answers;
        std::string outcome;
    };
    const std::string ended = "The daemon was ended by signal SIGKILL before it answered.";
    const auto response = [](const std::string& ID) {
        return R"(echo '{"kind":"response","requestID":")" + ID + R"(","success":true}';)";
    };
    const Case cases[] = {
        {"dies at once", "kill -9 $$", {"1: " + ended, "2: " + ended, "3: " + ended}, "was ended by signal SIGKILL"},
        {"dies later",
         response("1") + "read line; kill -9 $$",
         {"1: yes", "2: " + ended, "3: " + ended},
         "was ended by signal SIGKILL"},
        {"dies within a line",
         response("1") + response("2") + "printf '{\"kind\":'; exit 3",
         {"1: yes", "2: yes", "3: The daemon ended with status 3 before it answered."},
         "ended with status 3"},
        {"passes over an answer",
         response("2") + response("3"),
         {"1: The daemon gave no answer that could be read.", "2: yes", "3: yes"},
         "ended with status 0"},
        {"answers what nobody asked",
         response("7") + response("1") + response("1") + response("2") + response("3"),
         {"1: yes", "2: yes", "3: yes"},
         "ended with status 0"},
        {"writes what is no envelope",
         "echo; echo '{}'; echo '{\"kind\":\"event\",\"event\":\"later\"}';" + response("1") + response("2") +
             response("3"),
         {"1: yes", "2: yes", "3: yes"},
         "ended with status 0"},
    };
    for (const Case& row : cases) {
        noted.clear();
        EditorDocumentDaemonClient client(executable(row.script));
        std::string outcome;
        client.onEnd = [&](const std::string& told) { outcome = told; };
        for (const char* name : {"1", "2", "3"})
            client.send({.requestID = name, .command = Command::open, .path = "/"}, note(name));
        waitUntil(client, [&] { return client.hasEnded(); });
        EXPECT_EQ(noted, row.answers) << row.whatItDoes;
        EXPECT_EQ(outcome, row.outcome) << row.whatItDoes;
        EXPECT_THROW(client.send({.command = Command::open}), PlatformError) << row.whatItDoes;
        EXPECT_FALSE(client.wait()) << row.whatItDoes;
    }
}

// The signal that the system sends for this would end the test.
TEST_F(EditorDocumentDaemonClientTest, SurvivesADaemonThatNoLongerReads) {
    EditorDocumentDaemonClient client(executable("exec 0<&-; echo '{\"kind\":\"event\"}'; exit 4"));
    int eventCount = 0;
    client.onEvent = [&](const auto&) { ++eventCount; };
    waitUntil(client, [&] { return eventCount > 0; });
    note("answer")(client.ask({.command = Command::open, .path = "/"}));
    EXPECT_EQ(noted, std::vector<std::string>{"answer: The daemon ended with status 4 before it answered."});
}

// Each side has more to say than the pipes hold, and the daemon reads on only while it is read.
TEST_F(EditorDocumentDaemonClientTest, NeitherSideWaitsForTheOther) {
    constexpr int count = 40;
    const std::string text(1024 * 1024, 'x');
    writeFile(home.path("large.txt"), text);
    EditorDocumentDaemonClient client(DAEMON_EXECUTABLE);
    const auto document = client.ask({.command = Command::open, .path = home.path("large.txt")}).snapshot.value();
    int answered = 0;
    for (int version = 1; version <= count; ++version) {
        client.send(
            {.command = Command::save, .documentID = document.documentID, .text = text, .expectedVersion = version},
            [&](const auto& answer) { answered += answer.success.value() && answer.snapshot->text == text; });
    }
    EXPECT_GT(client.unsentByteCount(), text.size());
    waitUntil(client, [&] { return answered == count; });
    EXPECT_EQ(client.unsentByteCount(), 0U);
}

// What lets an event loop sleep: nothing to do, nothing to be read.
TEST_F(EditorDocumentDaemonClientTest, HasADescriptorThatIsReadableOnlyWhenThereIsWork) {
    EditorDocumentDaemonClient client(DAEMON_EXECUTABLE);
    const auto isReadable = [&](std::chrono::milliseconds longest) {
        pollfd ready{.fd = client.descriptor(), .events = POLLIN, .revents = 0};
        return ::poll(&ready, 1, static_cast<int>(longest.count())) == 1;
    };
    client.ask({.command = Command::closeWorkspace, .rootPath = "/"});
    EXPECT_FALSE(isReadable(std::chrono::milliseconds{0}));
    client.send({.command = Command::closeWorkspace, .rootPath = "/"}, note("answer"));
    ASSERT_TRUE(isReadable(deadline));
    client.exchange();
    EXPECT_EQ(noted, std::vector<std::string>{"answer: yes"});
    EXPECT_FALSE(isReadable(std::chrono::milliseconds{0}));
}

TEST_F(EditorDocumentDaemonClientTest, MayBeAskedFromWithinAnAnswer) {
    EditorDocumentDaemonClient client(DAEMON_EXECUTABLE);
    client.send({.command = Command::close, .documentID = "none"}, [&](const auto&) {
        note("inner")(client.ask({.command = Command::closeWorkspace, .rootPath = "/"}));
        note("outer")({.success = true});
    });
    client.send({.command = Command::close, .documentID = "none"}, note("next"));
    waitUntil(client, [&] { return noted.size() == 3; });
    EXPECT_EQ(noted, (std::vector<std::string>{"next: Unknown document.", "inner: yes", "outer: yes"}));
}

TEST_F(EditorDocumentDaemonClientTest, RefusesWhatWouldNeverBeAnswered) {
    EditorDocumentDaemonClient client(DAEMON_EXECUTABLE);
    for (const char* line : {"", " \t", "\xFF", "{}\n{}"})
        EXPECT_THROW(client.sendLine(line, {}), std::invalid_argument) << line;
    EXPECT_THROW(client.send({.command = Command::save, .text = "\xFF"}), std::invalid_argument);
    EXPECT_THROW(EditorDocumentDaemonClient("/no/such/daemon"), PlatformError);
}

} // namespace
