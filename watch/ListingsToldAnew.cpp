#include <algorithm>
#include <cassert>
#include <exception>
#include <new>

#include "daemon/EditorDocumentDaemon.h"

// What the daemon does when events were lost, or could not be told to the end.

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds shortestDelay = 100ms;
constexpr std::chrono::nanoseconds longestDelay = 1min;

} // namespace

void EditorDocumentDaemon::tellEverythingAnewSoon() {
    assert(queue->isCurrent());
    mustTellEverythingAnew = true;
    if (isTellingAnewSubmitted) return;
    delayOfTellingAnew = std::clamp(2 * delayOfTellingAnew, shortestDelay, longestDelay);
    try {
        queue->asyncAfter(delayOfTellingAnew, [weakDaemon = weak_from_this()] {
            const auto daemon = weakDaemon.lock();
            if (!daemon) return;
            daemon->isTellingAnewSubmitted = false;
            if (daemon->mustTellEverythingAnew) daemon->tellEverythingAnew();
        });
        isTellingAnewSubmitted = true;
    } catch (const std::bad_alloc&) {
        // The next events come back to it.
    }
}

// Each part by itself: one that finds no room even now does not keep the others from being told.
void EditorDocumentDaemon::tellEverythingAnew() {
    assert(queue->isCurrent());
    mustTellEverythingAnew = false;
    const auto attempt = [this](const auto& part) {
        try {
            part();
        } catch (const std::exception&) {
            tellEverythingAnewSoon();
        }
    };
    attempt([this] { refreshWatchRoots(); });
    attempt([&] {
        std::vector<std::string> rootPaths;
        for (const auto& [rootPath, workspace] : workspacesByRootPath) rootPaths.push_back(rootPath);
        for (const std::string& rootPath : rootPaths) attempt([&] { tellListingsAnew(rootPath); });
    });
    attempt([&] {
        std::vector<std::string> documentIDs;
        for (const auto& [documentID, document] : documentsByID) documentIDs.push_back(documentID);
        for (const std::string& documentID : documentIDs) attempt([&] { checkDocumentForChanges(documentID); });
    });
    attempt([this] { refreshWatchRoots(); });
    if (!mustTellEverythingAnew) delayOfTellingAnew = {};
}

// The listings that are remembered may be newer than those that the client has.
void EditorDocumentDaemon::tellListingsAnew(const std::string& rootPath) {
    scheduleWorkspaceEventNodePathIndexRebuild(rootPath);
    const std::set<std::string>& loaded = workspacesByRootPath.at(rootPath).loadedDirectoryPaths;
    emitWorkspaceDirectoryUpdates(
        DirectoryRefreshPass{
            .rootPath = rootPath, .pendingPaths = {loaded.begin(), loaded.end()}, .directoryPathsToTell = loaded},
        EmitMutationEvents::no);
}
