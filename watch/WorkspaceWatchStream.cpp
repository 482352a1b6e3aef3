#include "watch/WorkspaceWatchStream.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <exception>
#include <unordered_set>
#include <utility>

#include "watch/WatchEventLog.h"
#include "watch/WatchNotification.h"
#include "workspace/PathComponents.h"

namespace {

using namespace std::chrono_literals;

constexpr auto latency = 100ms;
constexpr auto debugVariable = "MARBLEFERN_EDITOR_DOCUMENT_DAEMON_DEBUG_WATCH_EVENTS";

struct RequestedRoots {
    std::vector<std::string> directoryPaths{};
    std::vector<std::string> missingPaths{};
};

std::string absolutePath(const std::string& path, const FileManager& fileManager) {
    return standardizedPath(path.starts_with('/') ? path : fileManager.currentDirectoryPath() + '/' + path);
}

// Each root once, in the given order.
RequestedRoots normalizedPaths(const std::vector<std::string>& paths, const FileManager& fileManager) {
    RequestedRoots roots;
    std::unordered_set<std::string> seenPaths;
    for (const std::string& path : paths) {
        if (path.empty()) continue;
        std::string normalized = absolutePath(path, fileManager);
        if (!seenPaths.insert(normalized).second) continue;
        (fileManager.isDirectory(normalized) ? roots.directoryPaths : roots.missingPaths)
            .push_back(std::move(normalized));
    }
    return roots;
}

} // namespace

WorkspaceWatchStream::WorkspaceWatchStream(const WatchStreamPlatform& watchPlatform, Callback eventsCallback)
    : platform(watchPlatform),
      queue(watchPlatform.queue),
      callback(std::move(eventsCallback)),
      debugWatchEvents(watchPlatform.environment.value(debugVariable) == "1") {}

// A timer that outlives every other owner lets go on the queue itself.
WorkspaceWatchStream::~WorkspaceWatchStream() {
    if (queue.isCurrent()) {
        stream.reset();
    } else {
        queue.sync([this] { stream.reset(); });
    }
}

void WorkspaceWatchStream::updateWatchedRoots(const std::vector<std::string>& rootPaths,
                                              const EventStreamInterest& interest) {
    queue.sync([&] {
        RequestedRoots roots = normalizedPaths(rootPaths, platform.fileManager);
        tellMissedSoon(roots.missingPaths);
        watch(std::move(roots.directoryPaths), interest);
        awaitRoots(std::move(roots.missingPaths));
    });
}

void WorkspaceWatchStream::cancel() {
    queue.sync([this] {
        renamePairing.discardAll();
        watchedRoots.clear();
        stream.reset();
        awaitRoots({});
    });
}

// The interest changes while no stream runs, if the roots change as well: what is a root, and what it is watched for,
// are never seen apart.
void WorkspaceWatchStream::watch(std::vector<std::string> normalizedRootPaths, const EventStreamInterest& interest) {
    const bool haveRootsChanged = normalizedRootPaths != watchedRoots;
    if (haveRootsChanged) {
        watchedRoots = std::move(normalizedRootPaths);
        renamePairing.discardAll();
        stream.reset();
    }
    if (presentInterest != interest) {
        presentInterest = interest;
        platform.eventStreamSource.setInterest(interest);
    }
    if (haveRootsChanged && !watchedRoots.empty()) startStream();
}

// A root that has just gone may be missed here before the stream could tell of it, and then it never will. Likewise one
// that has come is no longer awaited.
void WorkspaceWatchStream::tellMissedSoon(const std::vector<std::string>& missingRootPaths) {
    std::vector<WorkspaceWatchEvent> events;
    for (const std::string& path : missingRootPaths) {
        if (std::ranges::find(watchedRoots, path) == watchedRoots.end()) continue;
        events.push_back({.rootPath = path, .path = path, .kind = WorkspaceWatchEventKind::rootChanged});
    }
    for (const std::string& path : awaitedRoots) {
        if (!platform.fileManager.isDirectory(path)) continue;
        events.push_back({.rootPath = path, .path = path, .kind = WorkspaceWatchEventKind::changeInDirectory});
    }
    if (events.empty()) return;
    queue.async([weakStream = weak_from_this(), missed = std::move(events)] {
        if (const auto self = weakStream.lock()) self->deliver({}, missed);
    });
}

void WorkspaceWatchStream::startStream() {
    // The stream is stopped before this object is gone.
    stream = platform.eventStreamSource.makeEventStream(
        watchedRoots, latency, queue, [this](const EventStreamBatch& batch) { handleEventBatch(batch); });
    if (stream && !stream->start()) stream.reset();
}

void WorkspaceWatchStream::awaitRoots(std::vector<std::string> missingRootPaths) {
    if (missingRootPaths == awaitedRoots) return;
    awaitedRoots = std::move(missingRootPaths);
    platform.eventStreamSource.awaitDirectories(awaitedRoots, queue, [weakStream = weak_from_this()] {
        if (const auto self = weakStream.lock()) self->awaitedRootsAppeared();
    });
}

// The callback is called once; what has not come, or is gone again, is awaited anew.
void WorkspaceWatchStream::awaitedRootsAppeared() {
    assert(queue.isCurrent());
    RequestedRoots roots = normalizedPaths(std::exchange(awaitedRoots, {}), platform.fileManager);
    awaitRoots(std::move(roots.missingPaths));
    std::vector<WorkspaceWatchEvent> events;
    for (const std::string& path : roots.directoryPaths) {
        events.push_back({.rootPath = path, .path = path, .kind = WorkspaceWatchEventKind::changeInDirectory});
    }
    if (!events.empty()) deliver({}, std::move(events));
}

void WorkspaceWatchStream::handleEventBatch(const EventStreamBatch& batch) {
    assert(queue.isCurrent());
    try {
        pairAndDeliver(batch);
    } catch (const std::exception&) {
        callback({});
    }
}

void WorkspaceWatchStream::pairAndDeliver(const EventStreamBatch& batch) {
    std::vector<RawEvent> rawBatch;
    rawBatch.reserve(batch.size());
    for (const EventStreamNotification& notification : batch) {
        if (!notification.path) continue;
        std::string path = absolutePath(*notification.path, platform.fileManager);
        const std::string* rootPath = matchingRoot(path);
        if (!rootPath) continue;
        for (RawEvent& event : rawEvents(notification, *rootPath, std::move(path)))
            rawBatch.push_back(std::move(event));
    }
    const std::vector<RawEvent> logged = debugWatchEvents ? rawBatch : std::vector<RawEvent>();
    auto events = renamePairing.pairRenameEvents(std::move(rawBatch), platform.clock.uptime(), platform.fileManager);
    if (renamePairing.isWaiting()) schedulePendingRenameFlush();
    deliver(logged, std::move(events));
}

void WorkspaceWatchStream::schedulePendingRenameFlush() {
    queue.asyncAfter(RenamePairing::pendingRenameRetention, [weakStream = weak_from_this()] {
        if (const auto self = weakStream.lock()) self->flushPendingRenames();
    });
}

void WorkspaceWatchStream::flushPendingRenames() {
    auto events = renamePairing.flushExpiredPendingRenames(platform.clock.uptime());
    if (!events.empty()) deliver({}, std::move(events));
}

void WorkspaceWatchStream::deliver(const std::vector<RawEvent>& rawBatch, std::vector<WorkspaceWatchEvent> events) {
    if (debugWatchEvents) platform.errorOutput.write(watchEventLog(rawBatch, events));
    if (!events.empty()) callback(std::move(events));
}

// The innermost of the roots that contain the path.
const std::string* WorkspaceWatchStream::matchingRoot(const std::string& path) const {
    const std::string* match = nullptr;
    for (const std::string& rootPath : watchedRoots) {
        if (isAtOrWithin(path, rootPath) && (!match || rootPath.size() > match->size())) match = &rootPath;
    }
    return match;
}
