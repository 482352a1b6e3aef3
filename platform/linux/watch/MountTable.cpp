#include "platform/linux/watch/MountTable.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/linux/MountPoints.h"

namespace {

std::string_view takeUntil(std::string_view& text, char end) {
    const std::size_t size = std::min(text.find(end), text.size());
    const std::string_view taken = text.substr(0, size);
    text.remove_prefix(std::min(size + 1, text.size()));
    return taken;
}

std::optional<MountPoint> mountPoint(std::string_view line) {
    MountPoint result{.path = mountPointInLine(line)};
    const auto parsed = std::from_chars(line.data(), line.data() + line.size(), result.mountID);
    if (parsed.ec != std::errc() || !result.path.starts_with('/')) return std::nullopt;
    return result;
}

} // namespace

std::vector<MountPoint> mountPoints(std::string_view mountInfo) {
    std::vector<MountPoint> result;
    while (!mountInfo.empty()) {
        if (auto found = mountPoint(takeUntil(mountInfo, '\n'))) result.push_back(std::move(*found));
    }
    std::ranges::sort(result);
    return result;
}
