#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>

#include "tests/process/RandomChanges.h"
#include "tests/process/RandomFaults.h"
#include "tests/process/WatchedSession.h"

// Random changes by the client and by other programs, round after round; after each the client, which only follows the
// envelopes, knows what is on the disk. WATCH_CONVERGENCE_OPERATIONS says for how long, and where things go wrong
// besides, WATCH_CONVERGENCE_MINUTES; WATCH_CONVERGENCE_SEED where the random numbers begin.

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

std::uint64_t number(const char* variable, std::uint64_t usual) {
    const char* given = std::getenv(variable);
    return given ? std::strtoull(given, nullptr, 10) : usual;
}

// What the daemon holds when it has nothing to do.
struct Holdings {
    std::size_t descriptors{};
    std::size_t watches{};
    std::size_t kilobytes{};
};

std::ostream& operator<<(std::ostream& stream, const Holdings& held) {
    return stream << held.descriptors << " descriptors, " << held.watches << " watches, " << held.kilobytes << " KB";
}

Holdings holdingsOf(pid_t process) {
    const std::string place = "/proc/" + std::to_string(process);
    Holdings held;
    for (const auto& entry : fs::directory_iterator(place + "/fdinfo")) {
        ++held.descriptors;
        std::ifstream lines(entry.path());
        for (std::string line; std::getline(lines, line);) held.watches += line.starts_with("inotify ");
    }
    std::ifstream status(place + "/status");
    for (std::string word; status >> word;) {
        if (word == "RssAnon:") status >> held.kilobytes;
    }
    return held;
}

Holdings holdingsWhenAllIsClosed(WatchedSession& session) {
    while (!session.picture.documents.empty()) session.close(session.picture.documents.begin()->first);
    session.closeWorkspace();
    const pid_t process = session.client.process.processID();
    // Watches are kept for a second, for whoever opens the same again.
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (holdingsOf(process).watches > 0 && std::chrono::steady_clock::now() < end)
        session.ask({.command = Command::close, .documentID = "none"});
    return holdingsOf(process);
}

TEST(Convergence, TheClientKnowsInTheEndWhatIsOnTheDisk) {
    const std::uint64_t seed = number("WATCH_CONVERGENCE_SEED", std::random_device()());
    const std::uint64_t operations = number("WATCH_CONVERGENCE_OPERATIONS", 400);
    std::cout << "seed " << seed << std::endl;
    WatchedSession session("a b/a b/b c/d/e");
    RandomChanges changes(session, seed);
    std::mt19937_64 lengths(seed);
    for (std::uint64_t done = 0; done < operations;) {
        changes.log.clear();
        for (std::uint64_t count = 1 + lengths() % 30; count > 0; --count, ++done) changes.makeOne();
        const std::string difference = session.differenceInTheEnd();
        ASSERT_TRUE(difference.empty()) << "seed " << seed << ", after " << done << " operations, the last of them\n"
                                        << changes.log << difference;
    }
}

std::string playRound(WatchedSession& session, RandomChanges& changes, RandomFaults& faults) {
    changes.log.clear();
    try {
        for (std::size_t count = 1 + changes.below(40); count > 0; --count) {
            changes.makeOne();
            if (changes.below(12) == 0) faults.beginOne();
            if (changes.below(12) == 0) faults.endOne();
        }
        faults.endAll();
        if (faults.haveMadeListingsFail()) session.expandAgain();
    } catch (const std::runtime_error& noAnswer) {
        return noAnswer.what();
    }
    fs::remove_all(session.directory.path("home")); // the trash
    changes.removeNumbered();
    return session.differenceInTheEnd();
}

TEST(Convergence, WhateverGoesWrong) {
    const std::uint64_t seed = number("WATCH_CONVERGENCE_SEED", std::random_device()());
    const std::uint64_t minutes = number("WATCH_CONVERGENCE_MINUTES", 0);
    const auto length = minutes > 0 ? std::chrono::seconds(60 * minutes) : std::chrono::seconds(12);
    std::cout << "seed " << seed << std::endl;
    WatchedSession session("a b/a b/b c/d/e", RandomFaults::launcher());
    RandomChanges changes(session, seed);
    RandomFaults faults(changes, session);
    int rounds = 0;
    const auto playFor = [&](std::chrono::seconds time) {
        for (const auto end = std::chrono::steady_clock::now() + time; std::chrono::steady_clock::now() < end;) {
            const std::string difference = playRound(session, changes, faults);
            ASSERT_TRUE(difference.empty()) << "seed " << seed << ", round " << rounds << '\n'
                                            << changes.log << difference;
            ++rounds;
        }
    };
    playFor(length / 4);
    if (HasFatalFailure()) return;
    const Holdings before = holdingsWhenAllIsClosed(session);
    EXPECT_EQ(before.watches, 0U);
    playFor(length - length / 4);
    if (HasFatalFailure()) return;
    const Holdings after = holdingsWhenAllIsClosed(session);
    std::cout << rounds << " rounds; before: " << before << "; after: " << after << '\n';
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.watches, 0U);
    // What is free in between is not given back.
    if (!IS_SANITIZED) {
        EXPECT_LT(after.kilobytes, before.kilobytes + 4 * 1024);
    }
}

} // namespace
