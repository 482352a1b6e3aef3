#include <utility>

#include "platform/linux/watch/TreeWatcher.h"

bool TreeWatcher::needsPolling(const FolderNode* folder) const {
    return folder->watch < 0 || folder->isRemote;
}

std::chrono::nanoseconds TreeWatcher::pollInterval() const {
    return std::chrono::seconds(system.canWatch() ? 2 : 1);
}

void TreeWatcher::pollFoldersOfInterest() {
    for (const std::string& path : paths.folders) {
        FolderNode* folder = find(path);
        if (!folder || !folder->isListed)
            addInterest(path);
        else if (needsPolling(folder))
            poll(folder);
    }
}

// Looks for what no event will tell: names through the comparison with the snapshot, contents by date and size.
void TreeWatcher::poll(FolderNode* folder) {
    compare(folder);
    if (folder->isDead) return;
    const OpenedFolder opened = system.openFolder(currentPath(folder), linksAt(folder), OpenFor::listing);
    if (!opened.folder || opened.folder->status().identity != folder->identity) return;
    const FolderStatus status = opened.folder->status();
    PolledFolder& polled = polledFolders[folder];
    const PolledFolder former = std::exchange(polled, {.stamp = status.stamp, .isSettled = status.isSettled});
    // What came and went since may have been seen by whoever looked in between.
    if (!former.isSettled || former.stamp != status.stamp) pending.notice(currentPath(folder), system.now());
    opened.folder->forEachEntry([&](std::string_view entryName, ItemIdentity item) {
        std::string name(entryName);
        const auto stamp = item.isDirectory() ? std::nullopt : opened.folder->fileStamp(name);
        if (!stamp) return;
        const auto before = former.files.find(name);
        const bool isChanged = before != former.files.end() && before->second != *stamp;
        if (isChanged) pending.closedAfterWriting({folder, name}, system.now());
        polled.files.emplace(std::move(name), *stamp);
    });
}
