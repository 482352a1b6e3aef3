#include <cassert>

#include "daemon/EditorDocumentDaemon.h"
#include "watch/WatchedRoots.h"

void EditorDocumentDaemon::refreshWatchRoots() {
    assert(queue->isCurrent());
    if (!platform.eventStreamSource) return;
    const std::vector<std::string> rootPaths = watchedRoots(workspacesByRootPath, documentsByID);
    presentWatchStream().updateWatchedRoots(rootPaths, watchedInterest(rootPaths, workspacesByRootPath, documentsByID));
}

void EditorDocumentDaemon::cancelWatching() {
    assert(queue->isCurrent());
    if (platform.eventStreamSource) presentWatchStream().cancel();
}

// Made on first use. Events cross to the daemon's queue through the mailbox, and do nothing once the daemon is gone.
WorkspaceWatchStream& EditorDocumentDaemon::presentWatchStream() {
    if (watchStream) return *watchStream;
    const WatchStreamPlatform watchPlatform{
        *platform.eventStreamSource, *platform.watchQueue, *platform.clock, fileManager,
        *platform.environment,       *platform.errorOutput};
    watchStream = std::make_shared<WorkspaceWatchStream>(
        watchPlatform, [weakDaemon = weak_from_this(), daemonQueue = queue,
                        mailbox = watchEventMailbox](std::vector<WorkspaceWatchEvent> events) {
            mailbox->put(std::move(events), [&] {
                daemonQueue->async([weakDaemon] {
                    if (const auto daemon = weakDaemon.lock()) daemon->takeWatchEvents();
                });
            });
        });
    return *watchStream;
}
