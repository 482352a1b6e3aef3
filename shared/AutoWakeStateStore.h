#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "platform/FileManager.h"
#include "shared/AutoWakeStoreSnapshot.h"

class LockedFile;

// The wake-up events of the product family, in one JSON file that its processes share. Every operation makes what is
// missing of the directory and the file, holds the file's exclusive lock while it reads, changes and writes, and keeps
// nothing for the next one; so any number of stores, threads and processes may work on one file, each waiting for its
// turn.
//
// Failures are thrown: PlatformError (domain "POSIX", code errno) for the disk, DecodingError for a file that cannot be
// read as a store. Such a file stays as it is, for a person to look at, and so does a file whose change fails: an
// update is encoded before the file is touched, and where the writing fails, the old contents are written back.
//
// What remains: the file is rewritten where it lies, truncated first and then written with one call. A process that is
// killed between the two leaves an empty file, which reads as a new store; one that is killed within the second, or a
// power failure, can leave a part, which reads as an error. After a disk error that does not allow the old contents
// back, either may remain too.
class AutoWakeStateStore {
public:
    // By convention the file is ConduitSharedPaths::autoWakeStateStoreURL. Touches nothing yet.
    AutoWakeStateStore(std::string fileURL, FileManager& fileManager);

    AutoWakeStoreSnapshot load();

    // Writes the snapshot as the body leaves it, and returns a copy of what the body returns. When the body throws,
    // nothing is written. The body must not use the store: it would wait for itself.
    template <typename Body>
    auto update(Body body) {
        using Result = std::remove_cvref_t<std::invoke_result_t<Body&, AutoWakeStoreSnapshot&>>;
        if constexpr (std::is_void_v<Result>) {
            withLockedSnapshot(ShouldPersist::yes, [&](AutoWakeStoreSnapshot& snapshot) { body(snapshot); });
        } else {
            std::optional<Result> result;
            withLockedSnapshot(ShouldPersist::yes,
                               [&](AutoWakeStoreSnapshot& snapshot) { result.emplace(body(snapshot)); });
            return *std::move(result);
        }
    }

    // The first event with this identifier. White space around it is ignored; of a blank one the file is not asked.
    std::optional<AutoWakeEventRecord> event(std::string_view id);

    // These change the first event with exactly this identifier, whatever its state, and return it as it is then. The
    // file is written in any case. An event that was dispatched as often as can be counted is an error (EOVERFLOW).
    std::optional<AutoWakeEventRecord> markEventDispatched(std::string_view id, MillisecondDate at);
    std::optional<AutoWakeEventRecord> markEventConsumed(std::string_view id, MillisecondDate at);
    std::optional<AutoWakeEventRecord> markEventCancelled(std::string_view id, MillisecondDate at);

private:
    enum class ShouldPersist : bool { no, yes };

    std::optional<AutoWakeEventRecord> markEvent(std::string_view id,
                                                 const std::function<void(AutoWakeEventRecord&)>& change);

    void ensureParentDirectoryExists();
    void withLockedSnapshot(ShouldPersist shouldPersist, const std::function<void(AutoWakeStoreSnapshot&)>& body);
    static AutoWakeStoreSnapshot loadSnapshot(const LockedFile& file);
    static void persist(const AutoWakeStoreSnapshot& snapshot, LockedFile& file);

    std::string fileURL;
    FileManager& fileManager;
};
