#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "platform/linux/watch/LinuxWatchSystem.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"
#include "tools/doctor/Abilities.h"
#include "tools/doctor/FolderSurvey.h"
#include "tools/doctor/WatchUsage.h"

namespace {

using Verdict = Finding::Verdict;

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(WatchUsage, IsReadFromWhatTheKernelTells) {
    const TemporaryDirectory proc;
    const auto addInstance = [&](const std::string& process, const std::string& descriptor, int watches) {
        std::string description = "pos:\t0\nflags:\t02004000\n";
        for (int watch = 1; watch <= watches; ++watch)
            description += "inotify wd:" + std::to_string(watch) + " ino:1\n";
        writeFile(proc.path(process + "/fdinfo/" + descriptor), description);
        std::filesystem::create_directories(proc.path(process + "/fd"));
        std::filesystem::create_symlink("anon_inode:inotify", proc.path(process + "/fd/" + descriptor));
        writeFile(proc.path(process + "/comm"), "name of " + process + "\n");
    };
    addInstance("17", "3", 2);
    addInstance("17", "4", 0);
    addInstance("18", "3", 3);
    writeFile(proc.path("18/fdinfo/0"), "pos:\t0\neventfd-count: 1\n");
    writeFile(proc.path("19/comm"), "may not be looked at\n");
    writeFile(proc.path("self/comm"), "no number\n");
    writeFile(proc.path("sys/fs/inotify/max_user_watches"), "5\n");

    const WatchUsage usage = readWatchUsage(proc.path(), ::getuid());
    ASSERT_EQ(usage.processes.size(), 2U);
    EXPECT_EQ(usage.processes[0].name, "name of 18");
    EXPECT_EQ(usage.processes[0].watches, 3U);
    EXPECT_EQ(usage.processes[1].watches, 2U);
    EXPECT_EQ(usage.processes[1].instances, 2U);
    EXPECT_EQ(usage.unreadableCount, 1U);
    EXPECT_EQ(readWatchLimits(proc.path()).watches, 5U);
    EXPECT_EQ(readWatchLimits(proc.path()).instances, std::nullopt);
}

TEST(WatchUsage, FindsTheWatchesOfThisProcess) {
    const TemporaryDirectory folder;
    LinuxWatchSystem system;
    ASSERT_GE(system.watchFolder(folder.path(), FollowLinks::no).watch, 0);
    const WatchUsage usage = readWatchUsage("/proc", ::getuid());
    const auto own = std::ranges::find(usage.processes, ::getpid(), &ProcessWatches::processID);
    ASSERT_NE(own, usage.processes.end());
    EXPECT_EQ(own->watches, 1U);
}

TEST(WatchUsage, IsJudgedForOneUser) {
    struct Case {
        std::string name;
        WatchLimits limits;
        std::uint64_t folderCount;
        std::vector<Verdict> verdicts;
        std::string remedy;
    };
    const WatchUsage usage{.processes = {{.user = 1000, .instances = 100, .watches = 60},
                                         {.user = 1000, .instances = 20, .watches = 30},
                                         {.user = 7, .instances = 999, .watches = 999}}};
    const std::vector fine(3, Verdict::fine);
    const Case cases[] = {
        {"just enough", {100, 121, 16384}, 10, fine, ""},
        {"one too few",
         {100, 121, 16384},
         11,
         {Verdict::wrong, Verdict::fine, Verdict::fine},
         "max_user_watches=524288 "},
        {"a large tree",
         {524'288, 121, 16384},
         600'000,
         {Verdict::wrong, Verdict::fine, Verdict::fine},
         "max_user_watches=2097152 "},
        {"no instance left",
         {100, 120, 16384},
         1,
         {Verdict::fine, Verdict::wrong, Verdict::fine},
         "max_user_instances=1024 "},
        {"a short queue",
         {100, 121, 100},
         1,
         {Verdict::fine, Verdict::fine, Verdict::worthKnowing},
         "max_queued_events=16384 "},
        {"no inotify", {}, 1, {Verdict::wrong}, ""},
    };
    for (const Case& row : cases) {
        const auto findings = watchFindings(row.limits, usage, 1000, row.folderCount);
        std::vector<Verdict> verdicts;
        std::string remedies;
        for (const Finding& finding : findings) {
            verdicts.push_back(finding.verdict);
            for (const std::string& remedy : finding.remedy) remedies += remedy;
        }
        EXPECT_EQ(verdicts, row.verdicts) << row.name;
        EXPECT_TRUE(row.remedy.empty() ? remedies.empty() : contains(remedies, row.remedy)) << row.name << remedies;
    }
}

TEST(FolderSurvey, NamesTheFileSystemOfAPath) {
    const std::string mountInfo =
        "21 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
        "30 21 0:40 / /home/you rw - nfs4 server:/you rw\n"
        "31 30 0:41 / /home/you/a\\040b rw - fuse.sshfs host: rw\n"
        "32 31 0:42 / /home/you/a\\040b rw master:2 - tmpfs none rw\n"
        "33 21 nonsense\n";
    const std::pair<std::string, std::string> cases[] = {
        {"/", "ext4"},           {"/home/your", "ext4"},       {"/home/you", "nfs4"},
        {"/home/you/x", "nfs4"}, {"/home/you/a b/c", "tmpfs"},
    };
    for (const auto& [path, type] : cases) EXPECT_EQ(fileSystemType(mountInfo, path), type) << path;
    EXPECT_EQ(fileSystemType("", "/"), "of an unknown kind");
}

TEST(FolderSurvey, CountsFoldersAndTellsFileSystemsApart) {
    const TemporaryDirectory folder;
    writeFile(folder.path("a/b/file"), "");
    std::filesystem::create_directories(folder.path("c"));
    std::filesystem::create_directory_symlink(folder.path(), folder.path("c/round"));
    const FolderSurvey survey = surveyFolder(folder.path());
    EXPECT_EQ(survey.folderCount, 4U);
    ASSERT_EQ(survey.fileSystems.size(), 1U);
    EXPECT_EQ(survey.fileSystems[0].path, folder.path());

    const FolderSurvey madeUp = surveyFolder("/proc/sys/fs/inotify");
    ASSERT_EQ(madeUp.fileSystems.size(), 1U);
    EXPECT_EQ(madeUp.fileSystems[0].type, "proc");
    EXPECT_EQ(fileSystemFindings(madeUp).at(0).verdict, Verdict::worthKnowing);

    EXPECT_EQ(surveyFolder(folder.path("none")).error, ENOENT);
    EXPECT_EQ(folderFindings(surveyFolder(folder.path("a/b/file")), "x").at(0).verdict, Verdict::wrong);
}

TEST(Abilities, TellTheOrderOfNames) {
    struct Case {
        std::string language;
        Verdict verdict;
        std::string text;
    };
    const Case cases[] = {
        {"sv_SE.UTF-8", Verdict::fine, "“sv_SE”: names are listed in the order for “sv”."},
        {"C.UTF-8", Verdict::fine, "“C”: names are listed in the order for all languages."},
        {"", Verdict::worthKnowing, "name no language: names are listed in the order for all languages."},
    };
    for (const Case& row : cases) {
        VariableEnvironment environment;
        environment.variables = {{"LANG", row.language}};
        const auto findings = languageFindings(environment);
        EXPECT_EQ(findings.at(0).verdict, row.verdict) << findings.at(0).text;
        EXPECT_TRUE(contains(findings.at(0).text, row.text)) << findings.at(0).text;
    }
}

TEST(Abilities, TellWhereTheTrashIsAndMakeNothing) {
    const TemporaryDirectory home;
    const auto homeTrashFinding = [&] {
        VariableEnvironment environment;
        environment.variables = {{"XDG_DATA_HOME", home.path("data")}};
        return trashFindings(environment, home.path()).at(0);
    };
    EXPECT_EQ(homeTrashFinding().verdict, Verdict::fine);
    EXPECT_TRUE(contains(homeTrashFinding().text, "will be made"));
    EXPECT_FALSE(std::filesystem::exists(home.path("data")));
    std::filesystem::create_directories(home.path("data/Trash"));
    EXPECT_EQ(homeTrashFinding().text, "The home trash is " + home.path("data/Trash") + ".");
    std::filesystem::remove(home.path("data/Trash"));
    writeFile(home.path("data/Trash"), "in the way");
    EXPECT_EQ(homeTrashFinding().verdict, Verdict::wrong);
}

TEST(Doctor, EndsWithAStatusAndLeavesTheTerminalAlone) {
    const TemporaryDirectory home;
    std::filesystem::create_directories(home.path("evil\x1B[31m;touch '"));
    const auto doctor = [&](const std::string& argument) {
        const std::string command = "cd '" + home.path() + "' && HOME=\"$PWD\" LC_ALL=C.UTF-8 " DOCTOR_EXECUTABLE " " +
                                    argument + " > output 2>&1";
        return WEXITSTATUS(std::system(command.c_str()));
    };
    const int status = doctor("evil*");
    const std::string output = readFile(home.path("output"));
    EXPECT_EQ(status, contains(output, "  WRONG  ") ? 1 : 0) << output;
    EXPECT_TRUE(contains(output, "evil\\x1B[31m;touch ' can be read. Folders, itself included: 1.")) << output;
    EXPECT_FALSE(contains(output, "\x1B"));

    EXPECT_EQ(doctor("\"none\nx; y\""), 1);
    EXPECT_TRUE(contains(readFile(home.path("output")), "Type: ls -ld '" + home.path("none\\x0Ax; y'")))
        << readFile(home.path("output"));
    EXPECT_EQ(doctor("--nonsense"), 2);
    EXPECT_EQ(doctor("--help"), 0);
}

} // namespace
