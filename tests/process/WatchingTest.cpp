#include <gtest/gtest.h>

#include <filesystem>

#include "tests/process/WatchedSession.h"
#include "tests/support/Files.h"

namespace {

using Command = EditorDocumentRequestCommand;
using Lines = WatchedSession::Lines;

// What the real system's events lead to. The root and sub are expanded, a.txt and sub/deep/c.txt are open documents.
TEST(Watching, EachChangeIsToldOnceAsWhatItIs) {
    const std::string tree = "a.txt sub/b.txt sub/deep/c.txt other/d.txt";
    const std::string listing = "children .: other/ sentinels/ sub/ ";
    const struct {
        const char* name;
        std::string command;
        Lines expected;
    } cases[] = {
        {"a new file", "echo x > n", {listing + "a.txt n", "createdFile n"}},
        {"a new tree that nobody has expanded",
         "mkdir -p other/x/y && echo x > other/x/y/z",
         {"createdFolder other/x", "createdFolder other/x/y", "createdFile other/x/y/z"}},
        {"a file moved in from outside", "mv ../outside n", {listing + "a.txt n", "createdFile n"}},
        {"a link", "ln -s a.txt n", {listing + "a.txt n", "createdFile n"}},
        {"an edit in place", "echo new > a.txt", {"updated document-1 v2 a.txt"}},
        {"the same text, and the same time, in another file",
         "cp -p a.txt ../t && mv ../t a.txt",
         {"updated document-1 v2 a.txt"}},
        {"only another mode", "chmod 600 a.txt", {}},
        {"a save through a temporary file", "sed -i s/a/b/ a.txt", {"updated document-1 v2 a.txt"}},
        {"a save that keeps the old file",
         "mv a.txt a.txt~ && echo new > a.txt",
         {listing + "a.txt a.txt~", "createdFile a.txt~", "updated document-1 v2 a.txt"}},
        {"a save that deletes the old file first", "rm a.txt && echo new > a.txt", {"updated document-1 v2 a.txt"}},
        {"an open document renamed",
         "mv a.txt z.txt",
         {"updated document-1 v2 z.txt", listing + "z.txt", "renamed a.txt > z.txt"}},
        {"an open document moved",
         "mv a.txt sub",
         {"updated document-1 v2 sub/a.txt", "children .: other/ sentinels/ sub/", "children sub: deep/ a.txt b.txt",
          "deleted a.txt", "createdFile sub/a.txt", "moved a.txt > sub/a.txt"}},
        {"an open document deleted",
         "rm a.txt",
         {"children .: other/ sentinels/ sub/", "deleted a.txt", "deleted document-1"}},
        {"a folder renamed",
         "mv sub tub",
         {"updated document-2 v2 tub/deep/c.txt", "children .: other/ sentinels/ tub/ a.txt",
          "children tub: deep/ b.txt", "renamed sub > tub"}},
        {"a folder moved out of sight",
         "mv sub ..",
         {"children .: other/ sentinels/ a.txt", "deleted sub", "deleted document-2"}},
    };
    for (const auto& row : cases) {
        WatchedSession session(tree);
        writeFile(session.directory.path("outside"), "");
        // Listings wait until the whole tree was looked through once, documents do not.
        session.eventsUntilQuiet();
        session.load("sub");
        session.open("a.txt");
        session.open("sub/deep/c.txt");
        session.shell(row.command);
        EXPECT_EQ(session.events(row.expected.size()), row.expected) << row.name;
        EXPECT_EQ(session.eventsUntilQuiet(), Lines{}) << row.name;
        EXPECT_EQ(session.picture.difference(), "") << row.name;
    }
}

TEST(Watching, TheRootGoesAndADocumentStays) {
    WatchedSession session("a.txt");
    session.open("a.txt");
    session.eventsUntilQuiet(); // or the listing that follows the opening would find that the root is gone
    std::filesystem::rename(session.root, session.directory.path("v"));
    EXPECT_EQ(session.events(2), (Lines{"workspaceRootUnavailable .", "deleted document-1"}));
    std::filesystem::rename(session.directory.path("v"), session.root);
    EXPECT_EQ(session.events(1), Lines{"updated document-1 v3 a.txt"});
}

// Once it is back the root is the one that is watched, and nothing of it has changed.
TEST(Watching, WhatWasSavedWhereTheRootWasAwayIsGoneWithWhatTookItsPlace) {
    WatchedSession session("sub/a.txt");
    std::string documentID = session.open("sub/a.txt");
    std::filesystem::remove(session.path("sub/a.txt"));
    ASSERT_EQ(session.differenceInTheEnd(), "");
    for (int round = 0; round < 10; ++round) {
        std::filesystem::rename(session.root, session.directory.path("v"));
        session.ask({.command = Command::save,
                     .documentID = documentID,
                     .text = "new",
                     .expectedVersion = session.picture.documents.at(documentID).version});
        std::filesystem::remove_all(session.root);
        std::filesystem::rename(session.directory.path("v"), session.root);
        ASSERT_EQ(session.differenceInTheEnd(), "") << round;
    }
}

TEST(Watching, AnOwnSaveIsSilent) {
    WatchedSession session("a.txt");
    const std::string documentID = session.open("a.txt");
    std::int64_t version = 1;
    for (const char* text : {"one", "two", ""}) {
        const auto saved =
            session.ask({.command = Command::save, .documentID = documentID, .text = text, .expectedVersion = version});
        version = saved.snapshot.value().version;
    }
    EXPECT_EQ(session.eventsUntilQuiet(), Lines{});
    EXPECT_EQ(session.client.process.recorded().find(".edsave-"), std::string::npos);
    session.shell("echo theirs > a.txt");
    EXPECT_EQ(session.events(1), Lines{"updated document-1 v5 a.txt"});
}

} // namespace
