#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>

#include "tests/process/RandomFaults.h"
#include "tests/process/WatchedSession.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/ProcessLimits.h"

// What holds when more happens than the system, or the client, can take.

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

TEST(WatchingLimits, WhatTheKernelForgotIsFoundAllTheSame) {
    WatchedSession session("a.txt b.txt c.txt sub/d.txt sub/deep/e.txt gone/f.txt");
    for (const char* folder : {"sub", "sub/deep", "gone"}) session.load(folder);
    for (const char* document : {"a.txt", "b.txt", "sub/deep/e.txt", "gone/f.txt"}) session.open(document);
    {
        const StoppedProcess stopped(session.client.process.processID());
        for (int number = 0; number < 10'000; ++number) {
            const std::string path = session.path("sub/" + std::to_string(number % 100));
            writeFile(path, "");
            fs::remove(path);
        }
        session.shell("echo new > a.txt && mv c.txt z.txt && rm b.txt && mv sub tub && mkdir sub && echo x > tub/n");
        session.shell("rm -r gone && mkdir -p new/deep && echo x > new/deep/n && echo new > tub/deep/e.txt");
    }
    EXPECT_EQ(session.differenceInTheEnd(), "");
    session.load("new");
    session.shell("echo x > new/deep/m && echo x > new/l");
    EXPECT_EQ(session.differenceInTheEnd(), "");
}

// In a namespace of its own the limit holds for the daemon alone.
std::vector<std::string> limiting(const std::string& limit) {
    return {"unshare", "-Ur", "sh", "-c", "echo " + limit + " && exec \"$@\"", "sh"};
}

TEST(WatchingLimits, WithoutWatchesWhatIsLoadedIsLookedAtNowAndThen) {
    if (RandomFaults::launcher().empty()) GTEST_SKIP() << "no namespace can be made in which to set the limit";
    std::string tree = "a.txt sub/deep/b.txt";
    for (int number = 0; number < 50; ++number) tree += " many/" + std::to_string(number) + '/';
    for (const char* limit : {"6 > /proc/sys/user/max_inotify_watches", "0 > /proc/sys/user/max_inotify_instances"}) {
        SCOPED_TRACE(limit);
        WatchedSession session(tree, limiting(limit));
        for (const char* folder : {"many", "many/0", "many/49", "sub", "sub/deep"}) session.load(folder);
        session.open("sub/deep/b.txt");
        session.shell("echo x > many/0/n && rmdir many/49 && echo x > n && echo new > sub/deep/b.txt");
        const auto isKnown = [&] { return session.picture.difference().empty(); };
        while (!isKnown()) session.events(1);
        session.shell("mv sub/deep/b.txt sub/deep/c.txt");
        while (!isKnown()) session.events(1);
    }
}

TEST(WatchingLimits, WantOfMemoryDelaysWhatIsToldAndNoMore) {
    if (IS_SANITIZED) GTEST_SKIP() << "a sanitizer ends the process instead";
    WatchedSession session("a.txt many/");
    session.load("many");
    session.open("a.txt");
    session.eventsUntilQuiet();
    const auto fill = [&](const std::string& stem) {
        for (int number = 0; number < 4'000; ++number)
            writeFile(session.path("many/" + stem + std::to_string(number)), "");
    };
    fill("a-name-that-fits-" + std::string(100, '-'));
    const pid_t process = session.client.process.processID();
    auto limit = std::make_unique<ProcessLimit>(process, RLIMIT_AS, addressSpace(process) + (4 << 20));
    fill("one-that-finds-no-room-" + std::string(200, '-'));
    writeFile(session.path("a.txt"), std::string(6 << 20, 'x'));
    const auto answer = session.ask({.command = Command::close, .documentID = "none"});
    EXPECT_EQ(answer.message, "Unknown document.");
    limit.reset();
    writeFile(session.path("a.txt"), "new");
    EXPECT_EQ(session.differenceInTheEnd(), "");
}

TEST(WatchingLimits, AClientThatDoesNotReadIsToldTheEndAndAnsweredBefore) {
    std::string tree = "log.txt sub/x";
    for (int number = 0; number < 2'000; ++number) tree += " many/a-name-that-is-not-short-" + std::to_string(number);
    WatchedSession session(tree);
    session.load("many");
    const std::string documentID = session.open("log.txt");
    // The listing alone is more than a pipe holds.
    session.shell("echo x > many/n");
    for (int turn = 0; turn < 200; ++turn) {
        writeFile(session.path("log.txt"), std::to_string(turn));
        writeFile(session.path("sub/" + std::to_string(turn % 10)), "");
        fs::remove(session.path("sub/" + std::to_string(turn % 10)));
    }
    session.shell("rm -r many && mkdir many && mv sub tub");
    EXPECT_EQ(session.ask({.command = Command::loadWorkspaceChildren, .rootPath = session.root, .path = session.root})
                  .success,
              true);
    EXPECT_EQ(session.differenceInTheEnd(), "");
    EXPECT_EQ(session.picture.documents.at(documentID).text, "199");
}

// It has the root's path while it is there, and its folders the names of others.
TEST(WatchingLimits, WhatWasListedOnADiskThatIsGoneIsListedAgain) {
    WatchedSession session("sub/b.txt");
    for (int round = 0; round < 10; ++round) {
        auto disk = std::make_unique<MountedDisk>(session.root);
        if (!disk->reason.empty()) GTEST_SKIP() << disk->reason;
        std::filesystem::create_directory(session.path("sub"));
        session.load(".");
        session.load("sub");
        disk.reset();
        ASSERT_EQ(session.differenceInTheEnd(), "") << round;
    }
}

// Of the same file system, too, so that only the mount tells it from what lies below.
TEST(WatchingLimits, WhatIsMountedWithinAWorkspaceIsToldLikeAllElse) {
    for (const bool isThereBefore : {true, false}) {
        WatchedSession session("sub/covered.txt");
        const std::string elsewhere = session.directory.path("elsewhere");
        writeFile(elsewhere + "/a.txt", "1");
        writeFile(elsewhere + "/deep/b.txt", "1");
        const auto mount = [&] {
            return ::mount(elsewhere.c_str(), session.path("sub").c_str(), "", MS_BIND, nullptr) == 0;
        };
        session.closeWorkspace();
        if (isThereBefore && !mount()) GTEST_SKIP() << "cannot mount";
        session.ask({.command = Command::openWorkspace, .rootPath = session.root});
        session.load("sub");
        ASSERT_TRUE(isThereBefore || mount());
        ASSERT_EQ(session.differenceInTheEnd(), "") << isThereBefore;
        session.load("sub/deep");
        const std::string documentID = session.open("sub/deep/b.txt");
        ASSERT_EQ(session.differenceInTheEnd(), "") << isThereBefore;
        writeFile(session.path("sub/new.txt"), "");
        writeFile(session.path("sub/deep/b.txt"), "2");
        writeFile(session.path("sub/deep/new.txt"), "");
        EXPECT_EQ(session.differenceInTheEnd(), "") << isThereBefore;
        EXPECT_EQ(session.picture.documents.at(documentID).text, "2") << isThereBefore;
        ::umount2(session.path("sub").c_str(), MNT_DETACH);
        EXPECT_EQ(session.differenceInTheEnd(), "") << isThereBefore;
        writeFile(session.path("sub/covered.txt"), "2");
        writeFile(session.path("sub/newer.txt"), "");
        EXPECT_EQ(session.differenceInTheEnd(), "") << isThereBefore;
    }
}

// Its listing is given up, and comes back when the client expands it again; the document in it is followed all along.
TEST(WatchingLimits, WhatCannotBeReadForAWhileIsToldOnceItIsExpandedAgain) {
    const auto launcher = RandomFaults::launcher();
    if (launcher.empty()) GTEST_SKIP() << "no namespace can be made in which rights bind";
    WatchedSession session("a.txt sub/b.txt sub/deep/c.txt", launcher);
    for (const char* folder : {"sub", "sub/deep"}) session.load(folder);
    session.open("sub/b.txt");
    session.shell("chmod 000 sub && touch n");
    session.eventsUntilQuiet();
    session.shell("chmod 700 sub && touch sub/x sub/deep/y && chmod 000 sub && touch m");
    session.eventsUntilQuiet();
    session.shell("chmod 700 sub && echo new > sub/b.txt");
    session.expandAgain();
    EXPECT_EQ(session.differenceInTheEnd(), "");
    session.shell("touch sub/z sub/deep/z");
    EXPECT_EQ(session.differenceInTheEnd(), "");
}

TEST(WatchingLimits, RequestsWithoutPauseDoNotKeepChangesFromBeingTold) {
    WatchedSession session("a.txt");
    session.eventsUntilQuiet();
    constexpr int many = 1'000'000;
    std::atomic<bool> isTold = false, isOver = false;
    std::atomic<int> sentCount = 0;
    std::thread sender([&] {
        for (; !isTold && sentCount < many; ++sentCount)
            session.client.process.sendLine(R"({"requestID":"x","command":"close","documentID":"x"})");
        isOver = true;
    });
    session.answer();
    writeFile(session.path("n"), "");
    for (int answeredCount = 1; !isOver || answeredCount < sentCount; ++answeredCount) {
        session.answer();
        if (session.picture.folders.at(session.root).children.contains("n")) isTold = true;
    }
    sender.join();
    EXPECT_TRUE(isTold);
}

} // namespace
