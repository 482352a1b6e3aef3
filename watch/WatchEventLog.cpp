#include "watch/WatchEventLog.h"

#include <optional>

namespace {

std::string beginning(WorkspaceWatchEventKind kind, const std::string& path) {
    return std::string(nameOf(kind)) + " path=" + path;
}

std::string directoryText(std::optional<bool> isDirectory) {
    if (!isDirectory) return "-";
    return *isDirectory ? "true" : "false";
}

std::string line(const RawEvent& event) {
    return beginning(event.kind, event.path) + " id=" + event.nodeIDHint.value_or("-") +
           " dir=" + directoryText(event.isDirectory);
}

std::string line(const WorkspaceWatchEvent& event) {
    return beginning(event.kind, event.path) + " related=" + event.relatedPath.value_or("-") +
           " id=" + event.nodeIDHint.value_or("-");
}

template <typename Event>
std::string joined(const std::vector<Event>& events) {
    std::string text;
    for (const Event& event : events) {
        if (!text.empty()) text += " || ";
        text += line(event);
    }
    return text;
}

} // namespace

std::string watchEventLog(const std::vector<RawEvent>& rawEvents,
                          const std::vector<WorkspaceWatchEvent>& pairedEvents) {
    return "[WorkspaceWatchStream] raw=" + joined(rawEvents) +
           "\n[WorkspaceWatchStream] paired=" + joined(pairedEvents) + "\n";
}
