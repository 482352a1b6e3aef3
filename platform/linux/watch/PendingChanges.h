#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "platform/EventStream.h"
#include "platform/linux/watch/DeliveryWindow.h"
#include "platform/linux/watch/DepartureOrder.h"
#include "platform/linux/watch/FolderTree.h"
#include "platform/linux/watch/KnownFolders.h"
#include "platform/linux/watch/NetEffect.h"

// Paths that decide about details of what is told.
struct ReportingPaths {
    std::vector<std::string> roots{};
    std::set<std::string> folders{}; // of interest: they are named when a folder above them comes or goes as a whole
    std::set<std::string> documents{};
};

// What happened since the last report, as names that were touched. Events only say where to look and what moved where;
// what is told when the window closes is the difference between what was last reported and what is there by then. So
// everything that comes and goes in between is never heard of, and a save in several steps is a modification.
//
// Makes no system calls: times are given by the caller, and the disk is asked through a function.
class PendingChanges {
public:
    // The items at the names, in their order; absent when the path leads to another folder by now, since its move has
    // not been heard of yet.
    using LookUp =
        std::function<std::optional<std::vector<ItemIdentity>>(const FolderNode&, const std::vector<std::string>&)>;

    PendingChanges(FolderTree& folders, DeliveryPolicy deliveryPolicy) : tree(folders), policy(deliveryPolicy) {}

    // Only a regular file is written; whether the name has one, the disk tells, and is asked only where it matters.
    enum class IsBeingWritten { no, ifFile };

    // Events about a name.
    void attributesChanged(const NameKey& key, WatchTime now);
    void modified(const NameKey& key, WatchTime now);
    void closedAfterWriting(const NameKey& key, WatchTime now);
    void created(const NameKey& key, IsBeingWritten isBeingWritten, WatchTime now);
    void vanished(const NameKey& key, WatchTime now);

    // The halves of a rename. The folder that leaves, if it is one, comes back when it arrives under a name of the same
    // tree; otherwise the item counts as created.
    void movedAway(const NameKey& key, std::uint32_t cookie, FolderNode* folder, WatchTime now);
    FolderNode* movedHere(const NameKey& key, std::uint32_t cookie, WatchTime now);
    // Gives up waiting for second halves; returns the folders that have left.
    std::vector<FolderNode*> forgetMoves();

    // What was known of the folder at this name is not known any more.
    void forgotten(const NameKey& key, WatchTime now);
    // What is there may be another item than was told.
    void doubted(const NameKey& key, WatchTime now) { touch(key, now); }

    // Reports without a name in a folder.
    void rootChanged(const std::string& path, WatchTime now);
    void notice(const std::string& path, WatchTime now);
    void noticeFoldersOfInterest(const std::string& path, const ReportingPaths& paths, WatchTime now);

    bool isTouched(const NameKey& key) const { return changes.contains(key); }

    // Nothing in this folder or below is to be reported any more. Returns the folders that had left and not arrived.
    std::vector<FolderNode*> forgetWithin(const FolderNode* folder);
    // Keeps the window open for whoever has more to find.
    void touchWindow(WatchTime now);

    std::optional<WatchTime> closing() const; // absent while there is nothing
    // Asks about the new names of which nothing more has been heard. To be called when the window is about to close,
    // which it may put off.
    void findFilesBeingWritten(const std::function<ItemIdentity(const NameKey&)>& lookUp);
    // The folders whose second half did not come and will not be waited for. To be killed before the closing.
    std::vector<FolderNode*> takeDeparted(WatchTime now);
    EventStreamBatch close(WatchTime now, const LookUp& lookUp, const ReportingPaths& paths);
    // Folders in which the disk has other folders than the tree has. Either there are events about it to come, or they
    // have been lost.
    std::unordered_set<FolderNode*> takeDoubtful() { return std::exchange(doubtful, {}); }
    // Folders that were found elsewhere than expected several times in a row: no event explains it.
    std::vector<FolderNode*> takeMisplaced();

    std::size_t size() const { return changes.size(); }
    // All folders that pending changes point to, right after a closing.
    std::unordered_set<const FolderNode*> foldersInUse() const;

private:
    enum class Occupant : std::uint8_t { unchanged, nobody, newcomer, mover };

    struct Change {
        std::uint64_t order{};
        Occupant occupant{};
        bool isWritten = false;
        bool hasNewAttributes = false;
        bool hasBeenAnother = false;  // the name was free meanwhile, or had another item
        bool isForgotten = false;     // a folder at it, with all that was reported in that
        bool isWrittenIfFile = false; // since it was born
        std::optional<WatchTime> unsettledSince{};
        WatchTime born{};       // of a newcomer
        NameKey cameFrom{};     // of a mover: where it was last reported
        bool isNewSave = false; // of a mover: the file that was reported there has been replaced by it
    };
    using ChangeByKey = std::unordered_map<NameKey, Change, NameKeyHash>;
    using KeySet = std::unordered_set<NameKey, NameKeyHash>;

    struct MovingItem {
        NameKey left{};
        Occupant occupant{};
        WatchTime born{};
        NameKey cameFrom{};
        bool isNewSave = false;
        FolderNode* folder{};
    };

    struct Found {
        const NameKey* key{};
        Change* change{};
        ItemIdentity was{}; // as last reported
        ItemIdentity is{};
    };

    struct ReportedItem {
        const NameKey* key{}; // of the change, or of the departure, that it stands for
        ItemIdentity item{};
        std::uint64_t order{};
        std::uint32_t flag{};
    };

    // What is to be told.
    struct Report {
        std::vector<Departure> departures{}; // in their order, once they are told
        std::vector<ReportedItem> creations{};
        std::vector<ReportedItem> modifications{};

        void addModification(ReportedItem item, std::uint32_t flag) {
            item.flag = flag;
            modifications.push_back(std::move(item));
        }
    };

    Change& touch(const NameKey& key, WatchTime now);
    void setOccupant(const NameKey& key, Change& change, Occupant occupant, WatchTime now);
    void setUnsettled(Change& change, std::optional<WatchTime> since);
    void openWindow(WatchTime now);

    using TargetBySource = std::unordered_map<NameKey, NameKey, NameKeyHash>;
    // The names to look at in one folder.
    struct Look {
        FolderNode* folder{};
        std::size_t depth{};
        std::vector<Found> founds{};
    };

    TargetBySource targetsBySource() const;
    KeySet carriedKeys(const TargetBySource& targets, WatchTime now) const;
    bool addWithRenames(const NameKey& key, const TargetBySource& targets, KeySet& keys) const;
    bool concernsFolder(const NameKey& key) const;
    std::vector<Found> lookAtAll(const LookUp& lookUp, WatchTime now);
    std::vector<Look> looks(const KeySet& carried);
    bool lookAt(Look& look, const LookUp& lookUp, std::unordered_set<const FolderNode*>& unreachable);
    bool isRenameOf(const NameKey& source, const Found& found, const ItemByName& present,
                    KnownFolders& knownFolders) const;
    NameHistory historyOf(const Found& found, const ItemByName& present, KnownFolders& knownFolders,
                          const ReportingPaths& paths, WatchTime now) const;
    static bool mayMatterToOthers(const Found& found);
    Report reportOf(const std::vector<Found>& all, const ReportingPaths& paths, WatchTime now);
    void noticeStaleLooks(const NameKey& key, const ReportingPaths& paths, WatchTime now);
    void tellDepartures(Report& report, EventStreamBatch& batch, const ReportingPaths& paths, WatchTime now);
    void tellCreations(Report& report, EventStreamBatch& batch, const ReportingPaths& paths, WatchTime now);
    void forgetOldBirths(WatchTime now);
    void settle(const std::vector<Found>& all, WatchTime now);
    void expectNews(const NameKey& key);
    bool isFreshTemporary(const NameKey& key, ItemIdentity item, WatchTime now) const;

    FolderTree& tree;
    const DeliveryPolicy policy;
    ChangeByKey changes{};
    std::unordered_map<std::uint32_t, std::vector<MovingItem>> moving{}; // one in each tree that shows the folder
    std::multiset<WatchTime> unsettled{};
    std::size_t writtenIfFile = 0; // changes of which that is to be found out
    std::vector<std::string> changedRoots{};
    std::set<std::string> notices{};
    std::optional<WatchTime> first{};
    WatchTime last{};
    std::uint64_t nextOrder = 0;

    // Files that were reported as created, by inode and name, for as long as they may be temporaries of a slow save.
    struct Birth {
        std::uint64_t inode{};
        std::string name{};
        WatchTime time{};
    };
    std::deque<Birth> births{};
    std::unordered_multimap<std::uint64_t, const Birth*> birthByInode{};
    std::unordered_map<FolderNode*, int> misplaced{}; // how many closings in a row
    std::unordered_set<FolderNode*> doubtful{};
};
