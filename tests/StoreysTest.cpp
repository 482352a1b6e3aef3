#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>

namespace {

using StoreyByFile = std::map<std::string, int>;

StoreyByFile storeys() {
    StoreyByFile result;
    std::ifstream list(STOREYS_FILE);
    int storey = 0;
    for (std::string file; list >> storey >> file;) {
        EXPECT_TRUE(result.emplace(file, storey).second) << file << " stands in two lists";
    }
    return result;
}

std::vector<std::string> ownIncludes(const std::string& file) {
    static const std::regex include("#include \"([^\"]+)\".*");
    std::vector<std::string> result;
    std::ifstream text(std::string(SOURCE_FOLDER) + '/' + file);
    std::smatch match;
    for (std::string line; std::getline(text, line);) {
        if (std::regex_match(line, match, include)) result.push_back(match[1]);
    }
    return result;
}

TEST(Storeys, NoIncludeGoesUp) {
    const StoreyByFile storeyByFile = storeys();
    ASSERT_GT(storeyByFile.size(), 20U);
    for (const auto& [file, storey] : storeyByFile) {
        for (const std::string& included : ownIncludes(file)) {
            const auto found = storeyByFile.find(included);
            ASSERT_NE(found, storeyByFile.end()) << file << " includes " << included << ", which stands in no list";
            EXPECT_LE(found->second, storey) << file << " includes " << included << " of a storey above it";
        }
    }
}

TEST(Storeys, EveryFileHasItsPlace) {
    const StoreyByFile storeyByFile = storeys();
    for (const char* wing : {"platform", "shared", "identity", "documents", "workspace", "watch", "daemon", "tools"}) {
        const std::filesystem::path folder = std::filesystem::path(SOURCE_FOLDER) / wing;
        if (!std::filesystem::exists(folder)) continue;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const auto extension = entry.path().extension();
            if ((extension != ".cpp" && extension != ".h") || entry.path().filename() == "main.cpp") continue;
            const std::string file = std::filesystem::relative(entry.path(), SOURCE_FOLDER).string();
            EXPECT_TRUE(storeyByFile.contains(file)) << file << " stands in no list";
        }
    }
}

TEST(Storeys, OnlyHandlersIncludeTheDaemon) {
    for (const auto& [file, storey] : storeys()) {
        if (file.starts_with("daemon/")) continue;
        for (const std::string& included : ownIncludes(file)) {
            EXPECT_TRUE(!included.starts_with("daemon/") || (storey == 4 && file.ends_with(".cpp")))
                << file << " includes " << included;
        }
    }
}

} // namespace
