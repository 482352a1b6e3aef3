// A state file of any contents, on the real disk. It is read as a store or refused and left as it is; what an update
// writes is read again as what was meant.

#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/Require.h"
#include "platform/PlatformError.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "shared/AutoWakeStateStore.h"
#include "shared/DecodingError.h"
#include "shared/RecordCoding.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"

namespace {

std::string readAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::optional<AutoWakeStoreSnapshot> loaded(AutoWakeStateStore& store) {
    try {
        return store.load();
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

bool isEqual(const AutoWakeStoreSnapshot& left, const AutoWakeStoreSnapshot& right) {
    return encodeRecord(left) == encodeRecord(right);
}

// Counts the dispatch of the event, and nothing else.
void checkDispatch(AutoWakeStateStore& store, AutoWakeStoreSnapshot expected, const std::string& path,
                   const std::string& before) {
    constexpr MillisecondDate date{MillisecondDate::duration(1764000000000.5)};
    AutoWakeEventRecord* const event = expected.events.empty() ? nullptr : &expected.events.front();
    try {
        const auto dispatched = store.markEventDispatched(event ? event->id : "nobody", date);
        require(dispatched.has_value() == (event != nullptr), "another event was found");
    } catch (const PlatformError&) {
        require(event && event->dispatchAttemptCount == INT64_MAX, "a dispatch was refused");
        require(readAll(path) == before, "a refused dispatch changed the file");
        return;
    }
    if (event) {
        ++event->dispatchAttemptCount;
        event->lastDispatchAt = date;
    }
    const auto after = loaded(store);
    require(after && isEqual(*after, expected), "another store was written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryDirectory directory;
    static const VariableEnvironment environment;
    const std::string path = directory.path("state.json");
    const std::string before(reinterpret_cast<const char*>(data), size);
    std::ofstream(path, std::ios::binary | std::ios::trunc) << before << std::flush;
    LinuxFileManager files(environment);
    AutoWakeStateStore store(path, files);
    const auto snapshot = loaded(store);
    require(readAll(path) == before, "reading changed the file");
    if (snapshot) {
        checkDispatch(store, *snapshot, path, before);
    } else {
        bool isRefused = false;
        try {
            store.update([](AutoWakeStoreSnapshot&) {});
        } catch (const DecodingError&) {
            isRefused = true;
        }
        require(isRefused && readAll(path) == before, "an unreadable file was written");
    }
    return 0;
}
