#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/NodeTable.h"
#include "platform/linux/FileIdentity.h"
#include "platform/linux/watch/FolderSnapshot.h"

struct FolderNode;

// A name in a folder.
struct NameKey {
    FolderNode* folder{};
    std::string name{};

    bool operator==(const NameKey&) const = default;
};

struct NameKeyHash {
    std::size_t operator()(const NameKey& key) const;
};

// How a folder's first listing is taken: as what everybody knows anyway, or as news.
enum class FirstListing : std::uint8_t { known, news };

// A folder of a watched tree. Its path follows from its ancestors, so that moving it is a matter of one pointer. There
// is one for each watched folder, so every byte counts.
struct FolderNode {
    FolderNode* parent{}; // null for the top of a tree
    std::string name{};   // for a top, its whole path
    FolderNode* firstChild{};
    FolderNode* nextSibling{};
    FolderNode* previousSibling{};
    // The name under which the folder was last reported, while that is another one than it has now: from its move to
    // the report that follows, when all becomes known under its present place or not at all.
    std::unique_ptr<NameKey> reportedPlace{};
    FolderSnapshot snapshot{};
    FileIdentity identity{};
    std::int64_t
        settledStamp{}; // nanoseconds of the last change before the listing; 0 when that was too fresh to trust
    int watch = -1;
    std::uint32_t number{};        // by which the tree finds it
    std::uint32_t timesQueued = 0; // the crawl has so many pointers to it
    std::uint8_t failures : 4 = 0; // how many times in a row it was not found where it should be
    FirstListing firstListing : 1 {};
    bool isAttached : 1 = false; // to its parent, or as the top of a tree
    bool isListed : 1 = false;
    bool isDead : 1 = false;
    bool isOfInterest : 1 = false;
    bool mustCompareBelow : 1 = false; // what was lost may concern everything in it
    bool isRemote : 1 = false;         // others may change it without a word from this kernel
    bool hasGone : 1 = false;          // the kernel took the watch away, or another folder was found in its place
};

// The folders of all watched trees. A folder that goes away stays allocated until release(), because pending changes
// point to it.
class FolderTree {
public:
    FolderTree() = default;
    FolderTree(const FolderTree&) = delete;

    FolderNode* addTop(const std::string& path);
    FolderNode* addChild(FolderNode* parent, std::string_view name);
    FolderNode* child(const FolderNode* parent, std::string_view name) const;

    // Takes the folder out of its parent. Its path stays what it was until it is placed somewhere or killed.
    void detach(FolderNode* folder);
    // Puts a detached folder into a parent that is not in it. One that was reported keeps the name under which it was.
    void place(FolderNode* folder, FolderNode* parent, std::string_view name);
    const std::vector<FolderNode*>& displacedFolders() const { return displaced; } // some may have a reported place
    // From now on all folders count as reported where they are.
    void forgetReportedPlaces();
    // Makes an attached folder the top of a tree of its own, and the other way round. Nothing is remembered.
    void promote(FolderNode* folder);
    void adopt(FolderNode* top, FolderNode* parent, std::string_view name);
    // Detaches the folder and marks it and all below as gone. gone(folder) is called for each.
    template <class Gone>
    void kill(FolderNode* folder, const Gone& gone) {
        if (folder->isDead) return;
        detach(folder);
        forSubtree(folder, [&](FolderNode* each) {
            forget(each);
            each->isDead = true;
            dead.push_back(each);
            gone(each);
        });
    }
    // Frees all dead folders but those in use and those that the crawl still has to pass.
    void release(const std::unordered_set<const FolderNode*>& inUse);

    // Parents before children.
    template <class Visit>
    static void forSubtree(FolderNode* folder, const Visit& visit) {
        std::vector<FolderNode*> waiting{folder};
        while (!waiting.empty()) {
            FolderNode* each = waiting.back();
            waiting.pop_back();
            for (FolderNode* child = each->firstChild; child; child = child->nextSibling) waiting.push_back(child);
            visit(each);
        }
    }

    template <class Visit>
    void forEachAttached(const Visit& visit) const {
        for (std::uint32_t number = 0; number < allocated; ++number) {
            if (FolderNode* folder = node(number); folder->isAttached) visit(folder);
        }
    }

    FolderNode* node(std::uint32_t number) const { return &blocks[number / nodesInBlock][number % nodesInBlock]; }
    std::size_t size() const { return nodesByName.size(); }

private:
    static constexpr std::uint32_t nodesInBlock = 128;

    FolderNode* allocate();
    void free(FolderNode* folder);
    void attach(FolderNode* folder, FolderNode* parent, std::string_view name);
    void remember(FolderNode* folder);
    void forget(FolderNode* folder);

    std::vector<std::unique_ptr<FolderNode[]>> blocks{};
    std::uint32_t allocated = 0; // every node ever made in the blocks has a number below this
    FolderNode* firstFree{};     // a list through nextSibling
    std::size_t live = 0;        // nodes in use, be they dead
    NodeTable nodesByName{};     // all that are attached, by parent and name
    std::vector<FolderNode*> dead{};
    std::vector<FolderNode*> displaced{}; // those that may have a reported place
};

FolderNode* topOf(FolderNode* folder);
bool isWithin(const FolderNode* folder, const FolderNode* ancestor); // or the same

std::string joinedPath(std::string directoryPath, std::string_view name);
std::string_view folderPathAbove(std::string_view path);
bool isBelow(std::string_view path, std::string_view directoryPath);
bool isPathWithin(std::string_view path, std::string_view directoryPath);
std::string currentPath(const FolderNode* folder);
std::string currentPath(const NameKey& key);

// Where the folder is for those who have heard only what was reported so far.
NameKey reportedKey(const FolderNode* folder);
std::string reportedPath(const FolderNode* folder);
std::string reportedPath(const NameKey& key);
