#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "shared/AutoWakeStateStore.h"
#include "shared/RecordCoding.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

// Installs the shared module and builds programs against the installed copy, as somebody outside this project would.

namespace {

const std::string outsideFolder = std::string(SOURCE_FOLDER) + "/tests/outside/";

// The blocks of one language in a section of the README.
std::vector<std::string> blocksOf(const std::string& language, const std::string& section) {
    std::vector<std::string> blocks;
    std::istringstream text(readFile(std::string(SOURCE_FOLDER) + "/README.md"));
    bool isInSection = false, isInBlock = false;
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("## ")) isInSection = line == "## " + section;
        if (isInSection && line == "```" + language) {
            isInBlock = true;
            blocks.emplace_back();
        } else if (line.starts_with("```")) {
            isInBlock = false;
        } else if (isInBlock) {
            blocks.back() += line + '\n';
        }
    }
    return blocks;
}

class OutsideProject : public testing::Test {
protected:
    // Runs a script in the home, and returns what it says.
    std::string run(const std::string& script) {
        writeFile(home.path("script"), "set -e\ncd '" + home.path() + "'\nexport HOME=\"$PWD\" CXX='" COMPILER "'\n" +
                                           "export CXXFLAGS='" COMPILER_FLAGS "' PATH='" BUILD_FOLDER "':\"$PATH\"\n" +
                                           "unset XDG_DATA_HOME DESTDIR\n" + script);
        const std::string command = "timeout 250 sh '" + home.path("script") + "' > '" + home.path("log") + "' 2>&1";
        const int status = std::system(command.c_str());
        const std::string log = readFile(home.path("log"));
        EXPECT_EQ(WEXITSTATUS(status), 0) << script << '\n' << log;
        return log;
    }

    const TemporaryDirectory home;
    const std::string install = "cmake --install " BUILD_FOLDER " --component ConduitShared --prefix ";
};

TEST_F(OutsideProject, OfTheReadmeTalksToTheDaemon) {
    const std::string section = "In your own program";
    EXPECT_EQ(blocksOf("cmake", section), std::vector{readFile(outsideFolder + "CMakeLists.txt")});
    EXPECT_EQ(blocksOf("cpp", section), std::vector{readFile(outsideFolder + "editor.cpp")});
    std::string script;
    for (const std::string& block : blocksOf("sh", section)) script += block;
    const auto buildFolder = script.find("build/release");
    ASSERT_NE(buildFolder, std::string::npos);
    script.replace(buildFolder, std::string("build/release").size(), BUILD_FOLDER);
    // The program runs until it is interrupted. What it prints is waited for.
    const std::string command = "build/editor ~/project ~/project/diary.txt\n";
    const auto call = script.find(command);
    ASSERT_NE(call, std::string::npos);
    script.insert(call + command.size() - 1,
                  " > printed &\n"
                  "until grep -q well project/diary.txt; do :; done\n"
                  "touch project/new.txt\n"
                  "until grep -q /new.txt printed; do :; done\n"
                  "kill $!");

    for (const char* file : {"CMakeLists.txt", "editor.cpp"})
        std::filesystem::copy_file(outsideFolder + file, home.path(file));
    writeFile(home.path("project/diary.txt"), "Dear diary,\n");
    run(script);
    EXPECT_EQ(readFile(home.path("project/diary.txt")), "Dear diary,\nAll is well.\n");
}

TEST_F(OutsideProject, IsFoundByPkgConfigWhereverTheInstalledFolderLies) {
    if (std::system("command -v pkg-config > /dev/null") != 0) GTEST_SKIP() << "there is no pkg-config";
    run(install + "first && mv first prefix");
    std::string packageFolder, everyHeader;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path("prefix"))) {
        if (entry.path().extension() == ".pc") packageFolder = entry.path().parent_path();
        if (entry.path().extension() == ".h") everyHeader += "#include \"" + entry.path().string() + "\"\n";
    }
    writeFile(home.path("everyHeader.cpp"), everyHeader);
    // At the end: nothing in the archive asks for a library that its package does not name.
    const std::string output = run("export PKG_CONFIG_PATH='" + packageFolder + "' outside='" + outsideFolder + R"('
        compile() { "$CXX" $CXXFLAGS -std=c++20 $(pkg-config --cflags ConduitShared) "$@"; }
        compile -fsyntax-only everyHeader.cpp
        for program in editor otherSide; do
            compile "$outside/$program.cpp" -o $program $(pkg-config --static --libs ConduitShared)
        done
        mkdir bin && mv otherSide bin/EditorDocumentDaemon
        for turn in 1 2; do PATH="$PWD/bin:$PATH" ./editor /x /x/y || test $? = 1; done
        compile "$outside/editor.cpp" -o whole -Wl,--whole-archive $(pkg-config --libs ConduitShared) \
            -Wl,--no-whole-archive -lsimdjson -pthread
    )");
    EXPECT_EQ(output, "2\n4\n");
    const std::string state = readFile(home.path(".local/share/marblefern/auto_wake_state.json"));
    EXPECT_EQ(decodeRecord<AutoWakeStoreSnapshot>(state).events.size(), 4U);
}

} // namespace
