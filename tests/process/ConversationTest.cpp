#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <regex>

#include "tests/process/DaemonProcess.h"
#include "tests/support/TemporaryDirectory.h"

// Runs the conversations of the documents, so that no example can rot. In the documents the home is /home/you; here it
// is a temporary directory. Identifiers and times of an example stand for whatever the daemon gives, but one that comes
// up again must be the same again. What the daemon tells by itself is waited for like an answer, so that a conversation
// has to hold all of it before the next line is typed.

namespace {

using Lines = std::vector<std::string>;

struct Conversation {
    int lineNumber = 0;
    Lines lines{};
};

std::vector<Conversation> conversationsIn(const std::string& file) {
    std::vector<Conversation> result;
    std::ifstream text(std::string(SOURCE_FOLDER) + '/' + file);
    bool isInside = false;
    int lineNumber = 0;
    for (std::string line; std::getline(text, line);) {
        ++lineNumber;
        if (line == "```conversation") {
            isInside = true;
            result.push_back({.lineNumber = lineNumber});
        } else if (line == "```") {
            isInside = false;
        } else if (isInside) {
            result.back().lines.push_back(line);
        }
    }
    return result;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

class ConversationRunner {
public:
    void run(const Conversation& conversation) {
        for (std::string line : conversation.lines) {
            replaceAll(line, "/home/you", home.path());
            if (line.starts_with("$ ")) runInShell(line.substr(2));
            if (line.starts_with("> ")) request(line.substr(2));
            if (line.starts_with("< ")) expectAnswer(line.substr(2));
        }
    }

private:
    void runInShell(const std::string& command) {
        const std::string atHome = "export HOME='" + home.path() + "'; cd; " + command;
        ASSERT_EQ(std::system(atHome.c_str()), 0) << command;
    }

    void request(std::string line) {
        for (const auto& [example, actual] : actualByExample) replaceAll(line, example, actual);
        daemon.sendLine(line);
    }

    void expectAnswer(const std::string& expected) {
        static const std::regex changing(
            R"(([0-9A-F]{8}(?:-[0-9A-F]{4}){3}-[0-9A-F]{12}|data:[A-Za-z0-9+/]+=*|number:[0-9]+|)"
            R"("modifiedAtTimeIntervalSince1970":[0-9.]+))");
        const std::string answer = daemon.readLine().value_or("(the end of the output)");
        ASSERT_EQ(std::regex_replace(answer, changing, "*"), std::regex_replace(expected, changing, "*"));
        auto example = std::sregex_iterator(expected.begin(), expected.end(), changing);
        for (auto actual = std::sregex_iterator(answer.begin(), answer.end(), changing);
             actual != std::sregex_iterator(); ++actual, ++example) {
            const auto known = actualByExample.emplace(example->str(), actual->str()).first;
            EXPECT_EQ(known->second, actual->str()) << "in " << answer << "\nfor " << expected;
        }
    }

    TemporaryDirectory home;
    DaemonProcess daemon{{}, {"HOME=" + home.path()}};
    std::map<std::string, std::string> actualByExample;
};

TEST(Conversations, OfTheDocumentsHold) {
    for (const char* file : {"README.md", "docs/PROTOCOL.md"}) {
        const auto conversations = conversationsIn(file);
        EXPECT_FALSE(conversations.empty()) << file;
        for (const Conversation& conversation : conversations) {
            SCOPED_TRACE(std::string(file) + ", line " + std::to_string(conversation.lineNumber));
            ConversationRunner().run(conversation);
        }
    }
}

} // namespace
