#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "tests/platform/watch/WatchGame.h"

// A keeper of the whole tree, who learns of changes by notifications alone, ends with the tree as it is on the disk.
// All that happens follows from a seed, so that what goes wrong once goes wrong again: WATCH_SIMULATION_SEED=n plays
// that game alone, and WATCH_SIMULATION_GAMES=n as many from a random start.

namespace {

void play(std::uint64_t seed, WatchGame::Troubles troubles) {
    WatchGame game([random = std::mt19937_64(seed)]() mutable { return random(); }, troubles);
    for (int round = 0; round < 6; ++round) {
        game.playRound();
        ASSERT_EQ(game.complaint(), "") << "seed " << seed << ", round " << round;
    }
    EXPECT_EQ(game.watchesLeftBehind(), 0U) << "seed " << seed;
}

void playAll(WatchGame::Troubles troubles) {
    const char* given = std::getenv("WATCH_SIMULATION_SEED");
    if (given) return play(std::strtoull(given, nullptr, 10), troubles);
    const char* count = std::getenv("WATCH_SIMULATION_GAMES");
    const std::uint64_t start = std::random_device{}();
    for (std::uint64_t i = 0, end = count ? std::strtoull(count, nullptr, 10) : 300; i < end; ++i) {
        play(start + i, troubles);
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST(SimulatedConvergence, WhateverHappensInBetween) {
    playAll({});
}

TEST(SimulatedConvergence, WhenEventsAreLost) {
    playAll({.lostEvents = true});
}

TEST(SimulatedConvergence, WhenFileSystemsAreMountedInBetween) {
    playAll({.mounts = true});
}

TEST(SimulatedConvergence, WhenWatchesAreFew) {
    playAll({.fewWatches = true});
}

TEST(SimulatedConvergence, WhateverGoesWrong) {
    playAll({.lostEvents = true, .mounts = true, .fewWatches = true});
}

} // namespace
