#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/EventStream.h"
#include "platform/linux/watch/FolderTree.h"
#include "platform/linux/watch/FoldersByWatch.h"
#include "platform/linux/watch/KernelRecord.h"
#include "platform/linux/watch/PendingChanges.h"
#include "platform/linux/watch/WatchSystem.h"

// Watches trees of folders: puts a watch on each folder, keeps the picture of the trees in step with what the kernel
// tells, and knows when to tell what. It never waits and has no thread; its owner hands it what was read from the
// kernel and calls it again when it asks for it. All on one queue.
class TreeWatcher {
public:
    explicit TreeWatcher(WatchSystem& watchSystem, DeliveryPolicy deliveryPolicy = {});

    // Replaces the roots. What the old and the new ones have in common goes on as it is.
    void setRoots(const std::vector<std::string>& paths);
    void setInterest(const EventStreamInterest& newInterest);

    // Takes a block as read from the kernel. What it tells has happened by the time at which it was read.
    void handleBlock(std::string_view block, WatchTime readAt);
    void handleMountChange();

    // Watches folders that wait for it, at most for the given time.
    void crawl(std::chrono::nanoseconds budget);
    bool hasWork() const { return !urgent.empty() || (!background.empty() && !isOutOfWatches); }

    // When advance() is to be called next; absent when nothing is watched.
    std::optional<WatchTime> nextDeadline() const;
    // Whether advance() should have been called long ago.
    bool isOverdue() const;
    // Does what is due by now and returns what is to be told; nothing, as a rule.
    EventStreamBatch advance();

    struct Statistics {
        std::size_t folders{};
        std::size_t watches{};
        std::size_t waiting{}; // folders that the crawl has not come to
        std::size_t pendingNames{};
        std::size_t snapshotBytes{};
    };
    Statistics statistics() const;

private:
    struct Root {
        std::string path{};
        FolderNode* node{}; // never a dead one; absent while there is no such directory
        bool isDocumentRoot = false;
        bool isAbsenceUntold = false;   // somebody may still take it for present, should it be absent
        std::size_t watchedFolders = 0; // counted for document roots only
    };

    // Nearly all folders of a large tree wait at one time, so a step is small.
    struct CrawlStep {
        std::uint32_t folderNumber : 31 {};
        bool isComparison : 1 = false; // with the snapshot, should the folder have been listed before
    };

    struct OpenAncestor {
        const FolderNode* folder{};
        std::unique_ptr<OpenFolder> contents{};
    };

    // What the last poll saw. Before the first one a change may have happened as after one that saw a young stamp.
    struct PolledFolder {
        std::int64_t stamp{};
        bool isSettled = false;
        std::unordered_map<std::string, FileStamp> files{};
    };

    // Events.
    void handleRecord(const KernelRecord& record, WatchTime now);
    void handleFolderRecord(FolderNode* folder, const KernelRecord& record, WatchTime now);
    void handleNameRecord(FolderNode* folder, const KernelRecord& record, WatchTime now);
    void handleCreation(const NameKey& key, const KernelRecord& record, WatchTime now);
    void handleNewRights(FolderNode* folder, WatchTime now);
    void leave(FolderNode* folder);
    void handleArrival(const NameKey& key, const KernelRecord& record, WatchTime now);
    void handleOverflow(WatchTime now);
    bool isClosingDue(WatchTime now) const;
    EventStreamBatch closeWindow(WatchTime now);
    std::optional<std::vector<ItemIdentity>> itemsIn(const FolderNode& folder, const std::vector<std::string>& names);

    // Single folders.
    void enter(FolderNode* folder, std::deque<CrawlStep>& queueForChildren);
    OpenedFolder open(const FolderNode* folder, const std::string& path);
    void keepOpen(const FolderNode* folder, const std::string& path, std::unique_ptr<OpenFolder> contents);
    bool isDistant(const std::string& path) const { return path.size() >= system.longestPath(); }
    int watch(FolderNode* folder, const std::string& path, const OpenFolder& contents);
    void watchOnceThereIsOne(FolderNode* folder);
    AddedWatch addWatch(const FolderNode* folder, const std::string& path, const OpenFolder& contents);
    void own(FolderNode* folder, int watch);
    void disown(FolderNode* folder);
    void handleRefusal(FolderNode* folder, int error);
    void retryLater(FolderNode* folder);
    void doubt(FolderNode* folder);
    void compareAtNextClosing(FolderNode* folder);
    void list(FolderNode* folder, const OpenFolder& contents, std::deque<CrawlStep>& queueForChildren);
    void compareAll(FolderNode* top);
    void compare(FolderNode* folder);
    bool keepWatch(FolderNode* folder, const std::string& path, const OpenFolder& contents);
    void compareEntries(FolderNode* folder, const OpenFolder& contents);
    void compareMissing(FolderNode* folder, const std::map<std::string, ItemIdentity>& present);
    void comparePresent(const NameKey& key, ItemIdentity listed, const OpenFolder& contents);
    void replace(FolderNode* folder);
    void kill(FolderNode* folder);
    void discard(FolderNode* folder);
    FolderNode* addFolder(FolderNode* parent, std::string_view name, FirstListing listing);
    void enqueue(std::deque<CrawlStep>& queue, FolderNode* folder, bool isComparison);
    void take(std::deque<CrawlStep>& queue);
    bool takeBackWatch();
    Root* limitingRoot(FolderNode* folder);
    FollowLinks linksAt(const FolderNode* folder) const { return folder->parent ? FollowLinks::no : FollowLinks::yes; }

    // Roots and interest.
    FolderNode* find(std::string_view path) const;
    FolderNode* descend(FolderNode* top, std::string_view path) const;
    FolderNode* findListed(std::string_view path);
    FolderNode* topAbove(std::string_view path) const;
    void attach(Root& root);
    void adoptTopsWithin(FolderNode* top);
    void detach(Root& root);
    void abandon(FolderNode* top);
    void noticeAbsence(const Root& root);
    bool isLost(const Root& root);
    void checkRoots(WatchTime now);
    void loseRoot(Root& root, WatchTime now);
    void limitDocumentRoots();
    void addInterest(const std::string& folderPath);
    void watchAncestors();
    void crawlUnlisted(FolderNode* folder);

    // Mounts.
    // How what was found at a folder's path stands in the folder's parent.
    enum class Standing {
        elsewhere,
        listed,   // what the listing of the parent told of
        unlisted, // there all the same
        mounted   // over what is there
    };
    Standing standing(const FolderNode* folder, FileIdentity identity);
    void correct(FolderNode* folder, Standing found);
    void addPathsThroughLinks(std::vector<MountPoint>& mountPoints);
    void lookForRecentMountsSoon(WatchTime now);
    void lookForRecentMounts(WatchTime now);
    bool isWithinRoots(const std::string& path) const;
    std::vector<FolderNode*> nearestTo(const std::string& path) const;

    // Polling.
    bool needsPolling(const FolderNode* folder) const;
    void pollFoldersOfInterest();
    void poll(FolderNode* folder);
    std::chrono::nanoseconds pollInterval() const;

    WatchSystem& system;
    const DeliveryPolicy policy;
    FolderTree tree{};
    PendingChanges pending;
    std::vector<Root> roots{}; // sorted by path
    EventStreamInterest interest{};
    ReportingPaths paths{};
    FoldersByWatch foldersByWatch{tree};
    std::unordered_map<std::string, int> watchByAncestor{};
    std::deque<CrawlStep> urgent{};               // of folders that events or interest lead to
    std::deque<CrawlStep> background{};           // of folders that nobody looks at
    std::vector<OpenAncestor> openAncestors{};    // while there is work, of folders that are far down
    std::vector<FolderNode*> waitingForClosing{}; // of the window, to be compared then
    std::unordered_map<FolderNode*, PolledFolder> polledFolders{};
    std::vector<MountPoint> mounts{};
    std::vector<int> recentMounts{}; // their numbers, for as long as an event may change where they are in the tree
    int looksForMounts = 0;          // that are left
    bool isOutOfWatches = false;
    bool hasBeenRefused = false; // somewhere, by want of rights
    bool mustWatchAncestors = false;
    bool mustLookAtAll = false; // that is of interest, at the next check
    bool isComparingAll = false;
    bool mustCompareAllAgain = false;
    WatchTime nextCheck{};
    WatchTime nextPoll{};
};
