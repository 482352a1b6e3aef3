#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/watch/TreeWatcher.h"
#include "tests/platform/watch/FakeDisk.h"

// Learns of changes by notifications alone. Does what is expected of whoever loads directories: looks into one that
// appears or is renamed, and again into one that is named without flags.
class Keeper {
public:
    explicit Keeper(const FakeDisk& fakeDisk) : disk(fakeDisk) {}

    // Takes the directory, if it is there, for all that is in it.
    void begin(const std::string& directory);
    // Looks through the directory and all below it.
    void enter(const std::string& directory);
    void apply(const EventStreamBatch& batch);

    std::set<std::string> paths() const;
    bool knows(const std::string& path) const { return items.contains(path); }
    void forgetIf(const std::function<bool(const std::string&, ItemIdentity)>& isForgotten);

private:
    // Takes what is there for what is to be kept. False when that is known already.
    bool take(const std::string& path);
    // Takes the entries of the directory for all that is in it. Enters new ones; returns the directories among the
    // others.
    std::vector<std::string> look(const std::string& directory);
    void forget(const std::string& path);
    void rename(const std::string& path, const std::string& newPath);

    const FakeDisk& disk;
    std::map<std::string, ItemIdentity> items{};
    std::set<std::string> begun{};
};

// Has documents open, and looks at each that the notifications, or he himself, come near to. A document follows its
// file where that is told to be renamed and is there.
class Reader {
public:
    explicit Reader(const FakeDisk& fakeDisk) : disk(fakeDisk) {}

    void open(const std::string& path) { seenByPath[path] = disk.stateOf(path); }
    void close(const std::string& path) { seenByPath.erase(path); }
    void lookAt(const std::string& path) { seenByPath.at(path) = disk.stateOf(path); }
    void apply(const EventStreamBatch& batch);

    std::vector<std::string> paths() const;
    std::string difference(const std::string& path) const;

private:
    void follow(const std::string& path, const std::string& newPath);

    const FakeDisk& disk;
    std::map<std::string, std::string> seenByPath{};
};

// A watcher of a disk on which things happen before every call that it makes, with events that arrive late, and events
// that never do. All of it follows from the choices, numbers of which only the rest of a division by something small
// counts.
class WatchGame {
public:
    struct Troubles {
        bool lostEvents = false;
        bool mounts = false;
        bool fewWatches = false;
    };

    WatchGame(std::function<std::uint64_t()> choices, Troubles permitted);

    void playRound();

    // What is wrong with the keeper's picture now that everything has been told, and how it came to that; empty when
    // all is right.
    std::string complaint() const;

    // Hands the watcher a block that no kernel wrote.
    void deceive(std::string_view block) { watcher.handleBlock(block, disk.time); }

    // Ends the watching; what is still watched then was forgotten.
    std::size_t watchesLeftBehind();

private:
    void note(const std::string& text) { story += "\n  " + text; }
    std::string any(const std::string& top, bool directoriesOnly);
    std::string anyTop() { return choose() % 6 == 0 ? "/out" : "/w"; }
    bool hasEntries(const std::string& path) const;
    void operate();
    void changeMounts();
    void changeWatchLimit();
    void deliver(std::size_t count);
    void pass(std::chrono::nanoseconds time);
    void changeRoots();
    bool isWithinRoots(const std::string& path, const std::function<bool(const std::string&)>& counts) const;
    void look();
    void read();
    void settle();

    const Troubles troubles;
    const std::function<std::uint64_t()> choose;
    bool isRough = false;
    bool haveMountsChanged = false; // and the watcher does not know
    std::set<std::string> roots{};
    bool hasKeeper = true; // otherwise nobody is interested in more than the documents
    FakeDisk disk{};
    TreeWatcher watcher;
    Keeper keeper{disk};
    Reader reader{disk};
    std::set<std::string> shown{}; // directories of interest
    std::string unread{};
    std::string story{};
};
