#include "shared/ConduitSharedPaths.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/linux/files/LinuxFileManager.h"
#include "shared/AutoWakeStateStore.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

class GivenEnvironment final : public Environment {
public:
    explicit GivenEnvironment(std::map<std::string, std::string> variables) : valueByName(std::move(variables)) {}

    std::optional<std::string> value(const std::string& name) const override {
        const auto found = valueByName.find(name);
        return found == valueByName.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::map<std::string, std::string> valueByName;
};

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
        std::map<std::string, std::string> variables{{"HOME", home.path()}};
        if (row.data) variables["XDG_DATA_HOME"] = *row.data == '~' ? home.path() + (row.data + 1) : row.data;
        const GivenEnvironment environment(variables);
        LinuxFileManager fileManager(environment);
        EXPECT_EQ(ConduitSharedPaths::applicationSupportDirectory(fileManager, environment), home.path(row.expected));
        EXPECT_EQ(ConduitSharedPaths::autoWakeStateStoreURL(fileManager, environment),
                  home.path(row.expected) + "/auto_wake_state.json");
        EXPECT_FALSE(row.files.empty() && std::filesystem::exists(home.path(row.expected))) << "asking makes nothing";
    }
}

TEST(ConduitSharedPaths, AStoreInTheLegacyDirectoryStaysThere) {
    const TemporaryDirectory home;
    const std::string legacyFile = home.path(".local/share/marblefern Studio/auto_wake_state.json");
    writeFile(legacyFile, R"({"schemaVersion":1,"clientStatesByKey":{},"events":[]})");
    const GivenEnvironment environment({{"HOME", home.path()}});
    LinuxFileManager fileManager(environment);
    const auto openStore = [&] {
        return AutoWakeStateStore(ConduitSharedPaths::autoWakeStateStoreURL(fileManager, environment), fileManager);
    };
    openStore().update([](AutoWakeStoreSnapshot& snapshot) { snapshot.schemaVersion = 2; });
    EXPECT_EQ(openStore().load().schemaVersion, 2);
    EXPECT_NE(readFile(legacyFile).find("\"schemaVersion\" : 2"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(home.path(".local/share/marblefern")));
}

} // namespace
