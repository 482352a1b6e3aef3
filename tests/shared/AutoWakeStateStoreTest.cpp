#include "shared/AutoWakeStateStore.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <limits>
#include <memory>
#include <thread>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/LinuxEnvironment.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "tests/shared/SampleRecords.h"
#include "tests/support/Files.h"
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
    EXPECT_EQ(store.load(), (AutoWakeStoreSnapshot{.schemaVersion = 1}));
    EXPECT_EQ(bytes(), "") << "loading never writes";
    for (const AutoWakeStoreSnapshot& snapshot : {fullSnapshotOfStore(), AutoWakeStoreSnapshot{}}) {
        store.update([&](AutoWakeStoreSnapshot& stored) { stored = snapshot; });
        EXPECT_EQ(store.load(), snapshot) << bytes();
    }
}

// Other programs read the file too.
TEST_F(AutoWakeStore, TheFileHasTheseNames) {
    EXPECT_EQ(encodeRecord(fullSnapshotOfStore()),
              R"({"schemaVersion":2,"clientStatesByKey":{"a \"q\"\n":{"intervalMinutes":-1,"lastScheduledAt":2},)"
              R"("b":{"intervalMinutes":30,"lastScheduledAt":1.5}},"events":[{"id":"e1","clientKey":"mail",)"
              R"("scheduledAt":1700000000000,"createdAt":1700000000000.25,"lastDispatchAt":-1,)"
              R"("dispatchAttemptCount":7,"consumedAt":0,"cancelledAt":64092211200000},)"
              R"({"id":"e2","clientKey":"b","scheduledAt":0,"createdAt":0,"dispatchAttemptCount":0}]})");
    writeFile(filePath, R"({"events":[],"clientStatesByKey":{"c":{"lastScheduledAt":1e3,"intervalMinutes":5},)"
                        R"("c":{"of equal keys":"the first counts"}},"schemaVersion":99})");
    EXPECT_EQ(store.load(), (AutoWakeStoreSnapshot{
                                .schemaVersion = 99,
                                .clientStatesByKey = {{"c", {.intervalMinutes = 5, .lastScheduledAt = date(1000)}}}}));
}

TEST_F(AutoWakeStore, WhatIsWrongIsToldWithItsPlaceAndLeftAlone) {
    const auto clients = [](const std::string& text) {
        return R"({"schemaVersion":1,"events":[],"clientStatesByKey":)" + text + "}";
    };
    const std::string event = R"({"id":"e","clientKey":"c","scheduledAt":1,"createdAt":1,"dispatchAttemptCount":0)";
    const struct {
        const char* name;
        std::string json;
        const char* description;
    } rows[] = {
        {"no events", R"({"schemaVersion":1,"clientStatesByKey":{}})", "The key “events” is missing."},
        {"a list for a map", clients("[]"), "The value of “clientStatesByKey” must be an object, but is an array."},
        {"a client without a date",
         clients(R"({"a":{"intervalMinutes":1,"lastScheduledAt":1},"b":{"intervalMinutes":1}})"),
         "The key “clientStatesByKey.b.lastScheduledAt” is missing."},
        {"an optional date as Boolean",
         R"({"schemaVersion":1,"clientStatesByKey":{},"events":[)" + event + R"(,"consumedAt":true}]})",
         "The value of “events[0].consumedAt” must be a double-precision number, but is a Boolean."},
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
         [](AutoWakeStoreSnapshot& snapshot) {
             snapshot.events[0].createdAt = date(std::numeric_limits<double>::quiet_NaN());
         }},
        {"an identifier that is not UTF-8", [](AutoWakeStoreSnapshot& snapshot) { snapshot.events[0].id = "\xFF"; }},
        {"a client key that is not UTF-8",
         [](AutoWakeStoreSnapshot& snapshot) { snapshot.clientStatesByKey["caf\xE9"] = {}; }},
    };
    AutoWakeStoreSnapshot snapshot = fullSnapshotOfStore();
    snapshot.events[0].dispatchAttemptCount = std::numeric_limits<std::int64_t>::max();
    const std::string before = *encodeRecord(snapshot);
    writeFile(filePath, before);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_THROW(store.update(row.body), PlatformError);
        EXPECT_EQ(bytes(), before);
        EXPECT_FALSE(isLocked());
    }
    EXPECT_THROW(store.markEventDispatched("e1", date(1)), PlatformError) << "a count beyond all";
    EXPECT_EQ(bytes(), before);
}

// Thousands of updates, in memory where there is such a place: a disk would spend a minute on making them safe.
TEST(BusyAutoWakeStore, ProcessesAndThreadsLoseNoUpdate) {
    constexpr int updatesEach = 500;
    const TemporaryDirectory directory{::access("/dev/shm", W_OK) == 0 ? "/dev/shm"
                                                                       : std::filesystem::temp_directory_path()};
    LinuxEnvironment environment;
    LinuxFileManager fileManager{environment};
    AutoWakeStateStore store{directory.path("file"), fileManager};
    store.update([](AutoWakeStoreSnapshot& snapshot) { snapshot.events = {{.id = "e"}}; });
    const auto markRepeatedly = [&] {
        for (int update = 0; update < updatesEach; ++update) store.markEventDispatched("e", date(update));
    };
    std::vector<pid_t> children;
    for (int process = 0; process < 6; ++process) {
        children.push_back(::fork());
        ASSERT_GE(children.back(), 0);
        if (children.back() > 0) continue;
        std::thread second(markRepeatedly);
        markRepeatedly();
        second.join();
        ::_exit(0);
    }
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(store.event("e").value_or(AutoWakeEventRecord{}).dispatchAttemptCount, 6 * 2 * updatesEach);
}

} // namespace
