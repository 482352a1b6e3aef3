#include "shared/ConduitSharedPaths.h"

#include <cerrno>

#include "platform/PlatformError.h"

namespace {

std::string joinedPath(std::string path, std::string_view name) {
    if (!path.ends_with('/')) path += '/';
    path += name;
    return path;
}

std::string userDataDirectory(const FileManager& fileManager, const Environment& environment) {
    const auto data = environment.value("XDG_DATA_HOME");
    if (data && data->starts_with('/')) return *data;
    const auto home = fileManager.homeDirectoryPath();
    if (!home) throw posixError(ENOENT, "find the home of the user");
    return joinedPath(*home, ".local/share");
}

} // namespace

std::string ConduitSharedPaths::applicationSupportDirectory(const FileManager& fileManager,
                                                            const Environment& environment) {
    const std::string base = userDataDirectory(fileManager, environment);
    const std::string current = joinedPath(base, applicationSupportDirectoryName);
    const std::string legacy = joinedPath(base, legacyApplicationSupportDirectoryName);
    return !fileManager.isDirectory(current) && fileManager.isDirectory(legacy) ? legacy : current;
}

std::string ConduitSharedPaths::autoWakeStateStoreURL(const FileManager& fileManager, const Environment& environment) {
    return joinedPath(applicationSupportDirectory(fileManager, environment), autoWakeStateFileName);
}
