#pragma once

#include <string>
#include <string_view>

#include "platform/Environment.h"
#include "platform/FileManager.h"

// Where the product family keeps the files that its processes share. A file URL is here the path of the file.
struct ConduitSharedPaths {
    ConduitSharedPaths() = delete;

    static constexpr std::string_view applicationSupportDirectoryName = "marblefern";
    static constexpr std::string_view legacyApplicationSupportDirectoryName = "marblefern Studio";
    static constexpr std::string_view autoWakeStateFileName = "auto_wake_state.json";

    // A directory among the user's data ($XDG_DATA_HOME where that is absolute, else ~/.local/share): the current one;
    // or the legacy one where only that exists. Nothing is made or moved. Throws a PlatformError when the user has no
    // home.
    static std::string applicationSupportDirectory(const FileManager& fileManager, const Environment& environment);

    static std::string autoWakeStateStoreURL(const FileManager& fileManager, const Environment& environment);
};
