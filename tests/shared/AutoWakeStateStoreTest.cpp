#include "shared/AutoWakeStateStore.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <csignal>
#include <limits>
#include <memory>
#include <random>
#include <thread>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "tests/shared/SampleRecords.h"
#include "tests/support/Files.h"
#include "tests/support/SystemCallTracer.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

MillisecondDate date(double milliseconds) {
    return MillisecondDate{MillisecondDate::duration{milliseconds}};
}

AutoWakeEventRecord fullEvent() {
    return {.id = "e1",
            .clientKey = "mail",
            .scheduledAt = date(1'700'000'000'000),
            .createdAt = date(1'700'000'000'000.25),
            .lastDispatchAt = date(-1),
            .dispatchAttemptCount = 7,
            .consumedAt = date(0),
            .cancelledAt = date(64'092'211'200'000)};
}

AutoWakeStoreSnapshot fullSnapshotOfStore() {
    return {.schemaVersion = 2,
            .clientStatesByKey = {{"b", {.intervalMinutes = 30, .lastScheduledAt = date(1.5)}},
                                  {"a \"q\"\n", {.intervalMinutes = -1, .lastScheduledAt = date(2)}}},
            .events = {fullEvent(), {.id = "e2", .clientKey = "b"}}};
}

class AutoWakeStore : public testing::Test {
protected:
    std::string bytes() const { return readFile(filePath); }
    bool hasFile() const { return std::filesystem::exists(filePath); }

    // Whether somebody holds the lock.
    bool isLocked() const {
        const Descriptor file(::open(filePath.c_str(), O_RDWR | O_CLOEXEC));
        return ::flock(file.get(), LOCK_EX | LOCK_NB) != 0;
    }

    // Runs each operation that reads the file; those that change it come last.
    void forEachOperation(const std::function<void(const char* name, const std::function<void()>& operation)>& visit) {
        visit("load", [&] { store.load(); });
        visit("event", [&] { store.event("e1"); });
        visit("update", [&] { store.update([](AutoWakeStoreSnapshot& snapshot) { snapshot.events.clear(); }); });
        visit("dispatched", [&] { store.markEventDispatched("e1", date(1)); });
        visit("consumed", [&] { store.markEventConsumed("e1", date(1)); });
        visit("cancelled", [&] { store.markEventCancelled("e1", date(1)); });
    }

    const TemporaryDirectory directory;
    const std::string filePath = directory.path("made/by the store/auto_wake_state.json");
    LinuxEnvironment environment;
    LinuxFileManager fileManager{environment};
    AutoWakeStateStore store{filePath, fileManager};
};

TEST_F(AutoWakeStore, FirstUseMakesTheFolderAndAnEmptyFile) {
    EXPECT_EQ(store.load(), (AutoWakeStoreSnapshot{.schemaVersion = 1}));
    EXPECT_EQ(bytes(), "") << "loading never writes";
}

TEST_F(AutoWakeStore, TheFileIsItsOwnersAloneWhateverTheUmask) {
    std::filesystem::create_directories(std::filesystem::path(filePath).parent_path());
    for (const mode_t mask : {0U, 0022U, 0277U, 0777U}) {
        std::filesystem::remove(filePath);
        const mode_t before = ::umask(mask);
        store.load();
        ::umask(before);
        EXPECT_EQ(std::filesystem::status(filePath).permissions(), std::filesystem::perms{0600}) << mask;
    }
    store.update([](AutoWakeStoreSnapshot&) {});
    const std::filesystem::perms chosen{::geteuid() == 0 ? 0440U : 0640U};
    std::filesystem::permissions(filePath, chosen);
    store.update([](AutoWakeStoreSnapshot&) {});
    EXPECT_EQ(std::filesystem::status(filePath).permissions(), chosen) << "somebody's own choice";
}

TEST_F(AutoWakeStore, EverythingComesBackWithAllAndWithNoOptionalFields) {
    for (const AutoWakeStoreSnapshot& snapshot : {fullSnapshotOfStore(), AutoWakeStoreSnapshot{}}) {
        store.update([&](AutoWakeStoreSnapshot& stored) { stored = snapshot; });
        EXPECT_EQ(store.load(), snapshot) << bytes();
    }
}

// Other programs read the file too.
TEST_F(AutoWakeStore, TheFileIsPrettyAndSorted) {
    store.update([](AutoWakeStoreSnapshot& stored) { stored = fullSnapshotOfStore(); });
    EXPECT_EQ(bytes(), R"({
  "clientStatesByKey" : {
    "a \"q\"\n" : {
      "intervalMinutes" : -1,
      "lastScheduledAt" : 2
    },
    "b" : {
      "intervalMinutes" : 30,
      "lastScheduledAt" : 1.5
    }
  },
  "events" : [
    {
      "cancelledAt" : 64092211200000,
      "clientKey" : "mail",
      "consumedAt" : 0,
      "createdAt" : 1700000000000.25,
      "dispatchAttemptCount" : 7,
      "id" : "e1",
      "lastDispatchAt" : -1,
      "scheduledAt" : 1700000000000
    },
    {
      "clientKey" : "b",
      "createdAt" : 0,
      "dispatchAttemptCount" : 0,
      "id" : "e2",
      "scheduledAt" : 0
    }
  ],
  "schemaVersion" : 2
})");
}

TEST_F(AutoWakeStore, DatesComeBackExactly) {
    const auto seed = std::random_device{}();
    std::mt19937_64 random(seed);
    for (int round = 0; round < 20'000; ++round) {
        const double milliseconds = std::bit_cast<double>(random());
        if (!std::isfinite(milliseconds)) continue;
        const AutoWakeClientState state{.lastScheduledAt = date(milliseconds)};
        ASSERT_EQ(decodeRecord<AutoWakeClientState>(*encodeRecord(state)), state) << "seed " << seed;
    }
    const MillisecondDate now = std::chrono::system_clock::now();
    const AutoWakeClientState state{.lastScheduledAt = now};
    EXPECT_EQ(decodeRecord<AutoWakeClientState>(*encodeRecord(state)).lastScheduledAt, now);
}

TEST_F(AutoWakeStore, ReadsWhatOthersWrote) {
    const std::string client = R"("c":{"lastScheduledAt":1e3,"intervalMinutes":5.0,"more":{"x":[1]}})";
    writeFile(filePath, R"({"events":[],"unknown":null,"clientStatesByKey":{)" + client +
                            R"(,"c":{"of equal keys":"the first counts"}},"schemaVersion":99})");
    EXPECT_EQ(store.load(), (AutoWakeStoreSnapshot{
                                .schemaVersion = 99,
                                .clientStatesByKey = {{"c", {.intervalMinutes = 5, .lastScheduledAt = date(1000)}}}}));
}

TEST_F(AutoWakeStore, WhatIsWrongIsToldWithItsPlaceAndLeftAlone) {
    const auto clients = [](const std::string& text) {
        return R"({"schemaVersion":1,"events":[],"clientStatesByKey":)" + text + "}";
    };
    const auto events = [](const std::string& text) {
        return R"({"schemaVersion":1,"clientStatesByKey":{},"events":[)" + text + "]}";
    };
    const std::string event = R"({"id":"e","clientKey":"c","scheduledAt":1,"createdAt":1,"dispatchAttemptCount":0)";
    const struct {
        const char* name;
        std::string json;
        const char* description;
    } rows[] = {
        {"no version", R"({"events":[],"clientStatesByKey":{}})", "The key “schemaVersion” is missing."},
        {"no events", R"({"schemaVersion":1,"clientStatesByKey":{}})", "The key “events” is missing."},
        {"a list for a map", clients("[]"), "The value of “clientStatesByKey” must be an object, but is an array."},
        {"a null client", clients(R"({"mail":null})"),
         "The value of “clientStatesByKey.mail” must be an object, but is null."},
        {"a client without a date",
         clients(R"({"a":{"intervalMinutes":1,"lastScheduledAt":1},"b":{"intervalMinutes":1}})"),
         "The key “clientStatesByKey.b.lastScheduledAt” is missing."},
        {"a date as text", clients(R"({"a":{"intervalMinutes":1,"lastScheduledAt":"2023-11-14T22:13:20Z"}})"),
         "The value of “clientStatesByKey.a.lastScheduledAt” must be a double-precision number, but is a string."},
        {"half a minute", clients(R"({"a":{"intervalMinutes":0.5,"lastScheduledAt":1}})"),
         "The value of “clientStatesByKey.a.intervalMinutes” must be a signed integer of 64 bits, but is a number with "
         "a fraction or out of range."},
        {"an event without its count",
         events(event + "}," + R"({"id":"e","clientKey":"c","scheduledAt":1,"createdAt":1})"),
         "The key “events[1].dispatchAttemptCount” is missing."},
        {"an optional date as Boolean", events(event + R"(,"consumedAt":true})"),
         "The value of “events[0].consumedAt” must be a double-precision number, but is a Boolean."},
        {"a cut file", clients("{").substr(0, 52), "Invalid JSON at byte 52: the message ends too early."},
        {"the tail of a longer file", clients("{}") + "}", "Invalid JSON at byte 54: nothing may follow the message."},
        {"white space alone", " \n", "Invalid JSON at byte 2: the message ends too early."},
    };
    for (const auto& row : rows) {
        writeFile(filePath, row.json);
        forEachOperation([&](const char* name, const std::function<void()>& operation) {
            SCOPED_TRACE(std::string(row.name) + ", " + name);
            try {
                operation();
                ADD_FAILURE() << "no error";
            } catch (const DecodingError& error) {
                EXPECT_EQ(error.localizedDescription, row.description);
            }
            EXPECT_EQ(bytes(), row.json);
            EXPECT_FALSE(isLocked());
        });
    }
}

TEST_F(AutoWakeStore, EventsAreFoundByTheirTrimmedIdentifier) {
    for (const char* blank : {"", "  ", "\t\r\n", "\u00A0\u2028"}) EXPECT_EQ(store.event(blank), std::nullopt);
    EXPECT_FALSE(hasFile()) << "nothing was to be looked up";

    const std::string compact = *encodeRecord(AutoWakeStoreSnapshot{
        .events = {{.id = "a"}, {.id = "e1", .clientKey = "first"}, {.id = "e1", .clientKey = "second"}}});
    writeFile(filePath, compact);
    EXPECT_EQ(store.event(" e1\n").value_or(AutoWakeEventRecord{}).clientKey, "first");
    EXPECT_EQ(store.event("E1"), std::nullopt);
    EXPECT_EQ(bytes(), compact) << "looking up never writes";
}

TEST_F(AutoWakeStore, MarksChangeTheFirstEventWithExactlyThatIdentifier) {
    using Mark = std::optional<AutoWakeEventRecord> (AutoWakeStateStore::*)(std::string_view, MillisecondDate);
    const struct {
        const char* name;
        Mark mark;
        AutoWakeEventRecord once;
        AutoWakeEventRecord twice;
    } rows[] = {
        {"dispatched",
         &AutoWakeStateStore::markEventDispatched,
         {.id = "e", .lastDispatchAt = date(10), .dispatchAttemptCount = 1},
         {.id = "e", .lastDispatchAt = date(5), .dispatchAttemptCount = 2}},
        {"consumed",
         &AutoWakeStateStore::markEventConsumed,
         {.id = "e", .consumedAt = date(10)},
         {.id = "e", .consumedAt = date(5)}},
        {"cancelled",
         &AutoWakeStateStore::markEventCancelled,
         {.id = "e", .cancelledAt = date(10)},
         {.id = "e", .cancelledAt = date(5)}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        AutoWakeStoreSnapshot expected{.events = {{.id = "other"}, {.id = "e"}, {.id = "e", .clientKey = "later"}}};
        writeFile(filePath, *encodeRecord(expected));
        for (const char* unknown : {"x", " e", ""}) {
            EXPECT_EQ((store.*row.mark)(unknown, date(1)), std::nullopt);
            EXPECT_EQ(bytes(), encodeRecord(expected, JSONLayout::pretty)) << "written all the same";
        }
        EXPECT_EQ((store.*row.mark)("e", date(10)), row.once);
        EXPECT_EQ((store.*row.mark)("e", date(5)), row.twice);
        expected.events[1] = row.twice;
        EXPECT_EQ(store.load(), expected);
    }
}

TEST_F(AutoWakeStore, UpdateHoldsTheLockAndReturnsWhatTheBodyReturns) {
    auto moved = store.update([&, owned = std::make_unique<int>(4)](AutoWakeStoreSnapshot& snapshot) mutable {
        EXPECT_TRUE(isLocked());
        snapshot.schemaVersion = 3;
        return std::move(owned);
    });
    EXPECT_EQ(*moved, 4);
    EXPECT_FALSE(isLocked());
    EXPECT_EQ(store.load().schemaVersion, 3);
}

// It has the same open file, and would keep the lock for as long as it lives.
TEST_F(AutoWakeStore, AProcessForkedDuringAnUpdateDoesNotKeepTheLock) {
    const pid_t child = store.update([](AutoWakeStoreSnapshot&) {
        const pid_t forked = ::fork();
        while (forked == 0) ::pause();
        return forked;
    });
    EXPECT_FALSE(isLocked());
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(AutoWakeStore, AnUpdateThatCannotBeCarriedOutLeavesTheFileAlone) {
    const struct {
        const char* name;
        std::function<void(AutoWakeStoreSnapshot&)> body;
    } rows[] = {
        {"the body throws", [](AutoWakeStoreSnapshot&) { throw posixError(ECANCELED, "go on"); }},
        {"a date that is no number",
         [](AutoWakeStoreSnapshot& snapshot) { snapshot.events[0].createdAt = date(std::nan("")); }},
        {"an infinite date",
         [](AutoWakeStoreSnapshot& snapshot) {
             snapshot.events[0].consumedAt = date(-std::numeric_limits<double>::infinity());
         }},
        {"an identifier that is not UTF-8", [](AutoWakeStoreSnapshot& snapshot) { snapshot.events[0].id = "\xFF"; }},
        {"a client key that is not UTF-8",
         [](AutoWakeStoreSnapshot& snapshot) { snapshot.clientStatesByKey["caf\xE9"] = {}; }},
    };
    const std::string before = *encodeRecord(fullSnapshotOfStore());
    writeFile(filePath, before);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_THROW(store.update(row.body), PlatformError);
        EXPECT_EQ(bytes(), before);
        EXPECT_FALSE(isLocked());
    }
}

TEST_F(AutoWakeStore, ADispatchThatCannotBeCountedIsRefused) {
    const std::string before = *encodeRecord(AutoWakeStoreSnapshot{
        .events = {{.id = "e", .dispatchAttemptCount = std::numeric_limits<std::int64_t>::max()}}});
    writeFile(filePath, before);
    EXPECT_THROW(store.markEventDispatched("e", date(1)), PlatformError);
    EXPECT_EQ(bytes(), before);
}

// A limit on the size of files stops a write half-way, as a full disk does. In a process of its own, for the limit
// holds for all that it writes.
TEST_F(AutoWakeStore, AWriteThatStopsHalfWayIsReportedAndTakenBack) {
    store.update([](AutoWakeStoreSnapshot& snapshot) { snapshot = fullSnapshotOfStore(); });
    const std::string before = bytes();
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{.rlim_cur = before.size() + 100, .rlim_max = RLIM_INFINITY};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        try {
            store.update([](AutoWakeStoreSnapshot& snapshot) { snapshot.events.resize(100); });
            ::_exit(0);
        } catch (const PlatformError& error) {
            ::_exit(error.domain == posixErrorDomain ? static_cast<int>(error.code) : 1);
        }
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EFBIG) << status;
    EXPECT_EQ(bytes(), before);
    EXPECT_FALSE(isLocked());
}

TEST_F(AutoWakeStore, AFolderThatCannotBeMadeIsReported) {
    writeFile(directory.path("made"), "a file");
    try {
        store.load();
        FAIL() << "no error";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.domain, posixErrorDomain);
        EXPECT_EQ(error.code, ENOTDIR);
    }
}

// Thousands of updates, in memory where there is such a place: a disk would spend a minute on making them safe.
class BusyAutoWakeStore : public testing::Test {
protected:
    static constexpr int updatesEach = 1000;

    static std::filesystem::path parent() {
        const std::filesystem::path memory = "/dev/shm";
        return ::access(memory.c_str(), W_OK) == 0 ? memory : std::filesystem::temp_directory_path();
    }

    BusyAutoWakeStore() {
        store.update([](AutoWakeStoreSnapshot& snapshot) { snapshot.events = {{.id = "e"}}; });
    }
    void markRepeatedly() {
        for (int update = 0; update < updatesEach; ++update) store.markEventDispatched("e", date(update));
    }
    std::int64_t count() { return store.event("e").value_or(AutoWakeEventRecord{}).dispatchAttemptCount; }

    const TemporaryDirectory directory{parent()};
    LinuxEnvironment environment;
    LinuxFileManager fileManager{environment};
    AutoWakeStateStore store{directory.path("file"), fileManager};
};

TEST_F(BusyAutoWakeStore, EightProcessesLoseNoUpdate) {
    std::vector<pid_t> children;
    for (int process = 0; process < 8; ++process) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child > 0) {
            children.push_back(child);
            continue;
        }
        try {
            markRepeatedly();
            ::_exit(0);
        } catch (...) {
            ::_exit(1);
        }
    }
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(count(), 8 * updatesEach);
}

TEST_F(BusyAutoWakeStore, ThreadsThatShareAStoreLoseNoUpdate) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) threads.emplace_back([&] { markRepeatedly(); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(count(), 8 * updatesEach);
}

} // namespace
