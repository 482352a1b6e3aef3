#include "workspace/MutationPayload.h"

#include <gtest/gtest.h>

#include "platform/linux/text/ICUCollation.h"
#include "tests/support/WorkspaceTest.h"

namespace {

class MutationPayload : public WorkspaceTest {};

TEST_F(MutationPayload, AffectedDirectories) {
    make("d/e/f l>d gone>nowhere");
    const struct {
        const char* name;
        std::vector<std::string> touched;
        std::string affected;
    } cases[] = {
        {"a folder stands for itself", {"d/e"}, "d/e"},
        {"a file for its folder", {"d/e/f"}, "d/e"},
        {"what is gone for its folder", {"d/x", "y"}, ". d"},
        {"a link to a folder is one", {"l"}, "l"},
        {"a link that leads nowhere", {"gone"}, "."},
        {"each once, sorted", {"l/x", "d/x", "d/e/f", "d", "x"}, ". d d/e l"},
        {"the root stands for itself", {"."}, "."},
        {"nothing outside", {"..", "../x", "../w2/x"}, ""},
        {"a child of the root's neighbour", {"../w2/x", "x"}, "."},
        {"nothing", {}, ""},
    };
    for (const auto& row : cases) {
        std::vector<std::string> touchedPaths;
        for (const auto& touched : row.touched) {
            touchedPaths.push_back(touched.starts_with("..") ? daemon.directory.path() + touched.substr(2)
                                                             : path(touched));
        }
        Lines affected;
        for (const auto& directory : affectedDirectoryPaths(touchedPaths, root, *daemon.fileManager)) {
            affected.push_back(relative(directory));
        }
        EXPECT_EQ(joined(affected), row.affected) << row.name;
    }
    EXPECT_EQ(affectedDirectoryPaths({"/nowhere", "/nowhere/x"}, "/", *daemon.fileManager), (Lines{"/", "/nowhere"}))
        << "the root / contains every path";
}

TEST_F(MutationPayload, OrderIsThatOfNamesByDestinationElseSource) {
    using Payload = WorkspaceBrowserMutationPayload;
    const struct {
        const char* name;
        Payload left;
        Payload right;
    } cases[] = {
        {"numbers by value", {.destinationPath = "/w/a2"}, {.destinationPath = "/w/a10"}},
        {"the source where there is no destination", {.sourcePath = "/w/a"}, {.destinationPath = "/w/b"}},
        {"the destination where there are both",
         {.sourcePath = "/w/z", .destinationPath = "/w/a"},
         {.sourcePath = "/w/b"}},
        {"nothing comes first", {}, {.sourcePath = "/"}},
    };
    const VariableEnvironment environment;
    const ICUCollation collation(environment);
    for (const auto& row : cases) {
        const std::vector<Payload> inOrder{row.left, row.right};
        EXPECT_EQ(workspaceMutationSort({row.right, row.left}, collation), inOrder) << row.name;
        EXPECT_EQ(workspaceMutationSort(inOrder, collation), inOrder) << row.name;
    }
}

} // namespace
