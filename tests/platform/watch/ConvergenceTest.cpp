#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <set>

#include "tests/platform/watch/WatchedTree.h"

// A picture of the tree that is kept by the notifications alone equals the tree, whatever happens to it.

namespace {

namespace fs = std::filesystem;

std::vector<std::string> itemsBelow(const std::string& path) {
    std::vector<std::string> items;
    std::error_code error;
    for (fs::recursive_directory_iterator each(path, error), end; !error && each != end; each.increment(error))
        items.push_back(each->path().string());
    std::ranges::sort(items);
    return items;
}

std::vector<std::string> difference(const std::vector<std::string>& left, const std::vector<std::string>& right) {
    std::vector<std::string> result;
    std::ranges::set_difference(left, right, std::back_inserter(result));
    return result;
}

// Does to the picture what its keeper would do: a directory that appears is looked into. If it has been carried on with
// a directory above it, before that is told, there is nothing to see yet at the place where it is told to be.
class Mirror {
public:
    explicit Mirror(const std::string& root) { enter(root); }

    void apply(const EventStreamBatch& batch) {
        for (std::size_t i = 0; i < batch.size(); ++i) {
            const std::string& path = *batch[i].path;
            if (batch[i].flags & EventStreamFlag::rootChanged) {
                removeAtOrBelow(path);
                enter(path);
            } else if (batch[i].flags & EventStreamFlag::itemRenamed) {
                rename(path, *batch.at(i + 1).path);
                ++i;
            } else if (batch[i].flags & EventStreamFlag::itemRemoved) {
                removeAtOrBelow(path);
            } else if (batch[i].flags & EventStreamFlag::itemCreated) {
                items.insert(path);
                if (batch[i].flags & EventStreamFlag::itemIsDir) unseen.insert(path);
                lookAtUnseen();
            }
        }
    }

    std::vector<std::string> contents() const { return {items.begin(), items.end()}; }

private:
    void enter(const std::string& path) {
        for (std::string& item : itemsBelow(path)) items.insert(std::move(item));
    }

    static std::vector<std::string> takeAtOrBelow(std::set<std::string>& from, const std::string& path) {
        std::vector<std::string> taken;
        if (from.erase(path) > 0) taken.push_back(path);
        const auto begin = from.lower_bound(path + "/");
        auto end = begin;
        while (end != from.end() && end->starts_with(path + "/")) taken.push_back(*end++);
        from.erase(begin, end);
        return taken;
    }

    void removeAtOrBelow(const std::string& path) {
        takeAtOrBelow(items, path);
        takeAtOrBelow(unseen, path);
    }

    void rename(const std::string& path, const std::string& newPath) {
        const auto moved = takeAtOrBelow(items, path);
        if (moved.empty() || moved.front() != path) {
            items.insert(newPath);
            unseen.insert(newPath);
        }
        for (const std::string& item : moved) items.insert(newPath + item.substr(path.size()));
        for (const std::string& item : takeAtOrBelow(unseen, path)) unseen.insert(newPath + item.substr(path.size()));
        lookAtUnseen();
    }

    void lookAtUnseen() {
        std::erase_if(unseen, [&](const std::string& path) {
            if (!fs::exists(fs::symlink_status(path))) return false;
            enter(path);
            return true;
        });
    }

    std::set<std::string> items;
    std::set<std::string> unseen;
};

// One random thing that a program might do in the tree, or between it and a place outside. What fails is no harm.
class Vandal {
public:
    Vandal(std::string treePath, std::string outsidePath, std::uint64_t seed)
        : tree(std::move(treePath)), outside(std::move(outsidePath)), random(seed) {}

    void act(std::vector<std::string>& log) {
        const std::string item = any(tree);
        const std::string place = anyDirectory(tree) + "/" + name();
        std::error_code error;
        const auto note = [&](const std::string& what) { log.push_back(what + (error ? " (failed)" : "")); };
        switch (number(12)) {
            case 0:
                write(place, "x"), note("write " + place);
                break;
            case 1:
                fs::create_directory(place, error), note("mkdir " + place);
                break;
            case 2:
                fs::create_directories(place + "/a/b", error), write(place + "/a/b/f", "x");
                note("mkdir -p " + place + "/a/b");
                break;
            case 3:
                fs::remove_all(item, error), note("rm " + item);
                break;
            case 4:
            case 5:
            case 6:
                fs::rename(item, place, error), note("mv " + item + " " + place);
                break;
            case 7:
                fs::rename(item, outside + "/" + name(), error), note("mv out " + item);
                break;
            case 8: {
                const std::string from = any(outside);
                fs::rename(from, place, error), note("mv " + from + " " + place);
                break;
            }
            case 9:
                append(item), note("append " + item);
                break;
            case 10:
                write(place + ".tmp", "new"), fs::rename(place + ".tmp", item, error), note("save " + item);
                break;
            case 11:
                if (!place.starts_with(item + "/") && itemsBelow(item).size() < 60)
                    fs::copy(item, place, fs::copy_options::recursive, error);
                note("cp " + item + " " + place);
                break;
            case 12:
                fs::rename(item, item + "~", error), write(item, "y"), note("backup " + item);
                break;
        }
    }

    std::size_t number(std::size_t last) { return std::uniform_int_distribution<std::size_t>(0, last)(random); }

private:
    std::string any(const std::string& where) {
        const auto items = itemsBelow(where);
        return items.empty() ? where + "/nothing" : items[number(items.size() - 1)];
    }
    std::string anyDirectory(const std::string& where) {
        std::vector<std::string> directories{where};
        for (const std::string& item : itemsBelow(where)) {
            if (fs::is_directory(fs::symlink_status(item))) directories.push_back(item);
        }
        return directories[number(directories.size() - 1)];
    }
    std::string name() {
        static const std::vector<std::string> endings{"", ".t", "~"};
        return std::string(1, static_cast<char>('a' + number(3))) + endings[number(2)];
    }
    static void write(const std::string& path, const char* text) { std::ofstream(path) << text; }
    static void append(const std::string& path) {
        if (fs::is_regular_file(path)) std::ofstream(path, std::ios::app) << "more";
    }

    std::string tree;
    std::string outside;
    std::mt19937_64 random;
};

std::chrono::seconds duration() {
    const char* seconds = std::getenv("WATCH_CONVERGENCE_SECONDS");
    return std::chrono::seconds(seconds ? std::atoi(seconds) : 4);
}

std::uint64_t seed() {
    const char* given = std::getenv("WATCH_CONVERGENCE_SEED");
    return given ? std::strtoull(given, nullptr, 10) : std::random_device{}();
}

// Short waits make for many rounds, and for windows that close in the middle of things.
void converge(DeliveryPolicy policy, std::size_t byteLimit, std::chrono::milliseconds time, std::uint64_t startSeed) {
    WatchedTree watched(std::make_unique<LinuxWatchSystem>(), byteLimit, policy);
    const std::string tree = watched.path("w");
    for (const char* name : {"w/a/b/c", "w/c/a", "w/b/b/b", "out"}) fs::create_directories(watched.path(name));
    watched.setInterest({.directoryPaths = {tree, tree + "/a"}});
    watched.watch({"w"});
    Mirror mirror(tree);
    Vandal vandal(tree, watched.path("out"), startSeed);
    const auto end = std::chrono::steady_clock::now() + time;
    int rounds = 0;
    std::size_t operations = 0;
    for (; std::chrono::steady_clock::now() < end; ++rounds) {
        std::vector<std::string> log;
        for (std::size_t count = 1 + vandal.number(11); count > 0; --count, ++operations) vandal.act(log);
        EventStreamBatch told;
        const auto isEqual = [&] {
            const EventStreamBatch batch = watched.takeBatches();
            told.insert(told.end(), batch.begin(), batch.end());
            mirror.apply(batch);
            return mirror.contents() == itemsBelow(tree);
        };
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        // Until all is told: a keeper who looks around sees things that are not told yet, and cannot be told that they
        // are gone if they go before.
        while ((!isEqual() || !watched.isSettled()) && std::chrono::steady_clock::now() < limit)
            watched.waitFor(std::chrono::milliseconds(5), [&] { return watched.hasBatches(); });
        ASSERT_TRUE(isEqual()) << "missing " << testing::PrintToString(difference(itemsBelow(tree), mirror.contents()))
                               << "\n"
                               << "too many " << testing::PrintToString(difference(mirror.contents(), itemsBelow(tree)))
                               << "\n"
                               << "seed " << startSeed << ", round " << rounds << "\n"
                               << testing::PrintToString(log) << "\n"
                               << testing::PrintToString(::told(told));
    }
    std::cout << "seed " << startSeed << ": " << rounds << " rounds, " << operations << " operations\n";
}

TEST(Convergence, WithTheUsualWaits) {
    converge({}, InotifyReader::usualLimit, duration() / 2, seed());
}

TEST(Convergence, WithShortWaits) {
    using std::chrono::milliseconds;
    const DeliveryPolicy policy{.quiet = milliseconds(1), .hold = milliseconds(4), .cap = milliseconds(7)};
    converge(policy, InotifyReader::usualLimit, duration(), seed());
}

TEST(Convergence, WhenEventsAreLost) {
    using std::chrono::milliseconds;
    const DeliveryPolicy policy{.quiet = milliseconds(1), .hold = milliseconds(4), .cap = milliseconds(7)};
    converge(policy, 256, duration(), seed());
}

} // namespace
