#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "platform/linux/watch/TreeWatcher.h"
#include "tests/platform/watch/FakeDisk.h"
#include "tests/platform/watch/Told.h"

// What real programs do to a file, recorded once from the kernel, replayed as fast as they did it and on slower disks.
// A recording begins with what becomes of the open document /w/a.txt: it stays where it is and is only modified, it
// follows its file, it goes, or, where there is no right or wrong, it is free.

namespace {

using std::chrono::microseconds;

struct Step {
    microseconds time{};
    std::string operation{};
    std::vector<std::string> paths{};
};

struct Recording {
    std::string fate{};
    std::vector<Step> steps{};
};

Recording readRecording(const std::filesystem::path& file) {
    Recording recording;
    std::ifstream text(file);
    std::string line;
    std::getline(text, line);
    recording.fate = line.substr(std::string("document ").size());
    while (std::getline(text, line)) {
        std::istringstream words(line);
        Step step;
        std::int64_t time = 0;
        words >> time >> step.operation;
        step.time = microseconds(time);
        for (std::string name; words >> name;) step.paths.push_back("/w/" + name);
        recording.steps.push_back(std::move(step));
    }
    return recording;
}

// Waits of the user, half a second and more, stay as they are.
std::vector<Step> stretched(std::vector<Step> steps, int factor) {
    microseconds former{};
    microseconds time{};
    for (Step& step : steps) {
        const microseconds gap = step.time - former;
        former = step.time;
        time += gap < std::chrono::milliseconds(50) ? gap * factor : gap;
        step.time = time;
    }
    return steps;
}

// The watcher over a disk with the files that were there before, and what it told.
class Replay {
public:
    Replay() : watcher(disk) {
        for (const char* path : {"/w", "/w/d"}) disk.makeDirectory(path);
        for (const char* path : {"/w/a.txt", "/w/b.txt", "/w/d/n.txt"}) {
            disk.createFile(path);
            disk.closeFile(path);
        }
        watcher.setInterest({.documentPaths = {"/w/a.txt"}});
        watcher.setRoots({"/w"});
        watcher.crawl(std::chrono::seconds(1));
        disk.takeBlock();
        runUntil(disk.time + std::chrono::seconds(1));
        tellings.clear();
        start = disk.time;
    }

    void play(const std::vector<Step>& steps) {
        for (const Step& step : steps) {
            runUntil(start + step.time);
            apply(step);
            watcher.handleBlock(disk.takeBlock(), disk.time);
            watcher.crawl(std::chrono::seconds(1));
        }
        runUntil(disk.time + std::chrono::seconds(1));
    }

    std::vector<std::string> tellings{};
    bool wasHalfWritten = false; // when it was told as modified

private:
    void runUntil(WatchTime end) {
        while (watcher.nextDeadline() && *watcher.nextDeadline() <= end) {
            disk.time = std::max(disk.time, *watcher.nextDeadline());
            for (const std::string& telling : told(watcher.advance())) {
                wasHalfWritten |= telling == "modified /w/a.txt" && disk.isHalfWritten("/w/a.txt");
                if (!telling.starts_with("look ")) tellings.push_back(telling);
            }
        }
        disk.time = end;
    }

    void apply(const Step& step) {
        using Apply = std::function<void(FakeDisk&, const std::vector<std::string>&)>;
        using Paths = const std::vector<std::string>&;
        static const std::map<std::string, Apply> operations{
            {"create", [](FakeDisk& to, Paths at) { to.createFile(at[0]); }},
            {"write", [](FakeDisk& to, Paths at) { to.writeFile(at[0]); }},
            {"close", [](FakeDisk& to, Paths at) { to.closeFile(at[0]); }},
            {"attributes", [](FakeDisk& to, Paths at) { to.changeAttributes(at[0]); }},
            {"delete", [](FakeDisk& to, Paths at) { to.remove(at[0]); }},
            {"mkdir", [](FakeDisk& to, Paths at) { to.makeDirectory(at[0]); }},
            {"arrive", [](FakeDisk& to, Paths at) { to.arrive(at[0]); }},
            {"leave", [](FakeDisk& to, Paths at) { to.leave(at[0]); }},
            {"move", [](FakeDisk& to, Paths at) { to.move(at[0], at[1]); }},
            {"exchange", [](FakeDisk& to, Paths at) { to.exchange(at[0], at[1]); }},
            {"link", [](FakeDisk& to, Paths at) { to.link(at[0], at[1]); }},
        };
        operations.at(step.operation)(disk, step.paths);
    }

    FakeDisk disk;
    TreeWatcher watcher;
    WatchTime start{};
};

// The path of the document as somebody has it who follows what is told; empty once it is gone.
std::string followed(const std::vector<std::string>& tellings) {
    std::string path = "/w/a.txt";
    for (const std::string& telling : tellings) {
        if (telling == "removed " + path) return "";
        for (const std::string kind : {"renamed ", "renamed dir "}) {
            const std::size_t arrow = telling.find(" -> ");
            if (!telling.starts_with(kind) || arrow == std::string::npos) continue;
            const std::string from = telling.substr(kind.size(), arrow - kind.size());
            const std::string to = telling.substr(arrow + 4);
            if (path == from || path.starts_with(from + "/")) path = to + path.substr(from.size());
        }
    }
    return path;
}

std::string complaint(const std::string& fate, const Replay& replay) {
    const auto& tellings = replay.tellings;
    const std::string path = followed(tellings);
    if (fate == "free") return "";
    if (replay.wasHalfWritten) return "shown half written";
    if (fate == "goes") return path.empty() ? "" : "is still at " + path;
    if (fate.starts_with("follows ")) return path == "/w/" + fate.substr(8) ? "" : "ends at '" + path + "'";
    for (const std::string& telling : tellings) {
        for (const char* wrong : {"removed /w/a.txt", "created /w/a.txt", "renamed /w/a.txt -> "}) {
            if (telling == wrong || telling.starts_with(std::string("renamed /w/a.txt -> "))) return telling;
        }
    }
    const bool isModified = std::ranges::find(tellings, "modified /w/a.txt") != tellings.end();
    return isModified ? "" : "is not modified";
}

TEST(Recordings, LeaveTheDocumentWhereItBelongs) {
    std::vector<std::string> complaints;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(SOURCE_FOLDER "/tests/platform/watch/recordings")) {
        const Recording recording = readRecording(entry.path());
        ++count;
        for (const int factor : {1, 10, 100}) {
            Replay replay;
            replay.play(stretched(recording.steps, factor));
            const std::string wrong = complaint(recording.fate, replay);
            if (wrong.empty()) continue;
            complaints.push_back(entry.path().stem().string() + " x" + std::to_string(factor) + ": " + wrong);
        }
    }
    EXPECT_EQ(count, 49);
    // Between truncating and writing the program waits for longer than anybody would hold back a change.
    EXPECT_EQ(complaints, std::vector<std::string>{"inplace-trunc-write x100: shown half written"});
}

TEST(Recordings, AreToldAsWhatTheyMean) {
    const std::map<std::string, std::vector<std::string>> meanings{
        {"append", {"modified /w/a.txt"}},
        {"vim-default", {"modified /w/a.txt"}},
        {"vim-backup-kept", {"created /w/a.txt~", "modified /w/a.txt"}},
        {"emacs-first-save", {"created /w/a.txt~", "modified /w/a.txt"}},
        {"sed-i", {"modified /w/a.txt"}},
        {"sed-i-bak", {"created /w/a.txt.bak", "modified /w/a.txt"}},
        {"git-checkout-branch", {"modified /w/a.txt", "modified /w/b.txt"}},
        {"gio-save-backup", {"created /w/a.txt~", "modified /w/a.txt"}},
        {"exchange-unlink", {"modified /w/a.txt"}},
        {"safe-write-jb", {"modified /w/a.txt"}},
        {"atomic-slow-tmp", {"created /w/a.txt.tmp", "removed /w/a.txt.tmp", "modified /w/a.txt"}},
        {"unlink-create-other", {"removed /w/a.txt", "created /w/z.txt"}},
        {"user-rename", {"renamed /w/a.txt -> /w/z.txt"}},
        {"user-rename-and-back", {}},
        {"user-rename-then-create-fast", {"created /w/z.txt", "modified /w/a.txt"}},
        {"user-rename-then-create-slow", {"renamed /w/a.txt -> /w/z.txt", "created /w/a.txt"}},
        {"user-mv-over", {"renamed /w/a.txt -> /w/b.txt", "modified /w/b.txt"}},
        {"user-mv-dir", {"renamed /w/a.txt -> /w/q/a.txt", "created dir /w/q", "renamed dir /w/q -> /w/r"}},
        {"user-swap", {"modified /w/a.txt", "modified /w/b.txt"}},
        {"move-out", {"removed /w/a.txt"}},
    };
    for (const auto& [name, meaning] : meanings) {
        Replay replay;
        replay.play(readRecording(SOURCE_FOLDER "/tests/platform/watch/recordings/" + name + ".txt").steps);
        EXPECT_EQ(replay.tellings, meaning) << name;
    }
}

} // namespace
