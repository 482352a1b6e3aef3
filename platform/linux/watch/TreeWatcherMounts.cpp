#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/linux/watch/TreeWatcher.h"

void TreeWatcher::handleMountChange() {
    openAncestors.clear();
    const WatchTime now = system.now();
    const std::vector<MountPoint> former = std::exchange(mounts, system.mountPoints());
    std::vector<MountPoint> changed;
    std::ranges::set_symmetric_difference(former, mounts, std::back_inserter(changed));
    addPathsThroughLinks(changed);
    // Another one that has come and gone may have been looked into, and nobody can say which.
    mustLookAtAll = true;
    for (const MountPoint& mount : changed) {
        // By the time that anybody looks, this change may have been taken back.
        pending.noticeFoldersOfInterest(mount.path, paths, now);
        if (std::ranges::any_of(roots, [&](const Root& root) { return isPathWithin(root.path, mount.path); })) {
            mustWatchAncestors = true;
            pending.touchWindow(now);
        }
        for (FolderNode* folder : nearestTo(mount.path)) {
            // Of one that was not listed nothing is known that would tell it from another.
            const bool isMounted = folder->parent && currentPath(folder) == mount.path;
            if (isMounted && !folder->isListed) pending.forgotten({folder->parent, folder->name}, now);
            enqueue(urgent, folder, true);
        }
        const bool isThere = std::ranges::find(mounts, mount.mountID, &MountPoint::mountID) != mounts.end();
        if (isThere && isWithinRoots(mount.path)) recentMounts.push_back(mount.mountID);
    }
    lookForRecentMountsSoon(now);
}

// The kernel's table knows nothing of the links that lead to a root.
void TreeWatcher::addPathsThroughLinks(std::vector<MountPoint>& mountPoints) {
    const std::size_t count = mountPoints.size();
    for (const Root& root : roots) {
        const std::string realPath = count > 0 ? system.realPath(root.path) : root.path;
        if (realPath == root.path) continue;
        for (std::size_t i = 0; i < count; ++i) {
            const auto [path, mountID] = mountPoints[i];
            if (isPathWithin(realPath, path)) {
                mountPoints.push_back({root.path, mountID});
            } else if (isBelow(path, realPath)) {
                const std::size_t rest = path.find_first_not_of('/', realPath.size());
                mountPoints.push_back({joinedPath(root.path, path.substr(rest)), mountID});
            }
        }
    }
}

void TreeWatcher::lookForRecentMountsSoon(WatchTime now) {
    if (recentMounts.empty()) return;
    looksForMounts = 10;
    pending.touchWindow(now);
}

// The table of mounts is ahead of the events, so that what is mounted at a path may not be there in the tree yet.
void TreeWatcher::lookForRecentMounts(WatchTime now) {
    if (looksForMounts == 0) return;
    --looksForMounts;
    bool areKnown = true;
    std::vector<MountPoint> present = system.mountPoints();
    std::erase_if(present, [&](const MountPoint& mount) {
        return std::ranges::find(recentMounts, mount.mountID) == recentMounts.end();
    });
    addPathsThroughLinks(present);
    for (const MountPoint& mount : present) {
        if (!isWithinRoots(mount.path)) continue;
        const auto identity = system.directoryAt(mount.path);
        const std::vector<FolderNode*> folders = nearestTo(mount.path);
        areKnown &= !folders.empty();
        for (FolderNode* folder : folders) {
            const bool isRight = !folder->isListed || folder->identity == identity;
            if (isRight && currentPath(folder) == mount.path) continue;
            areKnown = false;
            doubt(folder);
        }
    }
    if (areKnown)
        looksForMounts = 0;
    else
        pending.touchWindow(now);
}

bool TreeWatcher::isWithinRoots(const std::string& path) const {
    return std::ranges::any_of(roots, [&](const Root& root) { return isPathWithin(path, root.path); });
}

// The folder at the path or else the one around it, in each of the trees that the path leads to.
std::vector<FolderNode*> TreeWatcher::nearestTo(const std::string& path) const {
    std::vector<FolderNode*> folders;
    for (const Root& root : roots) {
        if (!root.node || root.node->parent || !isPathWithin(path, root.path)) continue;
        FolderNode* folder = descend(root.node, path);
        if (!folder) folder = descend(root.node, folderPathAbove(path));
        if (folder) folders.push_back(folder);
    }
    return folders;
}

// Of a mounted folder a listing tells the number of the folder that lies below it.
TreeWatcher::Standing TreeWatcher::standing(const FolderNode* folder, FileIdentity identity) {
    const FolderNode* parent = folder->parent;
    const ItemIdentity listed = parent->snapshot.find(folder->name);
    if (!listed || FileIdentity{parent->identity.device, listed.inode} == identity) return Standing::listed;
    const OpenedFolder opened = open(parent, currentPath(parent));
    if (!opened.folder || opened.folder->status().identity != parent->identity) return Standing::elsewhere;
    const OpenedFolder entry = opened.folder->openFolder(folder->name);
    if (!entry.folder || entry.folder->status().identity != identity) return Standing::elsewhere;
    const bool isSameMount = entry.folder->status().mountNumber == opened.folder->status().mountNumber;
    return isSameMount && identity.device == parent->identity.device ? Standing::unlisted : Standing::mounted;
}

// What was told of the folder's name may be another one's.
void TreeWatcher::correct(FolderNode* folder, Standing found) {
    if (found == Standing::listed) return;
    const NameKey key{folder->parent, folder->name};
    const ItemIdentity present{folder->identity.inode, ItemType::directory};
    if (key.folder->snapshot.find(key.name) == present) return;
    // Who listed the parent did not see the number below the mount.
    if (found == Standing::mounted && !pending.isTouched(key)) return key.folder->snapshot.set(key.name, present);
    pending.doubted(key, system.now());
}
