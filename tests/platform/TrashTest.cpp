#include "platform/linux/files/Trash.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>

#include "platform/linux/files/TrashName.h"
#include "tests/support/DirectorySnapshot.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"

namespace {

namespace fs = std::filesystem;

VariableEnvironment homeAt(const std::string& path) {
    return VariableEnvironment({{"HOME", path}});
}

PlatformError errorOfTrash(const std::string& path, const Environment& environment) {
    return errorOf([&] { trashItem(path, environment); });
}

// The names below the folder, folders left out.
std::vector<std::string> filesBelow(const std::string& path) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(path)) {
        if (!entry.is_directory() || entry.is_symlink())
            names.push_back(entry.path().lexically_relative(path).string());
    }
    std::ranges::sort(names);
    return names;
}

using Names = std::vector<std::string>;

std::string userName() {
    return std::to_string(::geteuid());
}

TEST(Trash, NamesFitAndKeepTheirExtension) {
    struct Row {
        std::string name;
        int attempt;
        std::string result;
    };
    std::string threeByteCharacters, cutCharacters;
    for (int i = 0; i < 85; ++i) threeByteCharacters += "日";
    for (int i = 0; i < 81; ++i) cutCharacters += "日";
    const Row rows[] = {
        {"a.txt", 1, "a.txt"},
        {"a.txt", 2, "a.2.txt"},
        {"a.txt", 13, "a.13.txt"},
        {"folder", 2, "folder.2"},
        {".profile", 2, ".profile.2"},
        {"a.tar.gz", 3, "a.tar.3.gz"},
        {"a.", 2, "a.2."},
        {std::string(255, 'x'), 1, std::string(245, 'x')},
        {std::string(251, 'x') + ".txt", 2, std::string(239, 'x') + ".2.txt"},
        {threeByteCharacters, 1, cutCharacters},
        {"a." + std::string(253, 'x'), 1, "a." + std::string(243, 'x')},
        {"a." + std::string(253, 'x'), 2, "a." + std::string(241, 'x') + ".2"},
    };
    for (const Row& row : rows) EXPECT_EQ(trashName(row.name, row.attempt), row.result) << row.name;
}

TEST(Trash, PathsArePercentEncodedByteByByte) {
    EXPECT_EQ(percentEncoded("/aZ09-_.~/x"), "/aZ09-_.~/x");
    EXPECT_EQ(percentEncoded("/100% ä\n\xff+&=\"'"), "/100%25%20%C3%A4%0A%FF%2B%26%3D%22%27");
}

TEST(Trash, TheHomeTrashKeepsItemAndOrigin) {
    const TemporaryDirectory directory;
    fs::create_directory(directory.path("home"));
    fs::create_directory(directory.path("relative"));
    struct Row {
        const char* name;
        VariableEnvironment environment;
        std::string trash;
    };
    const Row rows[] = {
        {"HOME alone", homeAt(directory.path("home")), "home/.local/share/Trash"},
        {"XDG_DATA_HOME", VariableEnvironment({{"HOME", "/nowhere"}, {"XDG_DATA_HOME", directory.path("data")}}),
         "data/Trash"},
        {"XDG_DATA_HOME must be absolute",
         VariableEnvironment({{"HOME", directory.path("other")}, {"XDG_DATA_HOME", "relative"}}),
         "other/.local/share/Trash"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string item = directory.path("item \xff");
        writeFile(item + "/inner", "text");
        const DirectorySnapshot before = portraitOf(item);
        const std::time_t began = std::time(nullptr);
        trashItem(item, row.environment);
        EXPECT_EQ(portraitOf(directory.path(row.trash + "/files/item \xff")), before);
        EXPECT_FALSE(fs::exists(item));
        const std::string information = directory.path(row.trash + "/info/item \xff.trashinfo");
        const std::string expected = "[Trash Info]\nPath=" + directory.path("item%20%FF") + "\nDeletionDate=";
        const std::string text = readFile(information);
        ASSERT_TRUE(text.starts_with(expected)) << text;
        std::tm parts{};
        const char* end = ::strptime(text.c_str() + expected.size(), "%Y-%m-%dT%H:%M:%S", &parts);
        ASSERT_NE(end, nullptr) << text;
        EXPECT_STREQ(end, "\n");
        parts.tm_isdst = -1;
        const std::time_t deleted = std::mktime(&parts); // reads it as local time
        EXPECT_TRUE(deleted >= began && deleted <= std::time(nullptr)) << text;
        for (const char* folder : {"", "/files", "/info"})
            EXPECT_EQ(fs::status(directory.path(row.trash + folder)).permissions(), fs::perms(0700));
        EXPECT_EQ(fs::status(information).permissions(), fs::perms(0600));
    }
}

TEST(Trash, LinksAreTrashedAndNotFollowed) {
    const TemporaryDirectory directory;
    makeTree(directory.path(), "kept way>folder folder/link>../kept folder/dangling>nowhere");
    const VariableEnvironment environment = homeAt(directory.path("home"));
    trashItem(directory.path("way/link"), environment);
    trashItem(directory.path("folder/dangling"), environment);
    const std::string trash = directory.path("home/.local/share/Trash");
    EXPECT_EQ(filesBelow(trash),
              (Names{"files/dangling", "files/link", "info/dangling.trashinfo", "info/link.trashinfo"}));
    EXPECT_EQ(readFile(directory.path("kept")), "kept");
    EXPECT_NE(readFile(trash + "/info/link.trashinfo").find("Path=" + directory.path("way/link\n")), std::string::npos);
}

TEST(Trash, ATakenNameIsPassedOver) {
    const TemporaryDirectory directory;
    const std::string trash = directory.path("data/Trash");
    const VariableEnvironment environment({{"XDG_DATA_HOME", directory.path("data")}});
    writeFile(trash + "/files/a.2.txt", "an item without information");
    writeFile(trash + "/info/a.3.txt.trashinfo", "information without an item");
    for (const char* text : {"first", "second"}) {
        writeFile(directory.path("a.txt"), text);
        trashItem(directory.path("a.txt"), environment);
    }
    EXPECT_EQ(filesBelow(trash), (Names{"files/a.2.txt", "files/a.4.txt", "files/a.txt", "info/a.3.txt.trashinfo",
                                        "info/a.4.txt.trashinfo", "info/a.txt.trashinfo"}));
    EXPECT_EQ(readFile(trash + "/files/a.txt"), "first");
    EXPECT_EQ(readFile(trash + "/files/a.4.txt"), "second");
    EXPECT_EQ(readFile(trash + "/info/a.3.txt.trashinfo"), "information without an item");
}

TEST(Trash, RefusalsLeaveEverythingAsItWas) {
    const TemporaryDirectory directory;
    makeTree(directory.path(),
             "home/.local/share/Trash/files/old home/.local/share/Trash/info/ file fresh/file "
             "to-trash>home/.local/share/Trash");
    struct Row {
        const char* name;
        const char* item;
        const char* home;
        int error;
        const char* reason;
    };
    const Row rows[] = {
        {"nothing there", "missing", "home", ENOENT, "Trash: No such file or directory."},
        {"in the trash", "home/.local/share/Trash/files/old", "home", EINVAL, "the Trash"},
        {"in the trash, by a link", "to-trash/files/old", "home", EINVAL, "the Trash"},
        {"the trash", "home/.local/share/Trash", "home", EINVAL, "the Trash"},
        {"around the trash", "home", "home", EINVAL, "the Trash"},
        {"around the place of a trash that is not yet there", "fresh", "fresh/home", EINVAL, "the Trash"},
        {"a home that is none", "fresh", "file/home", ENOTDIR, "Cannot make the folder “"},
    };
    const DirectorySnapshot before = portraitOf(directory.path());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const PlatformError error = errorOfTrash(directory.path(row.item), homeAt(directory.path(row.home)));
        EXPECT_EQ(error.code, row.error);
        const std::string& text = error.localizedDescription;
        EXPECT_TRUE(text.starts_with("Cannot move “" + directory.path(row.item) + "” to the Trash")) << text;
        EXPECT_NE(text.find(row.reason), std::string::npos) << text;
        EXPECT_EQ(portraitOf(directory.path()), before);
    }
}

TEST(Trash, EachVolumeHasItsOwn) {
    struct Row {
        const char* name;
        std::function<void(const std::string& top)> prepare;
        std::string trash; // absolute for the home trash
    };
    const std::string own = ".Trash-" + userName(), shared = ".Trash/" + userName();
    const auto makeShared = [](const std::string& top, mode_t mode) {
        fs::create_directory(top + "/.Trash");
        ::chmod((top + "/.Trash").c_str(), mode);
    };
    const Row rows[] = {
        {"nothing prepared", [](auto&) {}, own},
        {"a shared folder", [&](auto& top) { makeShared(top, 01777); }, shared},
        {"a shared folder that is not sticky", [&](auto& top) { makeShared(top, 0777); }, own},
        {"a shared folder that is a link",
         [&](auto& top) {
             makeShared(top, 01777);
             fs::rename(top + "/.Trash", top + "/sticky");
             makeTree(top, ".Trash>sticky");
         },
         own},
        {"a file in the place", [&](auto& top) { writeFile(top + "/" + own, ""); }, "/"},
        {"a link in the place", [&](auto& top) { makeTree(top, "elsewhere/ " + own + ">elsewhere"); }, "/"},
        {"another's folder in the place",
         [&](auto& top) {
             fs::create_directory(top + "/" + own);
             if (::chown((top + "/" + own).c_str(), 1234, 1234) != 0) FAIL();
         },
         "/"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        const MountedDisk disk(directory.path("disk"));
        if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
        row.prepare(disk.path);
        fs::create_symlink("disk", directory.path("way"));
        const std::string item = directory.path("way/inner/a b");
        writeFile(item, "text");
        trashItem(item, homeAt(directory.path("home")));
        EXPECT_FALSE(fs::exists(item));
        const bool isHome = row.trash == "/";
        const std::string trash = isHome ? directory.path("home/.local/share/Trash") : disk.path + "/" + row.trash;
        EXPECT_EQ(filesBelow(trash), (Names{"files/a b", "info/a b.trashinfo"}));
        const std::string path = isHome ? directory.path("way/inner/a%20b") : "inner/a%20b";
        EXPECT_NE(readFile(trash + "/info/a b.trashinfo").find("Path=" + path + "\n"), std::string::npos);
        EXPECT_EQ(readFile(trash + "/files/a b"), "text");
        if (!isHome) {
            EXPECT_FALSE(fs::exists(directory.path("home")));
            EXPECT_EQ(errorOfTrash(trash + "/files/a b", homeAt(directory.path("home"))).code, EINVAL);
        }
    }
}

TEST(Trash, ACopyPassesOverATakenNameToo) {
    const TemporaryDirectory directory;
    const MountedDisk disk(directory.path("disk"));
    if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
    writeFile(disk.path + "/.Trash-" + userName(), "no folder");
    writeFile(disk.path + "/item", "new");
    const std::string trash = directory.path("home/.local/share/Trash");
    writeFile(trash + "/files/item", "old");
    trashItem(disk.path + "/item", homeAt(directory.path("home")));
    EXPECT_EQ(filesBelow(trash), (Names{"files/item", "files/item.2", "info/item.2.trashinfo"}));
    EXPECT_EQ(readFile(trash + "/files/item.2"), "new");
}

TEST(Trash, WhereNothingWorksTheMessageSaysWhy) {
    const TemporaryDirectory directory;
    const MountedDisk disk(directory.path("disk"));
    if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
    const std::string foreign = disk.path + "/.Trash-" + userName();
    writeFile(foreign, "no folder");
    writeFile(directory.path("file"), "text");
    writeFile(disk.path + "/item", "text");
    const PlatformError error = errorOfTrash(disk.path + "/item", homeAt(directory.path("file/home")));
    EXPECT_EQ(
        error.localizedDescription,
        "Cannot move “" + disk.path + "/item” to the Trash. “" + foreign +
            "” is not a folder of the user. Nor can it be copied to the Trash of the home folder. Cannot make the "
            "folder “" +
            directory.path("file/home/.local/share/Trash/files") + "”: Not a directory.");
    EXPECT_EQ(readFile(disk.path + "/item"), "text");
}

} // namespace
