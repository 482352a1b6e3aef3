#include "watch/WatchEventMailbox.h"

#include <gtest/gtest.h>

#include <new>

#include "tests/support/WorkspaceTest.h"

namespace {

using Kind = WorkspaceWatchEventKind;

// Events in words: "+a" was created, "-a" removed, "!a" modified, and "a>b" renamed.
std::vector<WorkspaceWatchEvent> events(const std::string& words) {
    std::vector<WorkspaceWatchEvent> result;
    for (const std::string& word : wordsOf(words)) {
        const auto arrow = word.find('>');
        if (arrow != word.npos) {
            result.push_back({.rootPath = "/w",
                              .path = word.substr(0, arrow),
                              .kind = Kind::itemRenamed,
                              .relatedPath = word.substr(arrow + 1)});
        } else {
            const Kind kind = word[0] == '+'   ? Kind::itemCreated
                              : word[0] == '-' ? Kind::itemRemoved
                                               : Kind::itemModified;
            result.push_back({.rootPath = "/w", .path = word.substr(1), .kind = kind});
        }
    }
    return result;
}

TEST(WatchEventMailbox, KeepsTheLastOfEqualEventsUpToARename) {
    const struct {
        const char* name;
        std::vector<std::string> lists;
        std::string taken;
    } cases[] = {
        {"nothing in common", {"+a !b", "-c"}, "+a !b -c"},
        {"a file that is written all the time", {"!a", "!b !a", "!a"}, "!b !a"},
        {"a file that comes and goes", {"+a", "-a", "+a", "-a +b"}, "+a -a +b"},
        {"a name that another file takes", {"+a !a", "a>b", "+a !a", "b>a", "!a"}, "+a !a a>b +a !a b>a !a"},
        {"renames to and fro", {"a>b", "b>a", "a>b"}, "a>b b>a a>b"},
    };
    for (const auto& row : cases) {
        WatchEventMailbox mailbox;
        int announcements = 0;
        for (const std::string& list : row.lists) mailbox.put(events(list), [&] { ++announcements; });
        const WatchEventNews news = mailbox.take();
        EXPECT_EQ(news.events, events(row.taken)) << row.name;
        EXPECT_FALSE(news.isIncomplete) << row.name;
        EXPECT_EQ(announcements, 1) << row.name;
        EXPECT_TRUE(mailbox.take().events.empty()) << row.name;
    }
}

TEST(WatchEventMailbox, SaysWhenEventsAreMissing) {
    WatchEventMailbox mailbox;
    mailbox.put({}, [] {});
    EXPECT_TRUE(mailbox.take().isIncomplete);
    mailbox.put(events("+a"), [] { throw std::bad_alloc(); });
    bool isAnnounced = false;
    mailbox.put(events("+b"), [&] { isAnnounced = true; });
    EXPECT_TRUE(isAnnounced) << "what could not be announced is announced with the next";
    EXPECT_EQ(mailbox.take().events, events("+a +b"));

    for (int turn = 0; turn < 10'000; ++turn) mailbox.put(events("a>b b>a"), [] {});
    const WatchEventNews news = mailbox.take();
    EXPECT_TRUE(news.isIncomplete);
    EXPECT_LT(news.events.size(), 10'010U) << "the room does not grow with the time";
}

} // namespace
