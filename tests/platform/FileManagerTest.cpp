#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <map>

#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/DirectorySnapshot.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/OrdinaryUser.h"
#include "tests/support/SystemCallTracer.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"

namespace {

constexpr std::uint64_t sizeLimit = 1000;

// The error number that the action ends with; 0 for success.
std::int64_t codeOf(const std::function<void()>& action) {
    const PlatformError error = errorOf(action);
    EXPECT_TRUE(error.code == 0 || error.localizedDescription.starts_with("Cannot ")) << error.localizedDescription;
    return error.code;
}

void setModificationDate(const std::string& path, time_t seconds) {
    const timespec times[] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

class FileManagerTest : public testing::Test {
protected:
    // One item of every kind.
    FileManagerTest() {
        makeTree(directory.path(), "folder/ fifo| socket= toFile>file toFolder>folder toNothing>nowhere");
        writeFile(path("file"), "bytes");
    }

    std::string path(const std::string& name) const { return directory.path(name); }

    TemporaryDirectory directory;
    VariableEnvironment environment;
    LinuxFileManager manager{environment};
};

TEST_F(FileManagerTest, QueriesFollowLinksWhereTheyShould) {
    using enum FileType;
    struct Row {
        std::string name;
        bool fileExists, itemExists, isDirectory, isReadable;
        std::optional<FileType> type, followedType; // absent: ENOENT
    };
    const Row rows[] = {
        {"file", true, true, false, true, regular, regular},
        {"folder", true, true, true, true, directory, directory},
        {"fifo", true, true, false, true, fifo, fifo},
        {"socket", true, true, false, true, socket, socket},
        {"toFile", true, true, false, true, symbolicLink, regular},
        {"toFolder", true, true, true, true, symbolicLink, directory},
        {"toNothing", false, true, false, false, symbolicLink, {}},
        {"missing", false, false, false, false, {}, {}},
        {std::string("file\0x", 6), false, false, false, false, {}, {}},
        {std::string("folder\0x", 8), false, false, false, false, {}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string item = path(row.name);
        EXPECT_EQ(manager.fileExists(item), row.fileExists);
        EXPECT_EQ(manager.itemExists(item), row.itemExists);
        EXPECT_EQ(manager.isDirectory(item), row.isDirectory);
        EXPECT_EQ(manager.isReadableFile(item), row.isReadable);
        for (const auto& [links, type] : {std::pair(FollowLinks::no, row.type), {FollowLinks::yes, row.followedType}}) {
            FileAttributes attributes;
            EXPECT_EQ(codeOf([&] { attributes = manager.attributesOfItem(item, links); }), type ? 0 : ENOENT);
            EXPECT_EQ(attributes.type, type);
        }
    }
}

TEST_F(FileManagerTest, AttributesAreThoseOfTheDisk) {
    struct stat status {};
    const auto created = manager.attributesOfItem(path("file"), FollowLinks::no).creationDate;
    EXPECT_TRUE(created);
    setModificationDate(path("file"), 1'700'000'000);
    ASSERT_EQ(::stat(path("file").c_str(), &status), 0);
    const FileAttributes expected{.type = FileType::regular,
                                  .size = 5,
                                  .modificationDate = std::chrono::seconds(1'700'000'000),
                                  .creationDate = created,
                                  .fileSystemNumber = status.st_dev,
                                  .fileNumber = status.st_ino};
    EXPECT_EQ(manager.attributesOfItem(path("file"), FollowLinks::no), expected);
    EXPECT_EQ(manager.attributesOfItem(path("toFile"), FollowLinks::yes), expected);
    for (const auto& [seconds, date] : {std::pair<time_t, std::chrono::nanoseconds>{-86400, -std::chrono::hours(24)},
                                        {11'000'000'000, std::chrono::nanoseconds::max()}}) { // beyond the range
        setModificationDate(path("file"), seconds);
        EXPECT_EQ(manager.attributesOfItem(path("file"), FollowLinks::no).modificationDate, date);
    }
}

TEST_F(FileManagerTest, OnlyRegularFilesWithinTheLimitAreRead) {
    struct Row {
        std::string name;
        std::string data;
        std::optional<FileType> type;
        std::uint64_t size;
    };
    writeFile(path("empty"), "");
    writeFile(path("largest"), std::string(sizeLimit, 'x'));
    writeFile(path("larger"), std::string(sizeLimit + 1, 'x'));
    writeFile(path("sparse"), "");
    ASSERT_EQ(::truncate(path("sparse").c_str(), off_t{1} << 40), 0);
    std::filesystem::create_symlink("/dev/zero", path("toDevice"));
    const Row rows[] = {
        {"file", "bytes", FileType::regular, 5},
        {"toFile", "bytes", FileType::regular, 5},
        {"empty", "", FileType::regular, 0},
        {"largest", std::string(sizeLimit, 'x'), FileType::regular, sizeLimit},
        {"larger", "", FileType::regular, sizeLimit + 1},
        {"sparse", "", FileType::regular, std::uint64_t{1} << 40},
        {"fifo", "", FileType::fifo, 0},
        {"socket", "", FileType::socket, 0},
        {"toDevice", "", FileType::characterDevice, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const FileContents contents = manager.contentsOfFile(path(row.name), sizeLimit);
        EXPECT_EQ(contents.data, row.data);
        EXPECT_EQ(contents.attributes.type, row.type);
        EXPECT_EQ(contents.attributes.size, row.size);
    }
    EXPECT_EQ(manager.contentsOfFile(path("folder"), sizeLimit).attributes.type, FileType::directory);
    for (const std::string& name : {std::string("missing"), std::string("toNothing"), std::string("file\0", 5)})
        EXPECT_EQ(codeOf([&] { manager.contentsOfFile(path(name), sizeLimit); }), ENOENT) << name;
}

TEST_F(FileManagerTest, FilesThatTheKernelMakesUpAreReadThoughTheyHaveNoSize) {
    const std::string self = manager.contentsOfFile("/proc/self/status", 100'000).data;
    EXPECT_NE(self.find("VmRSS"), std::string::npos);
    EXPECT_EQ(self.find('\0'), std::string::npos);
    const FileContents cut = manager.contentsOfFile("/proc/self/status", 100);
    EXPECT_EQ(cut.data, "");
    EXPECT_GT(cut.attributes.size, 100u);
}

TEST_F(FileManagerTest, AReadMakesNoCallTooMany) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    struct Row {
        const char* name;
        std::size_t calls;
    };
    // The one call for what is not read is the look at the path: nothing is opened.
    for (const Row& row : {Row{"file", 8}, {"fifo", 1}, {"folder", 1}, {"socket", 1}, {"missing", 1}}) {
        const Trace trace = traceSystemCalls([&] { return manager.contentsOfFile(path(row.name), sizeLimit).data; });
        EXPECT_EQ(trace.calls.size(), row.calls) << row.name;
    }
}

TEST_F(FileManagerTest, AFileThatChangesUnderTheReaderIsReadAgainOrShowsAsChanged) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    time_t date = 1'000'000'000;
    const auto write = [&](const std::string& bytes) {
        writeFile(path("file"), bytes);
        setModificationDate(path("file"), ++date); // for kernels whose clock is too coarse to tell two writes apart
    };
    const auto renamed = [&](const std::string& name) { std::filesystem::rename(path(name), path("file")); };
    struct Row {
        const char* name;
        std::size_t call; // before which somebody comes in between; 0: before every reading
        const char* callName;
        std::function<void()> interlude;
        const char* data;
        bool isLatest; // whether the attributes are those that the file has in the end
    };
    const Row rows[] = {
        {"shorter after the look", 1, "pread64", [&] { write("abc"); }, "abc", true},
        {"longer after the look", 1, "pread64", [&] { write("abcdefgh"); }, "abcdefgh", true},
        {"same length", 1, "pread64", [&] { write("BYTES"); }, "BYTES", true},
        {"emptied", 1, "pread64", [&] { write(""); }, "", true},
        {"changed after the reading", 2, "fstat", [&] { write("BYTES"); }, "BYTES", true},
        {"grown beyond the limit", 1, "pread64", [&] { write(std::string(sizeLimit + 1, 'x')); }, "", true},
        {"another file before the opening", 1, "openat", [&] { write("abc"); }, "abc", true},
        {"replaced after the opening", 1, "pread64", [&] { renamed("other"); }, "bytes", false},
        {"a FIFO before the opening", 1, "openat", [&] { renamed("fifo"); }, "", true},
        {"a folder's link before the opening", 1, "openat", [&] { renamed("toFolder"); }, "", false},
        {"never still", 0, "pread64", [&] { write("BYTES"); }, "BYTES", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        write("bytes");
        writeFile(path("other"), "other");
        std::vector<SystemCallFault> faults;
        for (std::size_t call = row.call ? row.call : 1; call <= (row.call ? row.call : 10); ++call)
            faults.push_back({call, FaultKind::interlude, 0, row.interlude, row.callName});
        const Trace trace = traceSystemCalls(
            [&] {
                const FileContents contents = manager.contentsOfFile(path("file"), sizeLimit);
                const bool isLatest = contents.attributes == manager.attributesOfItem(path("file"), FollowLinks::no);
                return contents.data + (isLatest ? ", latest" : ", outdated");
            },
            faults);
        EXPECT_EQ(trace.message, std::string(row.data) + (row.isLatest ? ", latest" : ", outdated"));
        std::filesystem::remove(path("file"));
    }
}

TEST_F(FileManagerTest, AFailingReadIsReported) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const auto read = [&] { return manager.contentsOfFile(path("file"), sizeLimit).data; };
    for (std::size_t call = 1; call <= 5; ++call) {
        const Trace trace = traceSystemCalls(read, {{call, FaultKind::fail, EIO, {}, {}}});
        EXPECT_EQ(trace.message, "Cannot read “" + path("file") + "”: Input/output error.") << "call " << call;
    }
    EXPECT_EQ(traceSystemCalls(read, {{1, FaultKind::fail, EINTR, {}, "pread64"}}).message, "bytes");
}

TEST_F(FileManagerTest, AnOrdinaryUserIsRefusedWhatHeMayNotRead) {
    if (::geteuid() != 0 || !canTraceSystemCalls()) GTEST_SKIP() << "needs root, to be another user for a while";
    ASSERT_EQ(::chmod(path("file").c_str(), 0600), 0);
    ASSERT_EQ(::chmod(path("folder").c_str(), 0700), 0);
    ASSERT_EQ(::chmod(directory.path().c_str(), 0755), 0);
    const auto refused = [&](const std::function<void()>& action) {
        const Trace trace = traceSystemCalls([&] {
            becomeOrdinaryUser();
            action();
            return std::string();
        });
        return trace.errorNumber == EACCES;
    };
    EXPECT_TRUE(refused([&] { manager.contentsOfFile(path("file"), sizeLimit); }));
    EXPECT_TRUE(refused([&] { manager.contentsOfDirectory(path("folder")); }));
    EXPECT_TRUE(refused([&] { manager.createFile(path("new")); }));
    EXPECT_TRUE(refused([&] { manager.createDirectory(path("new/inner")); }));
    EXPECT_TRUE(refused([&] {
        if (!manager.isReadableFile(path("file"))) throw posixError(EACCES, "read");
    }));
}

TEST_F(FileManagerTest, DirectoriesAreListedWithAllTheirEntries) {
    makeTree(path("folder"), ".hidden \xff-not-UTF-8 link>nowhere inner/");
    for (int number = 0; number < 2000; ++number) writeFile(path("folder/file " + std::to_string(number)), "");
    std::map<std::string, std::optional<FileType>> found;
    for (const DirectoryEntry& entry : manager.contentsOfDirectory(path("toFolder"))) {
        EXPECT_TRUE(found.emplace(entry.name, entry.type).second) << entry.name << " came twice";
        EXPECT_EQ(entry.fileNumber, manager.attributesOfItem(path("folder/" + entry.name), FollowLinks::no).fileNumber);
    }
    EXPECT_EQ(found.size(), 2004u);
    const std::pair<const char*, FileType> expected[] = {{".hidden", FileType::regular},
                                                         {"\xff-not-UTF-8", FileType::regular},
                                                         {"link", FileType::symbolicLink},
                                                         {"inner", FileType::directory}};
    for (const auto& [name, type] : expected) {
        ASSERT_TRUE(found.contains(name)) << name;
        EXPECT_EQ(found[name].value_or(type), type) << name;
    }
    for (const char* name : {"file", "fifo"})
        EXPECT_EQ(codeOf([&] { manager.contentsOfDirectory(path(name)); }), ENOTDIR) << name;
    for (const std::string& name : {std::string("missing"), std::string("folder\0", 7)})
        EXPECT_EQ(codeOf([&] { manager.contentsOfDirectory(path(name)); }), ENOENT) << name;
}

TEST_F(FileManagerTest, DirectoriesAreMadeWithWhatIsMissingAboveThem) {
    struct Row {
        const char* name;
        std::string made;
        int error;
    };
    const std::string tooLong(256, 'x');
    const Row rows[] = {
        {"one", "one", 0},
        {"several", "a/b/c", 0},
        {"trailing and double slashes", "d//e/", 0},
        {"existing", "folder", 0},
        {"a link to a directory", "toFolder", 0},
        {"below a link to a directory", "toFolder/inner", 0},
        {"a file", "file", EEXIST},
        {"below a file", "file/inner/most", ENOTDIR},
        {"a link that leads nowhere", "toNothing", EEXIST},
        {"a NUL", std::string("g\0h", 3), ENOENT},
        {"failing after some were made", "i/j/" + tooLong, ENAMETOOLONG},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const DirectorySnapshot before = snapshotOf(directory.path());
        EXPECT_EQ(codeOf([&] { manager.createDirectory(path(row.made)); }), row.error);
        if (row.error != 0)
            EXPECT_EQ(snapshotOf(directory.path()), before);
        else
            EXPECT_TRUE(std::filesystem::is_directory(path(row.made)));
    }
}

TEST_F(FileManagerTest, AFileIsMadeOnlyWhereNothingIs) {
    manager.createFile(path("new"));
    EXPECT_EQ(readFile(path("new")), "");
    const DirectorySnapshot before = snapshotOf(directory.path());
    const std::pair<std::string, int> rows[] = {{"file", EEXIST},         {"toFile", EEXIST},
                                                {"toNothing", EEXIST},    {"folder", EEXIST},
                                                {"missing/file", ENOENT}, {std::string("n\0x", 3), ENOENT}};
    for (const auto& [name, error] : rows) EXPECT_EQ(codeOf([&] { manager.createFile(path(name)); }), error) << name;
    EXPECT_EQ(snapshotOf(directory.path()), before);
}

TEST_F(FileManagerTest, HomesComeFromTheVariableOrTheUserDatabase) {
    const auto recorded = manager.homeDirectoryPath();
    ASSERT_TRUE(recorded && recorded->starts_with('/'));
    environment.variables["HOME"] = "relative";
    EXPECT_EQ(manager.homeDirectoryPath(), recorded);
    environment.variables["HOME"] = "/somewhere/else";
    EXPECT_EQ(manager.homeDirectoryPath(), "/somewhere/else");
    EXPECT_EQ(manager.homeDirectoryPath("root"), "/root");
    EXPECT_EQ(manager.homeDirectoryPath("no such user"), std::nullopt);
    EXPECT_EQ(manager.homeDirectoryPath(std::string_view("root\0x", 6)), std::nullopt);
}

} // namespace
