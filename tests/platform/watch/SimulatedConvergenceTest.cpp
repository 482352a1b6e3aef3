#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <set>

#include "platform/linux/watch/TreeWatcher.h"
#include "tests/platform/watch/FakeDisk.h"
#include "tests/platform/watch/Told.h"

// A keeper of the whole tree, who learns of changes by notifications alone, ends with the tree as it is on the disk:
// with changes before every call that the watcher makes, events that arrive late, and events that never do. All of it
// follows from a seed, so that what goes wrong once goes wrong again: WATCH_SIMULATION_SEED=n plays that game alone,
// and WATCH_SIMULATION_GAMES=n as many from a random start.

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

bool isAtOrBelow(const std::string& path, const std::string& directory) {
    return path == directory || path.starts_with(directory + "/");
}

std::string parentOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

// Does what is expected of whoever loads directories: looks into one that appears or is renamed, and again into one
// that is named without flags.
class Keeper {
public:
    explicit Keeper(const FakeDisk& fakeDisk) : disk(fakeDisk) {}

    // Looks through the directory and all below it.
    void enter(const std::string& directory) {
        for (const std::string& each : look(directory)) enter(each);
    }

    void apply(const EventStreamBatch& batch) {
        using namespace EventStreamFlag;
        for (std::size_t i = 0; i < batch.size(); ++i) {
            const std::string& path = *batch[i].path;
            if (batch[i].flags & itemRenamed) {
                const std::string& newPath = *batch.at(++i).path;
                if (batch[i].flags & itemIsDir)
                    rename(path, newPath);
                else
                    forget(path), forget(newPath), items.insert(newPath);
            } else if (batch[i].flags & itemRemoved) {
                forget(path);
            } else if (batch[i].flags & (itemCreated | itemModified)) {
                if (batch[i].flags & itemIsFile) forget(path); // it may have been taken for a directory
                items.insert(path);
                if (batch[i].flags & itemIsDir) enter(path);
            } else if (batch[i].flags == 0 && items.contains(path)) {
                look(path);
            }
        }
    }

    std::set<std::string> items{"/w"};

private:
    // Takes the entries of the directory for all that is in it. Enters new ones; returns the directories among the
    // others.
    std::vector<std::string> look(const std::string& directory) {
        std::set<std::string> entries;
        if (!disk.isDirectory(directory)) return {};
        for (const std::string& path : disk.paths()) {
            if (parentOf(path) == directory) entries.insert(path);
        }
        std::vector<std::string> gone;
        for (const std::string& path : items) {
            if (parentOf(path) == directory && !entries.contains(path)) gone.push_back(path);
        }
        for (const std::string& path : gone) forget(path);
        std::vector<std::string> known;
        for (const std::string& path : entries) {
            if (!disk.isDirectory(path)) forget(path); // with what was in a directory that was there
            const bool isNew = items.insert(path).second;
            if (!disk.isDirectory(path)) continue;
            if (isNew)
                enter(path);
            else
                known.push_back(path);
        }
        return known;
    }

    void forget(const std::string& path) {
        std::erase_if(items, [&](const std::string& each) { return isAtOrBelow(each, path); });
    }

    void rename(const std::string& path, const std::string& newPath) {
        std::set<std::string> moved{newPath};
        for (const std::string& each : items) {
            if (isAtOrBelow(each, path)) moved.insert(newPath + each.substr(path.size()));
        }
        forget(path);
        forget(newPath);
        items.insert(moved.begin(), moved.end());
        for (const std::string& each : moved) look(each);
    }

    const FakeDisk& disk;
};

class Game {
public:
    Game(std::uint64_t seed, bool losesEvents) : isLossy(losesEvents), random(seed) {
        for (const char* path : {"/w", "/out", "/w/a", "/w/a/b", "/w/c", "/w/c/a"}) disk.makeDirectory(path);
        watcher.setRoots({"/w"});
        settle();
        keeper.enter("/w");
        look();
        disk.beforeEachCall = [this] {
            disk.time += microseconds(random() % 50);
            if (isRough && random() % 12 == 0) operate();
        };
    }

    void playRound() {
        isRough = random() % 3 != 0;
        for (std::size_t steps = 5 + random() % 30; steps > 0; --steps) {
            const auto choice = random() % 10;
            if (choice < 5)
                operate();
            else if (choice < 8)
                deliver(random() % 6);
            else
                pass(milliseconds(random() % 8));
        }
        isRough = false;
        settle();
    }

    testing::AssertionResult isRight() {
        std::set<std::string> present;
        std::string unwatched;
        for (const std::string& path : disk.paths()) {
            if (!isAtOrBelow(path, "/w")) continue;
            present.insert(path);
            if (disk.isDirectory(path) && !disk.isWatched(path)) unwatched += " " + path;
        }
        if (keeper.items == present && unwatched.empty()) return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << "on disk " << testing::PrintToString(present) << "\nbelieved " << testing::PrintToString(keeper.items)
               << "\nunwatched" << unwatched << "\nstory" << story;
    }

    std::string story;

private:
    void note(const std::string& text) { story += "\n  " + text; }

    std::string any(const std::string& top, bool directoriesOnly) {
        std::vector<std::string> candidates;
        for (const std::string& path : disk.paths()) {
            if (isAtOrBelow(path, top) && (!directoriesOnly || disk.isDirectory(path))) candidates.push_back(path);
        }
        return candidates[random() % candidates.size()];
    }
    std::string anyTop() { return random() % 6 == 0 ? "/out" : "/w"; }
    bool hasEntries(const std::string& path) const {
        const auto all = disk.paths();
        const auto next = all.upper_bound(path + "/");
        return next != all.end() && isAtOrBelow(*next, path);
    }

    void operate() {
        const std::string item = any(anyTop(), false);
        const std::string place = any(anyTop(), true) + "/" + std::string(1, static_cast<char>('a' + random() % 4));
        const bool isTop = item == "/w" || item == "/out";
        const auto choice = random() % 10;
        if (choice < 2) {
            if (disk.exists(place)) return;
            note("mkdir " + place);
            disk.makeDirectory(place);
        } else if (choice < 4) {
            if (disk.isDirectory(place)) return;
            note("write " + place);
            if (!disk.exists(place)) disk.createFile(place);
            disk.writeFile(place);
            if (random() % 4 != 0) disk.closeFile(place);
        } else if (choice < 5) {
            if (isTop) return;
            note("rm " + item);
            disk.remove(item);
        } else if (choice < 9) {
            if (isTop || isAtOrBelow(place, item)) return;
            if (disk.exists(place) && (disk.isDirectory(place) != disk.isDirectory(item) || hasEntries(place))) return;
            note("mv " + item + " " + place);
            disk.move(item, place);
        } else {
            if (isTop || !disk.exists(place) || isAtOrBelow(place, item) || isAtOrBelow(item, place)) return;
            note("exchange " + item + " " + place);
            disk.exchange(item, place);
        }
    }

    // Hands over some of the events, all of them if there are fewer.
    void deliver(std::size_t count) {
        if (isLossy && random() % 12 == 0) {
            note("loss");
            unread.clear();
            disk.loseBlock();
        }
        unread += disk.takeBlock();
        std::size_t size = 0;
        for (; count > 0 && size < unread.size(); --count) {
            std::uint32_t nameSize = 0;
            std::memcpy(&nameSize, unread.data() + size + 12, sizeof nameSize);
            size += 16 + nameSize;
        }
        const std::string block = unread.substr(0, size);
        unread.erase(0, size);
        watcher.handleBlock(block);
    }

    void pass(std::chrono::nanoseconds time) {
        watcher.crawl(microseconds(random() % 200));
        disk.time += time;
        const EventStreamBatch batch = watcher.advance();
        if (batch.empty()) return;
        for (const std::string& telling : told(batch)) note("told " + telling);
        keeper.apply(batch);
        look();
    }

    void look() {
        EventStreamInterest interest;
        for (const std::string& path : keeper.items) {
            if (disk.isDirectory(path)) interest.directoryPaths.push_back(path);
        }
        watcher.setInterest(interest);
    }

    void settle() {
        for (const WatchTime end = disk.time + seconds(12); disk.time < end;) {
            deliver(1'000'000);
            watcher.crawl(seconds(1));
            pass(milliseconds(3));
            const auto now = watcher.statistics();
            if (now.pendingNames > 0 || now.waiting > 0) continue;
            disk.time = std::max(disk.time, *watcher.nextDeadline());
        }
    }

    const bool isLossy;
    std::mt19937_64 random;
    bool isRough = false;
    FakeDisk disk;
    TreeWatcher watcher{disk, {.quiet = milliseconds(1), .hold = milliseconds(6), .cap = milliseconds(14)}};
    Keeper keeper{disk};
    std::string unread;
};

void play(std::uint64_t seed, bool losesEvents) {
    Game game(seed, losesEvents);
    for (int round = 0; round < 6; ++round) {
        game.story.clear();
        game.playRound();
        ASSERT_TRUE(game.isRight()) << "seed " << seed << ", round " << round;
    }
}

void playAll(bool losesEvents) {
    const char* given = std::getenv("WATCH_SIMULATION_SEED");
    if (given) return play(std::strtoull(given, nullptr, 10), losesEvents);
    const char* count = std::getenv("WATCH_SIMULATION_GAMES");
    const std::uint64_t start = std::random_device{}();
    for (std::uint64_t i = 0, end = count ? std::strtoull(count, nullptr, 10) : 300; i < end; ++i) {
        play(start + i, losesEvents);
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST(SimulatedConvergence, WhateverHappensInBetween) {
    playAll(false);
}

TEST(SimulatedConvergence, WhenEventsAreLost) {
    playAll(true);
}

} // namespace
