#include "workspace/PathComponents.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

TEST(PathComponents, Standardized) {
    const std::pair<std::string, std::string> cases[] = {
        {"/", "/"},
        {"//", "/"},
        {"//a//b", "/a/b"},
        {"/a/b/", "/a/b"},
        {"/../x", "/x"},
        {"/a/../..", "/"},
        {"/a/./b/../c", "/a/c"},
        {"/a/...", "/a/..."},
        {"/a/. ", "/a/. "},
        {"/a%20b", "/a%20b"},
        {"/a/\0b/c"s, "/a/\0b/c"s},
        {"/\xFF/..", "/"},
        {"/a/..b", "/a/..b"},
        {"/.", "/"},
        {"/..", "/"},
        {"/a//../b/.", "/b"},
    };
    for (const auto& [path, standardized] : cases) EXPECT_EQ(standardizedPath(path), standardized) << path;
}

TEST(PathComponents, AtOrWithin) {
    EXPECT_TRUE(isAtOrWithin("/p/a", "/p/a"));
    EXPECT_TRUE(isAtOrWithin("/p/a/b", "/p/a"));
    EXPECT_FALSE(isAtOrWithin("/p/ab", "/p/a"));
    EXPECT_FALSE(isAtOrWithin("/p", "/p/a"));
    EXPECT_TRUE(isAtOrWithin("/p", "/"));
    EXPECT_TRUE(isAtOrWithin("/", "/"));
}

TEST(PathComponents, ParentAndLast) {
    const struct {
        std::string path;
        std::string parent;
        std::string last;
    } cases[] = {
        {"/", "/", "/"}, {"/a", "/", "a"}, {"/a/b", "/a", "b"}, {"/a/b/", "/a", "b"}, {"/a//b//", "/a", "b"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(parentPath(row.path), row.parent) << row.path;
        EXPECT_EQ(lastPathComponent(row.path), row.last) << row.path;
    }
    EXPECT_EQ(appendingPathComponent("/", "a"), "/a");
    EXPECT_EQ(appendingPathComponent("/a", "b"), "/a/b");
}

TEST(PathComponents, Extensions) {
    const struct {
        std::string name;
        std::string stem;
        std::string extension;
    } cases[] = {
        {"notes.txt", "notes", "txt"},
        {".hidden", ".hidden", ""},
        {"a.", "a.", ""},
        {"a.tar.gz", "a.tar", "gz"},
        {"..", "..", ""},
        {" .txt", " ", "txt"},
        {".a.b", ".a", "b"},
        {"a..b", "a.", "b"},
        {"..a.txt", "..a.txt", ""},
        {"x. y", "x. y", ""},
        {"x.txt ", "x.txt ", ""},
        {"x.t\u202Ext", "x.t\u202Ext", ""},
        {"x.t\u061Cxt", "x.t\u061Cxt", ""},
        {"x.t\u2069", "x.t\u2069", ""},
        {"plain", "plain", ""},
        {"\xFF.\xFE", "\xFF", "\xFE"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(nameParts(row.name), (NameParts{row.stem, row.extension})) << row.name;
        EXPECT_EQ(nameWithSuffix(nameParts(row.name), ""), row.name);
    }
}

} // namespace
