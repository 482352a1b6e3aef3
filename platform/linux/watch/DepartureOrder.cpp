#include "platform/linux/watch/DepartureOrder.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

using Index = std::size_t;
using IndexByKey = std::unordered_map<NameKey, Index, NameKeyHash>;

// For each departure those that must come before it.
class Precedence {
public:
    explicit Precedence(const std::vector<Departure>& departures)
        : before(departures.size()), inside(departures.size()), cannotArrive(departures.size()) {
        for (Index i = 0; i < departures.size(); ++i) {
            bySource.emplace(departures[i].source, i);
            if (departures[i].target) byTarget.emplace(*departures[i].target, i);
        }
        for (Index i = 0; i < departures.size(); ++i) {
            leaveBeforeFolder(i, departures[i].source.folder);
            if (departures[i].target) arriveAfterOthers(i, *departures[i].target);
        }
        for (Index i = 0; i < departures.size(); ++i) {
            if (!departures[i].target) before[i] = inside[i];
        }
    }

    std::vector<std::vector<Index>> before;
    std::vector<std::vector<Index>> inside; // what leaves the item, if that is a folder
    std::vector<bool> cannotArrive;         // its new place is in a folder that was reported elsewhere and still is

private:
    // The nearest folder above that departs as well is enough: it has its own place in the order. If that one is
    // renamed, what is in it can be told before or after.
    void leaveBeforeFolder(Index i, const FolderNode* folder) {
        while (folder) {
            const NameKey place = reportedKey(folder);
            if (const auto found = bySource.find(place); found != bySource.end()) {
                inside[found->second].push_back(i);
                return;
            }
            folder = place.folder;
        }
    }

    void arriveAfterOthers(Index i, NameKey place) {
        while (true) {
            if (const auto found = bySource.find(place); found != bySource.end() && found->second != i)
                before[i].push_back(found->second);
            if (const auto found = byTarget.find(place); found != byTarget.end() && found->second != i)
                before[i].push_back(found->second);
            if (const auto& formerPlace = place.folder->reportedPlace) {
                const auto found = bySource.find(*formerPlace);
                if (found == bySource.end())
                    cannotArrive[i] = true;
                else if (found->second != i)
                    before[i].push_back(found->second);
            }
            if (!place.folder->parent) return;
            place = {place.folder->parent, place.folder->name};
        }
    }

    IndexByKey bySource{};
    IndexByKey byTarget{};
};

enum class Progress : std::uint8_t { waiting, visiting, done };

// A walk in depth, with its own stack: files that are numbered upwards by renaming make chains of any length.
class Walk {
public:
    explicit Walk(std::vector<Departure>& all) : departures(all), precedence(all), progress(all.size()) {}

    void visit(Index start) {
        if (progress[start] != Progress::waiting) return;
        begin(start);
        while (!path.empty()) {
            auto& [current, next] = path.back();
            const auto& before = precedence.before[current];
            if (next == before.size()) {
                if (departures[current].target &&
                    (precedence.cannotArrive[current] || arrivesInRecreated(departures[current]))) {
                    tellAsRemoval(current);
                    continue;
                }
                finish(current);
                path.pop_back();
                continue;
            }
            const Index earlier = before[next++];
            if (progress[earlier] == Progress::waiting)
                begin(earlier);
            else if (progress[earlier] == Progress::visiting)
                giveUpRename(earlier);
        }
    }

    std::vector<Departure> result{};

private:
    void begin(Index index) {
        progress[index] = Progress::visiting;
        path.emplace_back(index, 0);
    }

    void finish(Index index) {
        progress[index] = Progress::done;
        result.push_back(std::move(departures[index]));
    }

    // From this departure on, the path has come back to it: all would have to wait for themselves. One of them is a
    // rename, since removals wait only for what is in the folder. As a removal it does the same.
    void giveUpRename(Index start) {
        while (!departures[path.back().first].target && path.back().first != start) leaveForLater();
        if (departures[path.back().first].target) tellAsRemoval(path.back().first);
    }

    // The departure at the end of the path.
    void tellAsRemoval(Index index) {
        Departure& departure = departures[index];
        departure.recreated = std::exchange(departure.target, std::nullopt);
        recreated.insert(*departure.recreated);
        precedence.before[index] = precedence.inside[index];
        path.back().second = 0;
    }

    // What is created comes after all departures.
    bool arrivesInRecreated(const Departure& departure) const {
        if (recreated.empty()) return false;
        for (const FolderNode* each = departure.target->folder; each->parent; each = each->parent) {
            if (recreated.contains({each->parent, each->name})) return true;
        }
        return false;
    }

    void leaveForLater() {
        progress[path.back().first] = Progress::waiting;
        path.pop_back();
    }

    std::vector<Departure>& departures;
    Precedence precedence;
    std::vector<Progress> progress;
    std::unordered_set<NameKey, NameKeyHash> recreated{};
    std::vector<std::pair<Index, Index>> path{}; // departures being visited, and how far their predecessors are done
};

} // namespace

std::vector<Departure> orderedDepartures(std::vector<Departure> departures) {
    std::ranges::stable_sort(departures, {}, &Departure::order);
    const bool isSimple = std::ranges::none_of(
        departures, [](const Departure& departure) { return departure.target || departure.item.isDirectory(); });
    if (isSimple) return departures;
    Walk walk(departures);
    for (Index i = 0; i < departures.size(); ++i) walk.visit(i);
    return std::move(walk.result);
}
