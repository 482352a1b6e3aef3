#include <gtest/gtest.h>

#include "tests/process/WatchedSession.h"

// Documents to which a link leads. The workspace shows the link, and what it leads to only where that is.

namespace {

using Command = EditorDocumentRequestCommand;
using Lines = WatchedSession::Lines;

TEST(LinkedDocuments, AreToldWhatBecomesOfTheirFiles) {
    const struct {
        const char* name;
        const char* document; // in the workspace, which lies beside "outside"
        const char* change;
    } cases[] = {
        {"a folder in the workspace", "near/a.txt", "echo new > folder/a.txt"},
        {"a folder outside", "far/b.txt", "echo new > ../outside/b.txt"},
        {"below a folder outside", "far/deep/c.txt", "echo new > ../outside/deep/c.txt"},
        {"a file outside", "file", "echo new > ../outside/b.txt"},
        {"a link to a link", "over/a.txt", "echo new > folder/a.txt"},
        {"the file is replaced", "far/b.txt", "echo new > ../outside/n; mv ../outside/n ../outside/b.txt"},
        {"the file is renamed", "far/b.txt", "mv ../outside/b.txt ../outside/other"},
        {"the folder goes", "near/a.txt", "mv folder ../gone"},
        {"the link leads elsewhere", "near/a.txt", "mkdir new; echo new > new/a.txt; ln -sfn new near"},
        {"the link after it does", "over/a.txt", "mkdir new; echo new > new/a.txt; ln -sfn new near"},
        {"a link takes the place of the folder", "folder/a.txt",
         "mv folder ../outside/moved; ln -s ../outside/moved folder"},
        {"a link that leads nowhere yet takes the place of the folder", "folder/a.txt",
         "mv folder ../outside/moved; ln -s ghost folder"},
    };
    for (const auto& row : cases) {
        WatchedSession session("folder/a.txt ../outside/b.txt ../outside/deep/c.txt");
        session.shell("ln -s folder near; ln -s ../outside far; ln -s ../outside/b.txt file; ln -s near over");
        session.eventsUntilQuiet();
        session.open(row.document);
        session.shell(row.change);
        ASSERT_EQ(session.differenceInTheEnd(), "") << row.name;
        session.shell(
            "ln -s ../outside/moved ghost; find .. -name '*.txt' | while read file; do echo newer > $file; done");
        ASSERT_EQ(session.differenceInTheEnd(), "") << row.name << ", and once more";
    }
}

TEST(LinkedDocuments, AreToldWhatBecomesOfTheFilesThatASaveMade) {
    WatchedSession session("folder/a.txt");
    session.eventsUntilQuiet();
    const std::string document = session.open("folder/a.txt");
    session.shell("mkdir ../outside; mv folder ..; ln -s ../outside folder");
    ASSERT_EQ(session.differenceInTheEnd(), "");
    session.ask({.command = Command::save, .documentID = document, .text = "saved", .expectedVersion = 2});
    session.shell("echo new > ../outside/a.txt");
    EXPECT_EQ(session.events(1), Lines{"updated document-1 v4 folder/a.txt"});
}

TEST(LinkedDocuments, ThatAreMissingAreToldOfFilesWhereTheLinkLeadsNow) {
    WatchedSession session("folder/a.txt other/b.txt");
    session.eventsUntilQuiet();
    session.open("folder/a.txt");
    session.shell("rm -r folder; ln -s other folder");
    ASSERT_EQ(session.differenceInTheEnd(), "");
    session.shell("echo new > other/a.txt");
    EXPECT_EQ(session.differenceInTheEnd(), "");
}

TEST(LinkedDocuments, OfOneFileDoNotOverwriteEachOtherUnseen) {
    WatchedSession session("folder/a.txt");
    session.shell("ln -s folder near");
    session.eventsUntilQuiet();
    const std::string plain = session.open("folder/a.txt"), linked = session.open("near/a.txt");
    for (const std::int64_t version : {1, 2}) {
        session.ask({.command = Command::save, .documentID = plain, .text = "saved", .expectedVersion = version});
        const auto refused =
            session.ask({.command = Command::save, .documentID = linked, .text = "", .expectedVersion = version});
        EXPECT_EQ(refused.success, false) << "at once";
        EXPECT_EQ(session.picture.documents.at(linked).text, "saved");
        EXPECT_EQ(session.picture.documents.at(linked).version, version + 1);
    }
}

} // namespace
