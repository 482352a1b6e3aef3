#include "shared/AutoWakeStateStore.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include "platform/LockedFile.h"
#include "platform/PlatformError.h"
#include "shared/RecordCoding.h"
#include "shared/Whitespace.h"

namespace {

std::string parentPath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

AutoWakeEventRecord* findEvent(AutoWakeStoreSnapshot& snapshot, std::string_view id) {
    const auto found = std::ranges::find(snapshot.events, id, &AutoWakeEventRecord::id);
    return found == snapshot.events.end() ? nullptr : &*found;
}

void countDispatch(AutoWakeEventRecord& event) {
    if (event.dispatchAttemptCount == std::numeric_limits<std::int64_t>::max())
        throw posixError(EOVERFLOW, "count another dispatch of the event", event.id);
    ++event.dispatchAttemptCount;
}

} // namespace

AutoWakeStateStore::AutoWakeStateStore(std::string storeFileURL, FileManager& storeFileManager)
    : fileURL(std::move(storeFileURL)), fileManager(storeFileManager) {}

AutoWakeStoreSnapshot AutoWakeStateStore::load() {
    AutoWakeStoreSnapshot loaded;
    withLockedSnapshot(ShouldPersist::no, [&](AutoWakeStoreSnapshot& snapshot) { loaded = std::move(snapshot); });
    return loaded;
}

std::optional<AutoWakeEventRecord> AutoWakeStateStore::event(std::string_view id) {
    const std::string_view trimmedID = trimmed(id);
    if (trimmedID.empty()) return std::nullopt;
    AutoWakeStoreSnapshot snapshot = load();
    const AutoWakeEventRecord* found = findEvent(snapshot, trimmedID);
    return found ? std::optional(*found) : std::nullopt;
}

std::optional<AutoWakeEventRecord> AutoWakeStateStore::markEventDispatched(std::string_view id, MillisecondDate at) {
    return markEvent(id, [&](AutoWakeEventRecord& event) {
        countDispatch(event);
        event.lastDispatchAt = at;
    });
}

std::optional<AutoWakeEventRecord> AutoWakeStateStore::markEventConsumed(std::string_view id, MillisecondDate at) {
    return markEvent(id, [&](AutoWakeEventRecord& event) { event.consumedAt = at; });
}

std::optional<AutoWakeEventRecord> AutoWakeStateStore::markEventCancelled(std::string_view id, MillisecondDate at) {
    return markEvent(id, [&](AutoWakeEventRecord& event) { event.cancelledAt = at; });
}

std::optional<AutoWakeEventRecord> AutoWakeStateStore::markEvent(
    std::string_view id, const std::function<void(AutoWakeEventRecord&)>& change) {
    return update([&](AutoWakeStoreSnapshot& snapshot) -> std::optional<AutoWakeEventRecord> {
        AutoWakeEventRecord* found = findEvent(snapshot, id);
        if (!found) return std::nullopt;
        change(*found);
        return *found;
    });
}

void AutoWakeStateStore::ensureParentDirectoryExists() {
    fileManager.createDirectory(parentPath(fileURL));
}

void AutoWakeStateStore::withLockedSnapshot(ShouldPersist shouldPersist,
                                            const std::function<void(AutoWakeStoreSnapshot&)>& body) {
    ensureParentDirectoryExists();
    LockedFile file(fileURL);
    AutoWakeStoreSnapshot snapshot = loadSnapshot(file);
    body(snapshot);
    if (shouldPersist == ShouldPersist::yes) persist(snapshot, file);
}

AutoWakeStoreSnapshot AutoWakeStateStore::loadSnapshot(const LockedFile& file) {
    if (file.contents().empty()) return {}; // just made
    return decodeRecord<AutoWakeStoreSnapshot>(file.contents());
}

void AutoWakeStateStore::persist(const AutoWakeStoreSnapshot& snapshot, LockedFile& file) {
    auto json = encodeRecord(snapshot, JSONLayout::pretty);
    if (!json) throw posixError(EINVAL, "write a date that is not finite, or text that is not UTF-8");
    file.rewrite(*std::move(json));
}
