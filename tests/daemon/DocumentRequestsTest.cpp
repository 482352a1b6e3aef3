#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>

#include "tests/support/DaemonHarness.h"
#include "tests/support/Files.h"

namespace {

using Command = EditorDocumentRequestCommand;
using Event = EditorDocumentEventKind;
using Envelopes = std::vector<EditorDocumentDaemonEnvelope>;

class DocumentRequests : public testing::Test {
protected:
    std::string path(const std::string& name) const { return daemon.directory.path(name); }

    // Opens a new file with the bytes and returns its snapshot.
    EditorDocumentSnapshotPayload opened(const std::string& name, const std::string& bytes) {
        writeFile(path(name), bytes);
        const auto response = daemon.open(path(name));
        EXPECT_TRUE(response.snapshot) << response.message.value_or("");
        return response.snapshot.value_or(EditorDocumentSnapshotPayload{});
    }

    static void expectEvent(const Envelopes& envelopes, Event event, const std::string& documentID) {
        ASSERT_EQ(envelopes.size(), 1U);
        EXPECT_EQ(envelopes[0].kind, EditorDocumentEnvelopeKind::event);
        EXPECT_EQ(envelopes[0].event, event);
        EXPECT_EQ(envelopes[0].documentID, documentID);
    }

    DaemonHarness daemon;
};

TEST_F(DocumentRequests, ReopeningKeepsTheDocumentAndAdvancesItsVersion) {
    const auto first = opened("a.txt", "one");
    writeFile(path("a.txt"), "two");
    const auto second = daemon.open("  " + path("./a.txt") + "\n").snapshot.value();
    EXPECT_EQ(second.documentID, first.documentID);
    EXPECT_EQ(second.path, path("a.txt"));
    EXPECT_EQ(std::pair(first.version, second.version), std::pair(std::int64_t{1}, std::int64_t{2}));
    EXPECT_EQ(second.text, "two");

    EXPECT_EQ(daemon.close(first.documentID).documentID, first.documentID);
    const auto third = daemon.open(path("a.txt")).snapshot.value();
    EXPECT_NE(third.documentID, first.documentID);
    EXPECT_EQ(third.version, 1);
}

TEST_F(DocumentRequests, AFailedReopeningLeavesTheDocumentOpen) {
    const auto document = opened("a.txt", "one");
    std::filesystem::remove(path("a.txt"));
    EXPECT_EQ(daemon.open(path("a.txt")).message, "The file could not be found.");
    EXPECT_TRUE(daemon.save(document.documentID, "again", 1).success.value());
    EXPECT_EQ(readFile(path("a.txt")), "again");
}

TEST_F(DocumentRequests, RefusalsComeInTheOrderOfTheChecks) {
    const auto document = opened("a.txt", "one");
    const std::string conflict = "The file changed on disk before this save completed.";
    const struct {
        const char* name;
        EditorDocumentDaemonRequest request;
        std::string message;
    } cases[] = {
        {"open without a path", {.command = Command::open}, "Missing file path."},
        {"open with a blank path", {.command = Command::open, .path = " \n"}, "Missing file path."},
        {"save of nothing", {.command = Command::save}, "Unknown document."},
        {"save of an unknown document", {.command = Command::save, .documentID = "x"}, "Unknown document."},
        {"save without text",
         {.command = Command::save, .documentID = document.documentID, .expectedVersion = 7},
         "Missing document text."},
        {"save without a version", {.command = Command::save, .documentID = document.documentID, .text = ""}, conflict},
        {"save of another version",
         {.command = Command::save, .documentID = document.documentID, .text = "", .expectedVersion = 2},
         conflict},
        {"close of nothing", {.command = Command::close}, "Unknown document."},
        {"close of an unknown document", {.command = Command::close, .documentID = "x"}, "Unknown document."},
    };
    for (const auto& row : cases) {
        const auto response = daemon.send(row.request);
        const EditorDocumentDaemonEnvelope expected{.kind = EditorDocumentEnvelopeKind::response,
                                                    .requestID = "request",
                                                    .command = row.request.command,
                                                    .success = false,
                                                    .message = row.message};
        EXPECT_EQ(response, expected) << row.name;
    }
    EXPECT_EQ(readFile(path("a.txt")), "one");
}

TEST_F(DocumentRequests, SavingKeepsTheStyleOfTheFileAndAnswersWithTheTextAsSent) {
    const struct {
        const char* name;
        std::string bytes;
        std::string text;
        std::string saved;
    } cases[] = {
        {"lf", "x\n", "a\rb\r\nc", "a\nb\nc"},
        {"crlf", "x\r\n", "a\nb", "a\r\nb"},
        {"cr", "x\r", "a\nb", "a\rb"},
        {"utf8 mark", "\xEF\xBB\xBFx", "y", "\xEF\xBB\xBFy"},
        {"utf16 mark", std::string("\xFE\xFF\0x", 4), "yz", std::string("\xFE\xFF\0y\0z", 6)},
    };
    for (const auto& row : cases) {
        const auto document = opened(row.name, row.bytes);
        const auto response = daemon.save(" " + document.documentID, row.text, 1);
        ASSERT_TRUE(response.snapshot) << row.name;
        EXPECT_EQ(response.snapshot->text, row.text) << row.name;
        EXPECT_EQ(response.snapshot->version, 2) << row.name;
        EXPECT_FALSE(response.documentID) << row.name;
        EXPECT_EQ(readFile(path(row.name)), row.saved) << row.name;
        EXPECT_EQ(daemon.checkDocument(document.documentID), Envelopes{}) << row.name;
        EXPECT_EQ(daemon.save(document.documentID, "old", 1).success, false) << row.name;
    }
}

TEST_F(DocumentRequests, WhatTheEncodingCannotHoldIsNotSaved) {
    const auto document = opened("latin",
                                 "na\xEFve caf\xE9s, d\xE9j\xE0 vu, cr\xE8me br\xFBl\xE9"
                                 "e\n");
    ASSERT_NE(document.encodingRawValue, 4U);
    EXPECT_EQ(daemon.save(document.documentID, "\u65E5\u672C", 1).message, "Failed to encode the document for saving.");
    EXPECT_EQ(daemon.save(document.documentID, document.text, 1).success, true);
}

TEST_F(DocumentRequests, WhateverASaveFailsWithTakesTheSharedFormAndLeavesTheDocument) {
    const auto document = opened("a.txt", "one");
    const std::pair<std::string, std::function<void()>> cases[] = {
        {"No space.", [] { throw PlatformError("POSIX", 28, "No space."); }},
        {"too long", [] { throw std::length_error("too long"); }},
        {"The request needs more memory than there is.", [] { throw std::bad_alloc(); }},
    };
    for (const auto& [description, fail] : cases) {
        const int calls = daemon.fileManager->callCount(FileOperation::prepareReplacement);
        daemon.fileManager->beforeCall(FileOperation::prepareReplacement, calls + 1, fail);
        const auto response = daemon.save(document.documentID, "two", 1);
        EXPECT_EQ(response, (EditorDocumentDaemonEnvelope{.kind = EditorDocumentEnvelopeKind::response,
                                                          .success = false,
                                                          .message = "Failed to decode request: " + description}));
    }
    EXPECT_EQ(daemon.checkDocument(document.documentID), Envelopes{});
    EXPECT_EQ(daemon.save(document.documentID, "two", 1).snapshot->version, 2);
}

TEST_F(DocumentRequests, ADeletedFileIsToldOnceAndItsReturnOnce) {
    const auto document = opened("a.txt", "one");
    std::filesystem::remove(path("a.txt"));
    expectEvent(daemon.checkDocument(document.documentID), Event::deleted, document.documentID);
    EXPECT_EQ(daemon.checkDocument(document.documentID), Envelopes{});

    writeFile(path("a.txt"), "one");
    const auto returned = daemon.checkDocument(document.documentID);
    expectEvent(returned, Event::updated, document.documentID);
    EXPECT_EQ(returned.at(0).snapshot->version, 3);
    EXPECT_EQ(daemon.checkDocument(document.documentID), Envelopes{});
    EXPECT_EQ(daemon.checkDocument("unknown"), Envelopes{});
}

struct statx statusOf(const std::string& path) {
    struct statx status {};
    EXPECT_EQ(::statx(AT_FDCWD, path.c_str(), 0, STATX_INO | STATX_BTIME, &status), 0);
    return status;
}

// A new file mostly gets the number that was given back last. Its clock goes on in ticks.
void replaceByOneOfTheSameNumber(const std::string& path) {
    const auto time = std::filesystem::last_write_time(path);
    const struct statx former = statusOf(path);
    const auto isAsWanted = [&] {
        const struct statx status = statusOf(path);
        return status.stx_ino == former.stx_ino && status.stx_btime.tv_nsec != former.stx_btime.tv_nsec;
    };
    for (int attempt = 0; attempt < 10'000 && !isAsWanted(); ++attempt) {
        std::filesystem::remove(path);
        writeFile(path, "two");
    }
    std::filesystem::last_write_time(path, time);
}

TEST_F(DocumentRequests, EveryKindOfChangeIsSeen) {
    const struct {
        const char* name;
        void (*change)(const std::string& path);
    } cases[] = {
        {"size", [](const std::string& path) { writeFile(path, "three"); }},
        {"time alone",
         [](const std::string& path) {
             std::filesystem::last_write_time(path,
                                              std::filesystem::last_write_time(path) + std::chrono::nanoseconds(100));
         }},
        {"another file of the same time and size",
         [](const std::string& path) {
             std::filesystem::copy_file(path, path + "2");
             std::filesystem::last_write_time(path + "2", std::filesystem::last_write_time(path));
             std::filesystem::rename(path + "2", path);
         }},
        {"another file of the same number, time and size", replaceByOneOfTheSameNumber},
    };
    for (const auto& row : cases) {
        const auto document = opened(row.name, "one");
        row.change(path(row.name));
        expectEvent(daemon.checkDocument(document.documentID), Event::updated, document.documentID);
        EXPECT_EQ(daemon.checkDocument(document.documentID), Envelopes{}) << row.name;
    }
}

TEST_F(DocumentRequests, AnUnavailableDocumentIsTriedAgain) {
    const auto document = opened("a.txt", "one");
    writeFile(path("a.txt"), std::string("\0\1\2", 3));
    for (int check = 0; check < 2; ++check) {
        const auto events = daemon.checkDocument(document.documentID);
        expectEvent(events, Event::unavailable, document.documentID);
        EXPECT_EQ(events.at(0).message, "Binary files are not supported in the in-app editor.");
    }
    writeFile(path("a.txt"), "text");
    EXPECT_EQ(daemon.checkDocument(document.documentID).at(0).snapshot->version, 2);
}

TEST_F(DocumentRequests, ATextWrittenRightAfterOursIsToldNotAdopted) {
    const auto document = opened("a.txt", "one");
    writeFile(path("other"), "foreign");
    // Another program replaces the file just before whoever next looks at it.
    const int looks = daemon.fileManager->callCount(FileOperation::attributesOfItem);
    daemon.fileManager->beforeCall(FileOperation::attributesOfItem, looks + 1,
                                   [&] { std::filesystem::rename(path("other"), path("a.txt")); });
    EXPECT_EQ(daemon.save(document.documentID, "ours", 1).success, true);
    EXPECT_EQ(daemon.checkDocument(document.documentID).at(0).snapshot->text, "foreign");
}

} // namespace
