#include "tests/platform/watch/WatchGame.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/platform/watch/Told.h"

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

bool isAtOrBelow(const std::string& path, const std::string& directory) {
    return path == directory || path.starts_with(directory + "/");
}

std::string parentOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

std::string joined(const std::set<std::string>& paths) {
    std::string text;
    for (const std::string& path : paths) text += " " + path;
    return text;
}

constexpr std::size_t plentyOfWatches = 1'000'000;

} // namespace

void Keeper::begin(const std::string& directory) {
    begun.insert(directory);
    forget(directory);
    if (disk.isDirectory(directory) || items.contains(parentOf(directory))) take(directory);
    enter(directory);
}

void Keeper::enter(const std::string& directory) {
    for (const std::string& each : look(directory)) enter(each);
}

void Keeper::apply(const EventStreamBatch& batch) {
    using namespace EventStreamFlag;
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const std::string& path = *batch[i].path;
        if (batch[i].flags & itemRenamed) {
            rename(path, *batch.at(i + 1).path);
            ++i;
        } else if (batch[i].flags & rootChanged) {
            begin(path);
        } else if (batch[i].flags & itemRemoved) {
            forget(path);
        } else if (batch[i].flags & (itemCreated | itemModified)) {
            take(path);
            if (batch[i].flags & itemIsDir) enter(path);
        } else if (const auto known = items.find(path); known != items.end() && known->second.isDirectory()) {
            look(path);
        } else if (known == items.end() && begun.contains(path)) {
            begin(path);
        }
    }
}

std::vector<std::string> Keeper::look(const std::string& directory) {
    std::vector<std::string> known;
    if (!disk.isDirectory(directory)) return known;
    for (const std::string& path : paths()) {
        if (parentOf(path) == directory && !disk.exists(path)) forget(path);
    }
    for (const std::string& path : disk.paths()) {
        if (parentOf(path) != directory) continue;
        const bool isNew = take(path);
        if (!disk.isDirectory(path)) continue;
        if (isNew)
            enter(path);
        else
            known.push_back(path);
    }
    return known;
}

bool Keeper::take(const std::string& path) {
    const ItemIdentity item = disk.peek(path);
    const auto known = items.find(path);
    if (known != items.end() && known->second == item) return false;
    forget(path);
    // What is not there has gone on, and the event about that is to come.
    if (item) items.emplace(path, item);
    return true;
}

std::set<std::string> Keeper::paths() const {
    std::set<std::string> result;
    for (const auto& [path, item] : items) result.insert(path);
    return result;
}

void Keeper::forgetIf(const std::function<bool(const std::string&, ItemIdentity)>& isForgotten) {
    std::erase_if(items, [&](const auto& entry) { return isForgotten(entry.first, entry.second); });
}

void Keeper::forget(const std::string& path) {
    forgetIf([&](const std::string& each, ItemIdentity) { return isAtOrBelow(each, path); });
}

void Keeper::rename(const std::string& path, const std::string& newPath) {
    std::map<std::string, ItemIdentity> moved;
    for (const auto& [each, item] : items) {
        if (isAtOrBelow(each, path)) moved[newPath + each.substr(path.size())] = item;
    }
    forget(path);
    forget(newPath);
    items.insert(moved.begin(), moved.end());
    if (take(newPath)) return enter(newPath);
    for (const auto& [each, item] : moved) look(each);
}

void Reader::apply(const EventStreamBatch& batch) {
    using namespace EventStreamFlag;
    for (std::size_t i = 1; i < batch.size(); ++i) {
        const bool isPair = (batch[i - 1].flags & itemRenamed) && (batch[i].flags & itemRenamed);
        if (!isPair) continue;
        follow(*batch[i - 1].path, *batch[i].path);
        ++i;
    }
    for (const auto& [path, flags, fileID] : batch) {
        for (auto& [document, seen] : seenByPath) {
            if (isAtOrBelow(document, *path) || isAtOrBelow(*path, parentOf(document))) seen = disk.stateOf(document);
        }
    }
}

void Reader::follow(const std::string& path, const std::string& newPath) {
    for (const std::string& document : paths()) {
        if (!isAtOrBelow(document, path) || disk.exists(document)) continue;
        const std::string newDocument = newPath + document.substr(path.size());
        const bool isThere = disk.exists(newDocument) && !disk.isDirectory(newDocument);
        if (seenByPath.at(document).empty() || !isThere || seenByPath.contains(newDocument)) continue;
        seenByPath.erase(document);
        open(newDocument);
    }
}

std::vector<std::string> Reader::paths() const {
    std::vector<std::string> result;
    for (const auto& [path, seen] : seenByPath) result.push_back(path);
    return result;
}

std::string Reader::difference(const std::string& path) const {
    const std::string& seen = seenByPath.at(path);
    const std::string present = disk.stateOf(path);
    return seen == present ? "" : " " + path + " seen as " + seen + ", is " + present;
}

WatchGame::WatchGame(std::function<std::uint64_t()> choices, Troubles permitted)
    : troubles(permitted),
      choose(std::move(choices)),
      watcher(disk, {.quiet = milliseconds(1), .hold = milliseconds(6), .cap = milliseconds(14)}) {
    for (const char* path : {"/w", "/out", "/w/a", "/w/a/b", "/w/c", "/w/c/a"}) disk.makeDirectory(path);
    if (choose() % 2 == 0) disk.pathLimit = 5; // so that all but the root's own folders are too far down for a path
    hasKeeper = choose() % 3 != 0;
    roots = {choose() % 3 == 0 ? "/w/a" : "/w"};
    watcher.setRoots({roots.begin(), roots.end()});
    settle();
    keeper.begin(*roots.begin());
    look();
    disk.beforeEachCall = [this] {
        disk.time += microseconds(choose() % 50);
        if (isRough && choose() % 12 == 0) operate();
    };
}

void WatchGame::playRound() {
    story.clear();
    isRough = choose() % 3 != 0;
    for (std::size_t steps = 5 + choose() % 30; steps > 0; --steps) {
        const auto choice = choose() % 10;
        if (choice < 5)
            operate();
        else if (choice < 8)
            deliver(choose() % 6);
        else
            pass(milliseconds(choose() % 8));
        if (choose() % 16 == 0) changeRoots();
        if (troubles.mounts && choose() % 6 == 0) changeMounts();
        if (troubles.fewWatches && choose() % 6 == 0) changeWatchLimit();
    }
    isRough = false;
    disk.watchLimit = plentyOfWatches;
    settle();
}

std::string WatchGame::complaint() const {
    // A root that came and went since the watcher last looked for it may have been seen, and nobody can tell.
    const auto counts = [this](const std::string& path) {
        return isWithinRoots(path, [this](const std::string& root) { return disk.isDirectory(root); });
    };
    std::set<std::string> present, unwatched, believed = keeper.paths();
    std::erase_if(believed, [&](const std::string& path) { return !counts(path); });
    for (const std::string& path : disk.paths()) {
        if (!counts(path)) continue;
        present.insert(path);
        if (disk.isDirectory(path) && !disk.isWatched(path)) unwatched.insert(path);
    }
    std::string documents;
    for (const std::string& path : reader.paths()) {
        if (counts(path)) documents += reader.difference(path);
    }
    if ((believed == present || !hasKeeper) && unwatched.empty() && documents.empty()) return {};
    return "documents" + documents + "\non disk" + joined(present) + "\nbelieved" + joined(believed) + "\nunwatched" +
           joined(unwatched) + "\nstory" + story;
}

std::size_t WatchGame::watchesLeftBehind() {
    watcher.setRoots({});
    return disk.watchCount();
}

std::string WatchGame::any(const std::string& top, bool directoriesOnly) {
    std::vector<std::string> candidates;
    for (const std::string& path : disk.paths()) {
        if (isAtOrBelow(path, top) && (!directoriesOnly || disk.isDirectory(path))) candidates.push_back(path);
    }
    return candidates[choose() % candidates.size()];
}

bool WatchGame::hasEntries(const std::string& path) const {
    const auto all = disk.paths();
    const auto next = all.upper_bound(path + "/");
    return next != all.end() && isAtOrBelow(*next, path);
}

void WatchGame::operate() {
    const std::string item = any(anyTop(), false);
    const std::string directory = any(anyTop(), true);
    const std::string place = directory + "/" + std::string(1, static_cast<char>('a' + choose() % 4));
    const bool isTop = item == "/w" || item == "/out";
    const auto isFixed = [this](const std::string& path) { return disk.isMountPoint(path); };
    const bool canMove = !isTop && !isFixed(item) && !isFixed(place) && disk.deviceOf(item) == disk.deviceOf(directory);
    const auto choice = choose() % 10;
    if (choice < 2) {
        if (disk.exists(place)) return;
        note("mkdir " + place);
        disk.makeDirectory(place);
    } else if (choice < 4) {
        if (disk.isDirectory(place)) return;
        note("write " + place);
        if (!disk.exists(place)) disk.createFile(place);
        disk.writeFile(place);
        if (choose() % 4 != 0) disk.closeFile(place);
    } else if (choice < 5) {
        if (isTop || !disk.mountsWithin(item).empty()) return;
        note("rm " + item);
        disk.remove(item);
    } else if (choice < 9) {
        if (!canMove || isAtOrBelow(place, item)) return;
        if (disk.exists(place) && (disk.isDirectory(place) != disk.isDirectory(item) || hasEntries(place))) return;
        note("mv " + item + " " + place);
        disk.move(item, place);
    } else {
        if (!canMove || !disk.exists(place) || isAtOrBelow(place, item) || isAtOrBelow(item, place)) return;
        note("exchange " + item + " " + place);
        disk.exchange(item, place);
    }
}

void WatchGame::changeMounts() {
    const std::vector<std::string> mounts = disk.mountsWithin("/");
    const std::string path =
        mounts.empty() || choose() % 2 == 0 ? any(anyTop(), true) : mounts[choose() % mounts.size()];
    const std::vector<std::string> inTheWay = disk.mountsWithin(path);
    if (inTheWay.empty()) {
        note("mount " + path);
        disk.mount(path);
    } else if (inTheWay == std::vector{path}) {
        note("unmount " + path);
        disk.unmount(path);
    } else {
        return;
    }
    haveMountsChanged = true;
}

void WatchGame::changeWatchLimit() {
    disk.watchLimit = choose() % 3 == 0 ? plentyOfWatches : choose() % 8;
    note(std::to_string(disk.watchLimit) + " watches");
}

void WatchGame::deliver(std::size_t count) {
    if (haveMountsChanged && (!isRough || choose() % 2 == 0)) {
        haveMountsChanged = false;
        watcher.handleMountChange();
    }
    if (troubles.lostEvents && choose() % 12 == 0) {
        note("loss");
        unread.clear();
        disk.loseBlock();
    }
    unread += disk.takeBlock();
    std::size_t size = 0;
    for (; count > 0 && size < unread.size(); --count) {
        std::uint32_t nameSize = 0;
        std::memcpy(&nameSize, unread.data() + size + 12, sizeof nameSize);
        size += 16 + nameSize;
    }
    const std::string block = unread.substr(0, size);
    unread.erase(0, size);
    watcher.handleBlock(block, disk.time - microseconds(choose() % 3000));
}

void WatchGame::pass(std::chrono::nanoseconds time) {
    watcher.crawl(microseconds(choose() % 200));
    disk.time += time;
    const EventStreamBatch batch = watcher.advance();
    read();
    if (batch.empty()) return;
    for (const std::string& telling : told(batch)) note("told " + telling);
    keeper.apply(batch);
    reader.apply(batch);
    look();
}

// Roots can lie within each other.
void WatchGame::changeRoots() {
    static const char* const all[] = {"/w", "/w/a", "/w/c", "/out"};
    const std::string root = all[choose() % 4];
    const auto isKept = [](const std::string&) { return true; };
    const bool isNew = roots.insert(root).second;
    if (!isNew && roots.size() > 1) roots.erase(root);
    note("roots" + joined(roots));
    watcher.setRoots({roots.begin(), roots.end()});
    keeper.forgetIf([&](const std::string& path, ItemIdentity item) {
        const bool isEntry = isWithinRoots(parentOf(path), isKept);
        return !isEntry && !(roots.contains(path) && item.isDirectory());
    });
    for (const std::string& path : reader.paths()) {
        if (!isWithinRoots(parentOf(path), isKept)) reader.close(path);
    }
    // One that was thought to be gone from the folder around it, which nobody looks at any more, is a root all the
    // same.
    for (const std::string& each : roots) {
        if ((isNew && each == root) || !keeper.knows(each)) keeper.begin(each);
    }
    look();
}

bool WatchGame::isWithinRoots(const std::string& path, const std::function<bool(const std::string&)>& counts) const {
    return std::ranges::any_of(roots, [&](const std::string& root) { return isAtOrBelow(path, root) && counts(root); });
}

void WatchGame::look() {
    // What it shows it goes on showing until it hears that it is gone.
    std::erase_if(shown, [this](const std::string& path) { return !keeper.knows(path); });
    if (hasKeeper) shown.insert(roots.begin(), roots.end());
    for (const std::string& path : keeper.paths()) {
        if (hasKeeper && disk.isDirectory(path)) shown.insert(path);
    }
    watcher.setInterest({.directoryPaths = {shown.begin(), shown.end()}, .documentPaths = reader.paths()});
}

void WatchGame::read() {
    // A root that is away is looked for now and then only.
    const auto isKnown = [this](const std::string& root) { return keeper.knows(root); };
    const std::vector<std::string> documents = reader.paths();
    if (!documents.empty() && choose() % 4 == 0) {
        const std::string& path = documents[choose() % documents.size()];
        if (isWithinRoots(path, isKnown)) reader.lookAt(path);
    }
    if (documents.size() > 2 || choose() % 4 != 0) return;
    const std::string path = any("/w", false);
    if (disk.isDirectory(path) || roots.contains(path) || !isWithinRoots(path, isKnown)) return;
    note("open " + path);
    reader.open(path);
    look();
}

void WatchGame::settle() {
    for (const WatchTime end = disk.time + seconds(12); disk.time < end;) {
        deliver(1'000'000);
        watcher.crawl(seconds(1));
        pass(milliseconds(3));
        const auto now = watcher.statistics();
        if (now.pendingNames > 0 || now.waiting > 0) continue;
        disk.time = std::max(disk.time, *watcher.nextDeadline());
    }
}
