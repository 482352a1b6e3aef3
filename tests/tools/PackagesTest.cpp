#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/console/ConsoleSession.h"

namespace {

const std::string sourceFolder = std::string(SOURCE_FOLDER) + "/";

bool hasWord(const std::string& text, std::string_view word) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        const bool beginsThere = at == 0 || !isLetter(text[at - 1]);
        if (beginsThere && (at + word.size() == text.size() || !isLetter(text[at + word.size()]))) return true;
    }
    return false;
}

template <class Enumeration>
void expectNames(const std::string& page) {
    for (const auto& [value, name] : enumerationNames<Enumeration>) EXPECT_TRUE(hasWord(page, name)) << name;
}

template <class Record>
void expectFields(const std::string& page) {
    forEachField<Record>([&](const auto& field) { EXPECT_TRUE(hasWord(page, field.name)) << field.name; });
}

TEST(Packages, PageOfTheProtocolNamesEverything) {
    const std::string page = readFile(sourceFolder + "packaging/man/EditorDocumentProtocol.7");
    expectNames<EditorDocumentRequestCommand>(page);
    expectNames<EditorDocumentEnvelopeKind>(page);
    expectNames<EditorDocumentEventKind>(page);
    expectNames<EditorDocumentNewlineStyle>(page);
    expectNames<WorkspaceBrowserMutationKind>(page);
    expectNames<WorkspaceBrowserMutationOrigin>(page);
    expectFields<EditorDocumentDaemonRequest>(page);
    expectFields<EditorDocumentDaemonEnvelope>(page);
    expectFields<EditorDocumentSnapshotPayload>(page);
    expectFields<WorkspaceBrowserDirectoryPayload>(page);
    expectFields<WorkspaceBrowserNodePayload>(page);
    expectFields<WorkspaceBrowserMutationPayload>(page);
}

TEST(Packages, PagesOfTheConsoleNameEveryCommandAndOption) {
    const std::string page = readFile(sourceFolder + "packaging/man/EditorDocumentConsole.1");
    const std::string document = readFile(sourceFolder + "tools/console/README.md");
    for (const auto& command : ConsoleSession::commands()) {
        EXPECT_TRUE(hasWord(page, command.name)) << command.name;
        EXPECT_TRUE(hasWord(document, command.name)) << command.name;
    }
    const std::string completion = readFile(sourceFolder + "packaging/completions/EditorDocumentConsole");
    const TemporaryDirectory folder;
    ASSERT_EQ(std::system((CONSOLE_EXECUTABLE " --help > " + folder.path("usage")).c_str()), 0);
    const std::string usage = readFile(folder.path("usage"));
    std::size_t count = 0;
    for (std::size_t at = usage.find("  --"); at != std::string::npos; at = usage.find("  --", at + 1), ++count) {
        const std::string option = usage.substr(at + 2, usage.find(' ', at + 2) - at - 2);
        EXPECT_TRUE(completion.find(option) != std::string::npos) << option;
        std::string inPage = option;
        for (std::size_t dash = 0; (dash = inPage.find('-', dash)) != std::string::npos; dash += 2)
            inPage.insert(dash, "\\");
        EXPECT_TRUE(page.find(inPage) != std::string::npos) << inPage;
    }
    EXPECT_EQ(count, 7U);
}

TEST(Packages, ComeAndGoInACleanRoot) {
    if (IS_SANITIZED) GTEST_SKIP() << "the packages hold the programs as they are used";
    if (::geteuid() != 0) GTEST_SKIP() << "only root can install into another root";
    if (std::system("command -v dpkg-shlibdeps groff file > /dev/null") != 0)
        GTEST_SKIP() << "dpkg-dev, groff-base or file is missing";
    const TemporaryDirectory folder;
    const std::string log = folder.path("log");
    const auto run = [&](const std::string& command) {
        const int status = std::system(("timeout 250 " + command + " > '" + log + "' 2>&1").c_str());
        return WEXITSTATUS(status);
    };
    ASSERT_EQ(run("cpack --config '" BUILD_FOLDER "/CPackConfig.cmake' -B '" + folder.path("packages") + "'"), 0)
        << readFile(log);
    EXPECT_EQ(run("bash '" + sourceFolder + "tests/tools/cleanRoot.sh' '" + folder.path("packages") + "' '" +
                  folder.path("root") + "'"),
              0)
        << readFile(log);
}

} // namespace
