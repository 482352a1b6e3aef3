#include "watch/WorkspaceWatchStream.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <thread>

#include "platform/SerialQueue.h"
#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/FakeEventStream.h"
#include "tests/support/Files.h"
#include "tests/support/HandRunQueue.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"

namespace {

using namespace std::chrono_literals;
using namespace EventStreamFlag;
using Lines = std::vector<std::string>;

class CollectedText final : public Output {
public:
    void write(std::string_view bytes) override { text += bytes; }

    std::string text;
};

// A watch stream over a real directory; paths in the tables are relative to it.
class Watching {
public:
    explicit Watching(std::string debugValue = "") {
        if (!debugValue.empty()) {
            environment.variables["MARBLEFERN_EDITOR_DOCUMENT_DAEMON_DEBUG_WATCH_EVENTS"] = std::move(debugValue);
        }
        stream = std::make_shared<WorkspaceWatchStream>(
            WatchStreamPlatform{source, queue, clock, fileManager, environment, errorOutput},
            [this](std::vector<WorkspaceWatchEvent> events) {
                EXPECT_TRUE(queue.isCurrent());
                EXPECT_FALSE(events.empty());
                for (const auto& event : events) lines.push_back(line(event));
            });
    }

    void watch(const Lines& names, const EventStreamInterest& interest = {}) {
        Lines paths;
        for (const std::string& name : names) paths.push_back(directory.path(name));
        stream->updateWatchedRoots(paths, interest);
    }

    static EventStreamNotification notification(std::string path, std::uint32_t flags, std::uint64_t fileNumber) {
        EventStreamNotification result{.path = std::move(path), .flags = flags};
        if (fileNumber != 0) result.fileID = fileNumber;
        return result;
    }

    void send(const std::string& name, std::uint32_t flags, std::uint64_t fileNumber = 0) {
        source.send({notification(directory.path(name), flags, fileNumber)});
    }

    void advance(std::chrono::nanoseconds time) {
        clock.now += time;
        queue.advance(time);
    }

    Lines take() { return std::exchange(lines, {}); }

    // "root: kind path > related path #hint d" (or f for a file, l for a link), the last three only where they are
    // present.
    std::string line(const WorkspaceWatchEvent& event) const {
        std::string text =
            relative(event.rootPath) + ": " + std::string(nameOf(event.kind)) + ' ' + relative(event.path);
        if (event.relatedPath) text += " > " + relative(*event.relatedPath);
        if (event.nodeIDHint) text += " #" + *event.nodeIDHint;
        if (event.isDirectory) text += *event.isDirectory ? " d" : event.isRegularFile ? " f" : " l";
        return text;
    }
    std::string relative(const std::string& path) const {
        return path.starts_with(directory.path() + '/') ? path.substr(directory.path().size() + 1) : path;
    }

    const TemporaryDirectory directory;
    LinuxEnvironment realEnvironment;
    VariableEnvironment environment;
    LinuxFileManager fileManager{realEnvironment};
    HandRunQueue queue;
    HandMovedClock clock;
    FakeEventStreamSource source;
    CollectedText errorOutput;
    std::shared_ptr<WorkspaceWatchStream> stream;
    Lines lines;
};

// Each step of a story is one word and its arguments:
//   have NAME..     makes files                     roots NAME..          changes the watched roots
//   lose NAME..     removes them                    wait MILLISECONDS     lets time pass
//                                                   late MILLISECONDS     the same, but no timer runs
//   send NAME FLAGS NUMBER [NAME FLAGS NUMBER..]    delivers one batch; FLAGS in hexadecimal, NUMBER 0 for no identity
void tell(Watching& watching, const std::string& story) {
    std::istringstream steps(story);
    for (std::string step; std::getline(steps, step, ';');) {
        std::istringstream words(step);
        std::string verb;
        words >> verb;
        Lines names;
        EventStreamBatch batch;
        for (std::string name; words >> name;) {
            names.push_back(name);
            if (verb != "send") continue;
            std::uint32_t flags = 0;
            std::uint64_t number = 0;
            words >> std::hex >> flags >> std::dec >> number;
            batch.push_back(Watching::notification(watching.directory.path(name), flags, number));
        }
        for (const std::string& name : names) {
            if (verb == "have") writeFile(watching.directory.path(name), "");
            if (verb == "lose") std::filesystem::remove_all(watching.directory.path(name));
        }
        if (verb == "roots") watching.watch(names);
        if (verb == "late") watching.clock.now += std::chrono::milliseconds(std::stoi(names.at(0)));
        if (verb == "wait") watching.advance(std::chrono::milliseconds(std::stoi(names.at(0))));
        if (verb == "send") watching.source.send(std::move(batch));
    }
}

struct Story {
    const char* name;
    std::string story;
    Lines told;
};

void check(const std::string& beginning, const std::vector<Story>& stories) {
    for (const Story& row : stories) {
        Watching watching;
        tell(watching, beginning + row.story);
        EXPECT_EQ(watching.take(), row.told) << row.name;
    }
}

TEST(WorkspaceWatchStream, NotificationsBecomeEvents) {
    const std::vector<Story> stories = {
        {"no flag", "send w/d 0 0", {"w: changeInDirectory w/d"}},
        {"a kind each",
         "send w/a 10100 5 w/a 11000 5 w/a 14000 5 w/b 410000 0",
         {"w: itemCreated w/a #number:5 f", "w: itemModified w/a #number:5 f", "w: itemChangedOwner w/a #number:5 f",
          "w: itemCloned w/b f"}},
        {"removal", "send w/a 20200 0", {"w: itemRemoved w/a d"}},
        {"several kinds in one, the rename held back",
         "send w/a 11900 5",
         {"w: itemCreated w/a #number:5 f", "w: itemModified w/a #number:5 f"}},
        {"link", "send w/a 40100 0", {"w: itemCreated w/a l"}},
        {"link wins over file", "send w/a 50100 0", {"w: itemCreated w/a l"}},
        {"directory wins over file", "send w/a 30100 0", {"w: itemCreated w/a d"}},
        {"no type", "send w/a 100 0", {"w: itemCreated w/a"}},
        {"metadata alone", "send w/a 10400 5", {}},
        {"rescans, mounts, attributes and unknown bits", "send w/a 1 0 w/a 6 0 w/a c0 0 w/a 8000 0 w/a 80000000 0", {}},
        {"root", "send w 20 0", {"w: rootChanged w"}},
        {"slash at the end", "send w/d// 20100 0", {"w: itemCreated w/d d"}},
        {"not standardised", "send w/./x/../a 10100 0", {"w: itemCreated w/a f"}},
        {"outside every root", "send x/a 10100 0 wide/a 10100 0", {}},
        {"in the innermost root",
         "have w/sub/x; roots w w/sub; send w/sub/x 100 0 w/subway/x 100 0 w/sub 100 0",
         {"w/sub: itemCreated w/sub/x", "w: itemCreated w/subway/x", "w/sub: itemCreated w/sub"}},
        {"rename without identity", "send w/a 10800 0", {"w: itemRenamed w/a f"}},
        {"a root that is missed before the stream tells",
         "have v/x; roots v w; lose w; roots v w; wait 0; roots v w; wait 0",
         {"w: rootChanged w"}},
    };
    check("have w/x wide/x; roots w; ", stories);
}

TEST(WorkspaceWatchStream, HalvesOfARenameArePaired) {
    const Lines forward{"w: itemRenamed w/z > w/a #number:5 f"};
    const Lines byName{"w: itemRenamed w/a > w/z #number:5 f"};
    std::vector<Story> stories = {
        {"one batch", "have w/a; send w/z 10800 5 w/a 10800 5", forward},
        {"the new half first", "have w/a; send w/a 10800 5 w/z 10800 5", forward},
        {"two batches", "have w/a; send w/z 10800 5; wait 500; send w/a 10800 5", forward},
        {"just in time", "have w/a; send w/z 10800 5; wait 999; send w/a 10800 5", forward},
        {"both exist: by name", "have w/a w/z; send w/z 10800 5 w/a 10800 5", byName},
        {"neither exists: by name", "send w/z 10800 5 w/a 10800 5", byName},
        {"same path twice", "send w/a 10800 5 w/a 10800 5", {"w: itemRenamed w/a > w/a #number:5 f"}},
        {"type only of the second half",
         "have w/b; send w/a 800 5 w/b 20800 5",
         {"w: itemRenamed w/a > w/b #number:5 d"}},
        {"two renames woven into each other",
         "have w/b w/d; send w/a 10800 5 w/c 10800 6 w/d 10800 6 w/b 10800 5",
         {"w: itemRenamed w/c > w/d #number:6 f", "w: itemRenamed w/a > w/b #number:5 f"}},
        {"a third half waits again",
         "have w/a; send w/z 10800 5 w/a 10800 5 w/y 10800 5; wait 1000",
         {forward[0], "w: itemRenamed w/y #number:5 f"}},
        {"a partner in another root does not count",
         "send w/a 10800 5 v/a 10800 5; wait 1000",
         {"v: itemRenamed v/a #number:5 f", "w: itemRenamed w/a #number:5 f"}},
        {"in the innermost root",
         "have w/in/b; send w/in/a 10800 5 w/in/b 10800 5",
         {"w/in: itemRenamed w/in/a > w/in/b #number:5 f"}},
    };
    for (Story& row : stories) row.story += "; wait 10000"; // in which nothing is left to be told
    check("have w/in/x v/x; roots v w w/in; ", stories);
}

TEST(WorkspaceWatchStream, AHalfGoesOutAloneAfterASecond) {
    const Lines alone{"w: itemRenamed w/a #number:5 f"};
    const std::vector<Story> stories = {
        {"not before", "send w/a 10800 5; wait 999", {}},
        {"by its timer", "send w/a 10800 5; wait 1000", alone},
        {"each after its own second", "send w/a 10800 5; wait 600; send w/b 10800 6; wait 600", alone},
        {"discarded when the roots change", "send w/a 10800 5; roots w v; wait 5000", {}},
        {"kept when they do not", "send w/a 10800 5; roots w w; wait 1000", alone},
        {"before the batch that finds it expired",
         "send w/a 10800 5; late 1000; send w/b 10100 0 w/a 10800 5",
         {alone[0], "w: itemCreated w/b f"}},
    };
    check("have w/x v/x; roots w; ", stories);
}

TEST(WorkspaceWatchStream, NotEveryNotificationHasAPathAndAHint) {
    Watching watching;
    tell(watching, "have w/x; roots w");
    watching.source.send(
        {{.path = watching.directory.path("w/a"), .flags = itemModified, .fileID = OpaqueFileIdentifier{"thing"}},
         {.flags = itemModified}});
    EXPECT_EQ(watching.take(), Lines{"w: itemModified w/a"});
}

TEST(WorkspaceWatchStream, TheStreamFollowsTheRoots) {
    Watching watching;
    tell(watching, "have w/x w/sub/x v/x file");
    const struct {
        const char* name;
        Lines roots;
        Lines watched;
        Lines awaited;
        Lines log;
    } steps[] = {
        {"none", {}, {}, {}, {"interest"}},
        {"one, given in two ways", {"w/", "w"}, {"w"}, {}, {"start"}},
        {"the same", {"./w"}, {"w"}, {}, {}},
        {"nested", {"w", "w/sub"}, {"w", "w/sub"}, {}, {"stop", "start"}},
        {"another order", {"w/sub", "w"}, {"w/sub", "w"}, {}, {"stop", "start"}},
        {"missing, and a file", {"w", "gone", "file"}, {"w"}, {"gone", "file"}, {"stop", "start"}},
        {"none again", {}, {"w"}, {}, {"stop"}},
    };
    for (const auto& step : steps) {
        watching.source.log.clear();
        watching.watch(step.roots);
        Lines watched;
        Lines awaited;
        for (const auto& path : watching.source.roots) watched.push_back(watching.relative(path));
        for (const auto& path : watching.source.awaitedPaths) awaited.push_back(watching.relative(path));
        EXPECT_EQ(watched, step.watched) << step.name;
        EXPECT_EQ(awaited, step.awaited) << step.name;
        EXPECT_EQ(watching.source.log, step.log) << step.name;
    }
    EXPECT_EQ(watching.source.latency, 100ms);
    EXPECT_FALSE(watching.source.isRunning());
}

TEST(WorkspaceWatchStream, InterestChangesWhileNoStreamWatchesTheOldRoots) {
    Watching watching;
    tell(watching, "have w/x v/x");
    watching.watch({"w"}, {.documentPaths = {"a"}});
    EXPECT_EQ(watching.source.log, (Lines{"interest", "start"}));
    watching.source.log.clear();
    watching.watch({"w"}, {.documentPaths = {"a"}});
    EXPECT_EQ(watching.source.log, Lines{});
    watching.watch({"w"}, {.documentPaths = {"b"}});
    EXPECT_EQ(watching.source.log, Lines{"interest"});
    watching.source.log.clear();
    watching.watch({"v"}, {.documentPaths = {"c"}});
    EXPECT_EQ(watching.source.log, (Lines{"stop", "interest", "start"}));
    EXPECT_EQ(watching.source.interest.documentPaths, Lines{"c"});
}

TEST(WorkspaceWatchStream, ARefusedStreamIsTriedAgainWithOtherRoots) {
    Watching watching;
    tell(watching, "have w/x v/x");
    watching.source.startsStreams = false;
    tell(watching, "roots w");
    EXPECT_FALSE(watching.source.isRunning());
    watching.source.startsStreams = true;
    tell(watching, "roots w");
    EXPECT_FALSE(watching.source.isRunning());
    watching.source.makesStreams = false;
    tell(watching, "roots v");
    EXPECT_FALSE(watching.source.isRunning());
    watching.source.makesStreams = true;
    tell(watching, "roots v w; send v/a 100 0");
    EXPECT_EQ(watching.take(), Lines{"v: itemCreated v/a"});
}

TEST(WorkspaceWatchStream, AMissingRootIsToldWhenItComes) {
    Watching watching;
    tell(watching, "have w/x; roots gone w late; have gone/x");
    watching.source.sendAppeared();
    EXPECT_EQ(watching.take(), Lines{"gone: changeInDirectory gone"});
    EXPECT_EQ(watching.source.awaitedPaths, Lines{watching.directory.path("late")});

    // It was there for a moment only.
    watching.source.sendAppeared();
    EXPECT_EQ(watching.take(), Lines{});
    EXPECT_EQ(watching.source.awaitedPaths, Lines{watching.directory.path("late")});
}

TEST(WorkspaceWatchStream, AMissingRootThatCameBeforeTheRootsChangedIsToldAllTheSame) {
    Watching watching;
    tell(watching, "have w/x; roots gone gone/a w; have gone/a/x; roots gone w; wait 0");
    EXPECT_EQ(watching.take(), (Lines{"gone: changeInDirectory gone", "gone/a: changeInDirectory gone/a"}));
    tell(watching, "roots w; wait 0");
    EXPECT_EQ(watching.take(), Lines{});
}

TEST(WorkspaceWatchStream, NothingComesAfterCancelling) {
    Watching watching;
    tell(watching, "have w/x; roots w gone; send w/a 10800 5");
    watching.stream->cancel();
    EXPECT_FALSE(watching.source.isRunning());
    EXPECT_EQ(watching.source.awaitedPaths, Lines{});
    watching.advance(5s);
    EXPECT_EQ(watching.take(), Lines{});

    tell(watching, "roots w; send w/a 100 0; send w/b 10800 5");
    EXPECT_EQ(watching.take(), Lines{"w: itemCreated w/a"});
    watching.stream.reset(); // while a timer runs
    EXPECT_FALSE(watching.source.isRunning());
    watching.advance(5s);
    EXPECT_EQ(watching.take(), Lines{});
}

TEST(WorkspaceWatchStream, RootsMayChangeWhileBatchesCome) {
    const TemporaryDirectory directory;
    writeFile(directory.path("w/x"), "");
    writeFile(directory.path("v/x"), "");
    LinuxEnvironment environment;
    LinuxFileManager fileManager(environment);
    HandMovedClock clock;
    CollectedText errorOutput;
    FakeEventStreamSource source;
    SerialQueue queue("watch");
    int eventCount = 0;
    auto stream = std::make_shared<WorkspaceWatchStream>(
        WatchStreamPlatform{source, queue, clock, fileManager, environment, errorOutput},
        [&](const auto& events) { eventCount += static_cast<int>(events.size()); });
    stream->updateWatchedRoots({directory.path("w")}, {});
    std::thread sender([&] {
        for (int round = 0; round < 1000; ++round) {
            source.send({{.path = directory.path("w/a"), .flags = itemModified},
                         {.path = directory.path("w/a"), .flags = itemRenamed, .fileID = std::uint64_t{5}}});
        }
    });
    for (int round = 0; round < 300; ++round) {
        stream->updateWatchedRoots({directory.path("w"), directory.path(round % 2 == 0 ? "v" : "none")}, {});
    }
    sender.join();
    queue.sync([&] { EXPECT_GE(eventCount, 1000); });
    stream.reset();
    EXPECT_FALSE(source.isRunning());
}

TEST(WorkspaceWatchStream, TheDebugLogHasTwoLinesForEachBatch) {
    Watching watching("1");
    tell(watching, "have w/b; roots w");
    const std::string w = watching.directory.path("w");
    const struct {
        const char* name;
        std::string story;
        std::string raw;
        std::string paired;
    } cases[] = {
        {"nothing", "send w/a 10400 5", "", ""},
        {"half", "send w/a 10800 5", "itemRenamed path=" + w + "/a id=number:5 dir=false", ""},
        {"half and more", "send w/b 10800 5 w/d 0 0",
         "itemRenamed path=" + w + "/b id=number:5 dir=false || changeInDirectory path=" + w + "/d id=- dir=-",
         "itemRenamed path=" + w + "/a related=" + w + "/b id=number:5 || changeInDirectory path=" + w +
             "/d related=- id=-"},
        {"late half", "send w/a 20800 6; wait 1000", "itemRenamed path=" + w + "/a id=number:6 dir=true",
         "\n[WorkspaceWatchStream] raw=\n[WorkspaceWatchStream] paired=itemRenamed path=" + w +
             "/a related=- id=number:6"},
    };
    for (const auto& row : cases) {
        watching.errorOutput.text.clear();
        tell(watching, row.story);
        EXPECT_EQ(watching.errorOutput.text,
                  "[WorkspaceWatchStream] raw=" + row.raw + "\n[WorkspaceWatchStream] paired=" + row.paired + "\n")
            << row.name;
    }
}

TEST(WorkspaceWatchStream, OnlyTheValueOneTurnsTheDebugLogOn) {
    for (const char* value : {"", "true", "yes", "01", " 1", "1 ", "0"}) {
        Watching watching(value);
        tell(watching, "have w/x; roots w; send w/a 100 0");
        EXPECT_EQ(watching.errorOutput.text, "") << value;
    }
}

} // namespace
