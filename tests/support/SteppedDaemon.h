#pragma once

#include <memory>
#include <utility>

#include "daemon/EditorDocumentDaemon.h"
#include "tests/support/FakeEventStream.h"
#include "tests/support/FaultyFileManager.h"
#include "tests/support/HandRunQueue.h"

// Makes a part of a platform with which the caller goes on dealing.
template <typename Part, typename Seam, typename... Arguments>
Part* install(std::unique_ptr<Seam>& place, Arguments&&... arguments) {
    auto part = std::make_unique<Part>(std::forward<Arguments>(arguments)...);
    Part* const installed = part.get();
    place = std::move(part);
    return installed;
}

// A daemon of which nothing runs by itself: queues, time and the system's telling of changes wait to be moved, and
// every call to the disk can be made to fail.
class SteppedDaemon {
public:
    FaultyFileManager* fileManager = nullptr;
    FakeEventStreamSource* eventStreams = nullptr;

protected:
    // The platform brings along what is not said here.
    void putTogether(DaemonPlatform platform, FileManager& disk) {
        platform.makeUUID = [count = 0]() mutable { return "document-" + std::to_string(++count); };
        fileManager = install<FaultyFileManager>(platform.fileManager, disk);
        clock = install<HandMovedClock>(platform.clock);
        eventStreams = install<FakeEventStreamSource>(platform.eventStreamSource);
        queue = install<HandRunQueue>(platform.queue);
        indexingQueue = install<HandRunQueue>(platform.workspaceIndexingQueue);
        watchQueue = install<HandRunQueue>(platform.watchQueue);
        daemon = std::make_shared<EditorDocumentDaemon>(std::move(platform));
    }

    HandMovedClock* clock = nullptr;
    HandRunQueue* queue = nullptr;
    HandRunQueue* indexingQueue = nullptr;
    HandRunQueue* watchQueue = nullptr;
    std::shared_ptr<EditorDocumentDaemon> daemon;
};
