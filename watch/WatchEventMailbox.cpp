#include "watch/WatchEventMailbox.h"

#include <new>
#include <utility>

namespace {

constexpr std::size_t toleratedRepetitions = 10'000;

std::string keyOf(const WorkspaceWatchEvent& event) {
    std::string key(nameOf(event.kind));
    for (const std::string* text : {&event.rootPath, &event.path}) (key += '\0') += *text;
    if (event.relatedPath) (key += '\0') += *event.relatedPath;
    return key;
}

} // namespace

void WatchEventMailbox::put(std::vector<WorkspaceWatchEvent> list, const std::function<void()>& announce) noexcept {
    {
        const std::lock_guard lock(mutex);
        try {
            if (list.empty()) isIncomplete = true;
            if (isEmpty()) {
                onlyList = std::move(list);
            } else {
                for (WorkspaceWatchEvent& event : std::exchange(onlyList, {})) enter(std::move(event));
                for (WorkspaceWatchEvent& event : list) enter(std::move(event));
            }
        } catch (const std::bad_alloc&) {
            giveUpEvents();
        }
        if (std::exchange(isAnnounced, true)) return;
    }
    try {
        announce();
    } catch (const std::bad_alloc&) {
        const std::lock_guard lock(mutex);
        isAnnounced = false; // the next list announces this one as well
    }
}

WatchEventNews WatchEventMailbox::take() {
    const std::lock_guard lock(mutex);
    isAnnounced = false;
    WatchEventNews news{.events = std::move(onlyList), .isIncomplete = isIncomplete};
    try {
        news.events.reserve(news.events.size() + events.size());
        for (WorkspaceWatchEvent& event : events) news.events.push_back(std::move(event));
    } catch (const std::bad_alloc&) {
        news.isIncomplete = true;
    }
    giveUpEvents();
    isIncomplete = false;
    return news;
}

// An event takes the place of an equal one, since the receiver looks at the disk as it is by then. Only across a rename
// the two may mean different items.
void WatchEventMailbox::enter(WorkspaceWatchEvent event) {
    const std::string key = keyOf(event);
    distinctEvents.insert(std::hash<std::string>()(key));
    events.push_back(std::move(event));
    const auto entered = std::prev(events.end());
    if (entered->kind == WorkspaceWatchEventKind::itemRenamed) {
        eventsSinceRename.clear();
    } else if (const auto [earlier, isNew] = eventsSinceRename.try_emplace(key, entered); !isNew) {
        events.erase(std::exchange(earlier->second, entered));
    }
    // Things that are renamed to and fro all the time.
    if (events.size() > toleratedRepetitions + 2 * distinctEvents.size()) giveUpEvents();
}

void WatchEventMailbox::giveUpEvents() {
    isIncomplete = true;
    onlyList.clear();
    events.clear();
    eventsSinceRename.clear();
    distinctEvents.clear();
}
