#include "workspace/WorkspacePathRules.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/linux/files/LinuxFileIdentification.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/text/ICUCollation.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"
#include "workspace/DirectoryListing.h"

namespace {

using namespace std::string_literals;

class WorkspacePathRules : public testing::Test {
protected:
    std::string path(const std::string& relativePath) const { return directory.path(relativePath); }
    const std::string& root() const { return directory.path(); }

    static std::int64_t errorCode(const std::function<void()>& action) {
        const PlatformError error = errorOf(action);
        EXPECT_EQ(error.domain, error.code == 0 ? "" : "EditorDocumentDaemon");
        return error.code;
    }

    VariableEnvironment environment{{{"HOME", "/home/me"}}};
    LinuxFileManager fileManager{environment};
    TemporaryDirectory directory;
};

TEST_F(WorkspacePathRules, NormalizedPath) {
    const std::string here = std::filesystem::current_path();
    const std::string rootsHome = fileManager.homeDirectoryPath("root").value();
    const std::pair<std::string, std::string> cases[] = {
        {"~", "/home/me"},
        {"~/x/", "/home/me/x"},
        {"~/../y", "/home/y"},
        {"~root/x", rootsHome + "/x"},
        {"~no-such-user/x", here + "/~no-such-user/x"},
        {"/a/~", "/a/~"},
        {"a/b", here + "/a/b"},
        {"", here},
        {".", here},
        {"/a/./b/../c", "/a/c"},
        {"/", "/"},
    };
    for (const auto& [path, normalized] : cases) EXPECT_EQ(normalizedPath(path, fileManager), normalized) << path;
}

TEST_F(WorkspacePathRules, UniqueCreationPath) {
    makeTree(root(), "untitled untitled1 a.tar.gz notes.txt notes1.txt .env link>nowhere");
    const std::pair<std::string, std::string> cases[] = {
        {"free.txt", "free.txt"},
        {" \n", "untitled2"},
        {"a.tar.gz", "a.tar1.gz"},
        {" notes.txt ", "notes2.txt"},
        {".env", ".env1"},
        {"link", "link1"},
        {"..", "..1"},
        {"sub/x.md", "x.md"},
        {"\xFF.txt", "\xFF.txt"},
    };
    for (const auto& [proposed, name] : cases)
        EXPECT_EQ(uniqueCreationPath(root(), proposed, fileManager), path(name)) << proposed;
    // In a folder that is still to be made, "." and ".." are as little free as in any other.
    EXPECT_EQ(uniqueCreationPath(path("missing"), ".", fileManager), path("missing/.1"));
    EXPECT_EQ(uniqueCreationPath(path("missing"), "..", fileManager), path("missing/..1"));
}

TEST_F(WorkspacePathRules, UniqueDuplicatePath) {
    for (const char* taken : {"report.txt", "report copy.txt", "report copy 2.txt", "x"}) writeFile(path(taken), "");
    std::filesystem::create_directory(path("a.b"));
    EXPECT_EQ(uniqueDuplicatePath(path("report.txt"), root(), fileManager), path("report copy 3.txt"));
    EXPECT_EQ(uniqueDuplicatePath(path("x"), root(), fileManager), path("x copy"));
    EXPECT_EQ(uniqueDuplicatePath(path("a.b"), root(), fileManager), path("a copy.b"));
    EXPECT_EQ(uniqueDuplicatePath("/", "/", fileManager), "/ copy");
}

// The handlers let neither come so far.
TEST_F(WorkspacePathRules, ADestinationIsLookedAtWithItsSource) {
    const auto resolve = [&](const char* source, SourceWithinRoot within) {
        return errorCode(
            [&] { resolvedDestinationPath({.destinationPath = root()}, source, root(), within, fileManager); });
    };
    EXPECT_EQ(resolve("/elsewhere/z", SourceWithinRoot::notRequired), 0);
    EXPECT_EQ(resolve("/elsewhere/z", SourceWithinRoot::required), 2200);
    EXPECT_EQ(resolve("/elsewhere/..", SourceWithinRoot::notRequired), 2200);
}

TEST_F(WorkspacePathRules, OnlyDirectoriesOfTheRootAreListed) {
    makeTree(root(), "w/d/f w2/");
    const LinuxFileIdentification fileIdentification;
    const ICUCollation collation(environment);
    StableNodeIDTable stableNodeIDs;
    const std::pair<std::string, std::int64_t> cases[] = {{"w", 0},         {"w/d", 0},   {"w/d/f", 2001},
                                                          {"w/gone", 2001}, {"w2", 2200}, {"", 2200}};
    for (const auto& [listed, code] : cases) {
        const auto list = [&] {
            loadWorkspaceDirectory(path("w"), path(listed),
                                   {fileManager, fileIdentification, collation, stableNodeIDs});
        };
        EXPECT_EQ(errorCode(list), code) << listed;
    }
}

} // namespace
