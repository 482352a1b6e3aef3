#include "shared/ConduitSharedPaths.h"

#include <gtest/gtest.h>

#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"

namespace {

TEST(ConduitSharedPaths, TheDirectoryIsChosenByWhatExists) {
    const struct {
        const char* name;
        std::vector<std::string> files; // in the home; their folders are made
        const char* data;               // of XDG_DATA_HOME, "~" for the home; null: not set
        const char* expected;           // in the home
    } rows[] = {
        {"neither", {}, nullptr, ".local/share/marblefern"},
        {"the current one", {".local/share/marblefern/x"}, nullptr, ".local/share/marblefern"},
        {"the legacy one", {".local/share/marblefern Studio/x"}, nullptr, ".local/share/marblefern Studio"},
        {"both", {".local/share/marblefern/x", ".local/share/marblefern Studio/x"}, nullptr, ".local/share/marblefern"},
        {"a file with the current name",
         {".local/share/marblefern", ".local/share/marblefern Studio/x"},
         nullptr,
         ".local/share/marblefern Studio"},
        {"a file with the legacy name", {".local/share/marblefern Studio"}, nullptr, ".local/share/marblefern"},
        {"elsewhere", {}, "~/data", "data/marblefern"},
        {"elsewhere, with a slash", {"data/marblefern Studio/x"}, "~/data/", "data/marblefern Studio"},
        {"a legacy one that is not looked at", {".local/share/marblefern Studio/x"}, "~/data", "data/marblefern"},
        {"an empty variable", {}, "", ".local/share/marblefern"},
        {"a relative variable", {}, "data", ".local/share/marblefern"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory home;
        for (const std::string& file : row.files) writeFile(home.path(file), "x");
        VariableEnvironment environment({{"HOME", home.path()}});
        if (row.data)
            environment.variables["XDG_DATA_HOME"] = *row.data == '~' ? home.path() + (row.data + 1) : row.data;
        LinuxFileManager fileManager(environment);
        EXPECT_EQ(ConduitSharedPaths::applicationSupportDirectory(fileManager, environment), home.path(row.expected));
        EXPECT_EQ(ConduitSharedPaths::autoWakeStateStoreURL(fileManager, environment),
                  home.path(row.expected) + "/auto_wake_state.json");
        EXPECT_FALSE(row.files.empty() && std::filesystem::exists(home.path(row.expected))) << "asking makes nothing";
    }
}

} // namespace
