// Every system call of every operation that changes the disk fails once with each error that such a call may give, and
// once the process dies there. Operations are requests to a daemon, so that its answers and its state are looked at
// too: an answer of success means that the disk is as it should be, one of failure that it is as it was, and in either
// case the daemon goes on with what is there. Only what a rule of the operation allows may remain besides.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/PlatformError.h"
#include "shared/AutoWakeStateStore.h"
#include "tests/faults/World.h"
#include "tests/support/DaemonHarness.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/SystemCallTracer.h"

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

// A daemon with a workspace w, in which another file system is mounted if that is permitted, and an open document.
class Scene {
public:
    Scene() {
        for (const char* name : {"w/tree/file", "w/tree/inner/file", "w/disk/tree/file", "w/disk/tree/inner/file"})
            writeFile(path(name), "old\n");
        writeFile(path("w/disk/.Trash-" + std::to_string(::geteuid())), "no folder");
        ::setxattr(path("w/tree/file").c_str(), "user.tag", "value", 5, 0);
        writeFile(path("w/holes"), "x");
        fs::resize_file(path("w/holes"), 1 << 15);
        fs::create_symlink("file", path("w/tree/link"));
        fs::create_symlink("tree/file", path("w/to file"));
        EXPECT_EQ(::mkfifo(path("w/tree/fifo").c_str(), 0640), 0);
        ::chmod(path("w/tree/inner").c_str(), 0555);
        for (const auto& entry : fs::recursive_directory_iterator(path(""))) {
            const timespec times[] = {{oldTime, 0}, {oldTime, 0}};
            ::utimensat(AT_FDCWD, entry.path().c_str(), times, AT_SYMLINK_NOFOLLOW);
        }
        // Not of the old time: contents that are written back are the same with another one.
        writeFile(path("store/state.json"), R"({"schemaVersion":1,"clientStatesByKey":{},"events":[]})");
        EXPECT_EQ(daemon.openWorkspace(path("w")).success, true);
        EXPECT_EQ(daemon.loadChildren(path("w"), path("w/tree")).success, true);
        open("w/tree/file");
        daemon.buildIndexes();
    }

    std::string path(const std::string& name) const { return daemon.directory.path(name); }
    bool hasDisk() const { return disk.reason.empty(); }
    World world() const { return worldAt(daemon.directory.path()); }

    void open(const std::string& name) {
        documentID = daemon.open(path(name)).snapshot.value().documentID;
        version = 1;
    }

    // Empty, or the message of the failure. There must be one response.
    std::string request(EditorDocumentDaemonRequest request) {
        request.rootPath = path("w");
        if (request.command == Command::save) request.documentID = documentID;
        std::string answer = "nothing was answered";
        int responseCount = 0;
        for (const auto& envelope : daemon.exchange(std::move(request))) {
            if (envelope.kind != EditorDocumentEnvelopeKind::response) continue;
            answer = envelope.success == true ? "" : envelope.message.value_or("no message");
            lastPath = envelope.snapshot ? envelope.snapshot->path : "";
            if (++responseCount > 1) throw std::runtime_error("answered twice");
        }
        return answer;
    }

    // What the daemon gets wrong when it goes on with the document at its version and the listing of the root.
    std::string complaint(const std::optional<std::string>& documentPath) {
        std::set<std::string> shown, present;
        const auto listing = daemon.loadChildren(path("w"), path("w")).workspaceDirectory;
        if (!listing) return " the root cannot be listed";
        for (const auto& node : listing->nodes) shown.insert(node.name);
        for (const auto& entry : fs::directory_iterator(path("w"))) {
            if (!isTemporarySaveName(entry.path().filename().string())) present.insert(entry.path().filename());
        }
        const std::string failure =
            request({.command = Command::save, .text = "goes on\n", .expectedVersion = version});
        if (!failure.empty()) return " version " + std::to_string(version) + " cannot be saved: " + failure;
        if (documentPath && lastPath != path(*documentPath)) return " the document is at " + lastPath;
        return (shown == present ? "" : " the listing is another") +
               std::string(readFile(lastPath) == "goes on\n" ? "" : " the file holds another text");
    }

    DaemonHarness daemon{};
    std::int64_t version = 1; // of the document

private:
    const MountedDisk disk{daemon.directory.path("w/disk")};
    std::string documentID{};
    std::string lastPath{};
};

// What may remain that is neither the old world nor the new one.
using Rule = std::function<bool(const World& before, const World& after, const World& now)>;

bool nothingElse(const World&, const World&, const World&) {
    return false;
}
bool newFolders(const World& before, const World& after, const World& now) {
    World folders = before;
    for (const auto& entry : after.entries) {
        if (S_ISDIR(std::stoul(entry.second))) folders.entries.insert(entry);
    }
    return isWithin(before, now) && isWithin(now, folders);
}
bool partOfTheOld(const World& before, const World& after, const World& now) {
    return isWithin(after, now) && isWithin(now, before);
}
World both(World before, const World& after) {
    before.entries.insert(after.entries.begin(), after.entries.end());
    return before;
}
bool allOfTheNewAndPartOfTheOld(const World& before, const World& after, const World& now) {
    return isWithin(after, now) && isWithin(now, both(before, after));
}
// The information on a trashed item comes first, and the item's own removal last when it had to be copied.
bool informationOrAllOfTheNew(const World& before, const World& after, World now) {
    if (allOfTheNewAndPartOfTheOld(before, after, now)) return true;
    now.entries.erase("home/.local/share/Trash/info/tree.trashinfo");
    return newFolders(before, after, now);
}
// The bytes of a state file are written after it was truncated; an empty one is a new store.
bool emptyStore(const World& before, const World&, World now) {
    std::string& store = now.entries.at("store/state.json");
    const bool isEmpty = store.ends_with("new ");
    store = before.entries.at("store/state.json");
    return isEmpty && now.entries == before.entries;
}

struct Operation {
    const char* name;
    std::function<std::string(Scene&)> act;
    int versionStep = 0; // by which the document's version grows, and its place, when all goes well
    const char* documentPath = "w/tree/file";
    Rule afterFailure = nothingElse;
    Rule afterDeath = nothingElse;
    SystemCallFault standingFault{}; // opens a way through the operation
    bool needsDisk = false;
    std::function<void(Scene&)> prepare = [](Scene&) {};
};

std::ostream& operator<<(std::ostream& stream, const Operation& operation) {
    return stream << operation.name;
}

std::string save(Scene& scene) {
    return scene.request({.command = Command::save, .text = "new\n", .expectedVersion = scene.version});
}

auto change(Command command, const char* item, const char* destination = nullptr) {
    return [=](Scene& scene) {
        EditorDocumentDaemonRequest request{.command = command, .path = scene.path(item)};
        if (destination) request.destinationPath = scene.path(destination);
        if (command == Command::createWorkspaceFile || command == Command::createWorkspaceFolder) request.name = "new";
        return scene.request(std::move(request));
    };
}

std::string updateStore(Scene& scene) {
    try {
        AutoWakeStateStore(scene.path("store/state.json"), *scene.daemon.fileManager)
            .update([](AutoWakeStoreSnapshot& snapshot) { snapshot.events.push_back({.id = "new"}); });
        return "";
    } catch (const PlatformError& error) {
        return error.localizedDescription;
    }
}

// The operation on a system that refuses one of its calls.
Operation without(const char* call, int error, std::size_t count, Operation operation) {
    operation.standingFault = {count, FaultKind::fail, error, {}, call};
    return operation;
}

Operation leaving(Rule afterFailure, Rule afterDeath, Operation operation) {
    operation.afterFailure = std::move(afterFailure);
    operation.afterDeath = std::move(afterDeath);
    return operation;
}

Operation prepared(std::function<void(Scene&)> prepare, Operation operation) {
    operation.prepare = std::move(prepare);
    return operation;
}

Operation acrossDisks(Operation operation) {
    operation.needsDisk = true;
    return operation;
}

std::vector<Operation> allOperations() {
    const auto copy = [](const char* item) { return change(Command::copyWorkspaceItem, item, "w/copy"); };
    const auto create = [](Command command) { return change(command, "w/a/b/c"); };
    const auto move = [](const char* to) { return change(Command::moveWorkspaceItem, "w/tree", to); };
    const auto trash = [](const char* item) { return change(Command::trashWorkspaceItem, item); };
    return {
        {"save", save, 1},
        without("openat", EOPNOTSUPP, 2, {"saveWithoutUnnamedFiles", save, 1}),
        without("linkat", ENOENT, 1, {"saveWithoutProc", save, 1}),
        prepared([](Scene& scene) { scene.open("w/to file"); }, {"saveThroughLink", save, 1, "w/to file"}),
        prepared(
            [](Scene& scene) {
                EXPECT_EQ(change(Command::deleteWorkspaceItem, "w/tree")(scene), "");
                ++scene.version;
            },
            leaving(nothingElse, newFolders, {"saveInDeletedFolder", save, 1})),
        {"createFile", change(Command::createWorkspaceFile, "w")},
        leaving(newFolders, newFolders, {"createFileInNewFolder", create(Command::createWorkspaceFile)}),
        leaving(nothingElse, newFolders, {"createFolder", create(Command::createWorkspaceFolder)}),
        {"rename", change(Command::renameWorkspaceItem, "w/tree", "w/moved"), 0, "w/moved/file"},
        leaving(newFolders, newFolders, {"move", move("w/a/b"), 0, "w/a/b/file"}),
        without("renameat2", EINVAL, 1, {"moveWithoutNoReplace", move("w/moved"), 0, "w/moved/file"}),
        acrossDisks(leaving(allOfTheNewAndPartOfTheOld, allOfTheNewAndPartOfTheOld,
                            {"moveAcross", move("w/disk/moved"), 0, "w/disk/moved/file"})),
        {"copyTree", copy("w/tree")},
        {"copyFile", copy("w/tree/file")},
        {"copyLink", copy("w/tree/link")},
        {"copyFifo", copy("w/tree/fifo")},
        acrossDisks({"copyAcross", change(Command::copyWorkspaceItem, "w/tree/file", "w/disk/copy")}),
        without("openat", EOPNOTSUPP, 1, {"copyWithoutUnnamedFiles", copy("w/tree/file")}),
        without("linkat", ENOENT, 1, {"copyWithoutProc", copy("w/tree/file")}),
        without("copy_file_range", EXDEV, 1, {"copyWithoutSharing", copy("w/tree/file")}),
        without("lseek", EINVAL, 1, {"copyWithoutHoles", copy("w/holes")}),
        without("renameat2", EINVAL, 1, {"copyWithoutNoReplace", copy("w/tree/link")}),
        {"duplicate", change(Command::duplicateWorkspaceItem, "w/tree/inner")},
        leaving(newFolders, informationOrAllOfTheNew, {"trash", trash("w/tree"), 1}),
        acrossDisks(leaving(informationOrAllOfTheNew, informationOrAllOfTheNew, {"trashAcross", trash("w/disk/tree")})),
        leaving(partOfTheOld, partOfTheOld, {"delete", change(Command::deleteWorkspaceItem, "w/tree"), 1}),
        leaving(nothingElse, emptyStore, {"updateWakeStore", updateStore}),
    };
}

// The errors that a call may plausibly give. Absence is left out: it is an answer, not a failure.
std::vector<int> plausibleErrors(const std::string& call) {
    const auto isOneOf = [&](std::initializer_list<const char*> names) { return std::ranges::count(names, call) > 0; };
    if (isOneOf({"openat", "open"})) return {EIO, EACCES, EMFILE, ENOSPC, EROFS, EINTR};
    if (isOneOf({"write", "pwrite64", "copy_file_range", "sendfile", "ftruncate", "fallocate"}))
        return {EIO, ENOSPC, EDQUOT, EINTR};
    if (isOneOf({"fsync", "fdatasync", "close"})) return {EIO, ENOSPC, EINTR};
    if (isOneOf({"linkat", "renameat", "renameat2", "rename", "link", "mkdirat", "mkdir", "symlinkat", "mknodat",
                 "unlinkat", "unlink", "rmdir"}))
        return {EIO, EACCES, ENOSPC, EROFS, EBUSY};
    if (call == "flock") return {ENOLCK, EINTR};
    if (call.starts_with("fch") || call.find("xattr") != std::string::npos || call == "utimensat")
        return {EIO, EPERM, EOPNOTSUPP, ENOSPC};
    return {EIO, EACCES};
}

// Of what is kept of a file, some is not worth a failure where rights or the file system do not allow it.
bool mayLeaveOut(const std::string& call, int error) {
    return (error == EPERM || error == EOPNOTSUPP) && (call.starts_with("fch") || call.find("xattr") != call.npos);
}

// Where that is permitted the scenes are in memory: flushing would take nearly all of the time. And nobody else mounts
// anything there: a walk reads the table of mounts, a page with each call, and two runs would differ in their calls.
class InMemory {
public:
    InMemory() {
        if (disk.reason.empty()) ::setenv("TMPDIR", disk.path.c_str(), 1);
    }
    InMemory(const InMemory&) = delete;
    InMemory& operator=(const InMemory&) = delete;
    ~InMemory() { before ? ::setenv("TMPDIR", before->c_str(), 1) : ::unsetenv("TMPDIR"); }

    const bool isAlone = ::unshare(CLONE_NEWNS) == 0 && ::mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0;

private:
    const std::optional<std::string> before =
        std::getenv("TMPDIR") ? std::optional<std::string>(std::getenv("TMPDIR")) : std::nullopt;
    const TemporaryDirectory directory;
    const MountedDisk disk{directory.path("disk"), "size=64m"};
};

class EveryStep : public testing::TestWithParam<Operation> {
protected:
    void SetUp() override {
        if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
        Scene scene;
        operation.prepare(scene);
        if (operation.needsDisk && !scene.hasDisk()) GTEST_SKIP() << "needs to mount";
        before = scene.world();
        const Trace trace = traceSystemCalls([&] { return operation.act(scene); }, {operation.standingFault});
        ASSERT_EQ(trace.message, "");
        after = scene.world();
        ASSERT_NE(before.entries, after.entries);
        calls = trace.calls;
    }

    Trace run(Scene& scene, const SystemCallFault& fault, bool mayDiffer) const {
        std::string answer;
        return traceSystemCalls([&] { return answer = operation.act(scene); }, {fault, operation.standingFault},
                                [&] { return findingAfter(answer, mayDiffer, scene); });
    }

    // In the process that lived.
    std::string findingAfter(const std::string& answer, bool mayDiffer, Scene& scene) const {
        const World now = scene.world();
        std::string finding;
        const bool isOld = now.entries == before.entries, isNew = now.entries == after.entries;
        if (answer.empty() && !isNew && !mayDiffer) finding = "success, but" + differenceOf(now, after);
        if (!answer.empty() && !isOld && !operation.afterFailure(before, after, now))
            finding = "failure, but" + differenceOf(now, before);
        for (const std::string& path : now.temporaries) finding += " left " + path;
        if (answer.empty()) scene.version += operation.versionStep;
        std::optional<std::string> documentPath; // anywhere
        if (answer.empty()) documentPath = operation.documentPath;
        if (!answer.empty() && isOld && operation.versionStep == 0) documentPath = "w/tree/file";
        return finding + scene.complaint(documentPath);
    }

    const InMemory inMemory{};
    const Operation operation = GetParam();
    World before{};
    World after{};
    std::vector<std::string> calls{};
};

TEST_P(EveryStep, AFailureThereIsToldAndChangesNothing) {
    std::size_t count = 0;
    for (std::size_t call = 1; call <= calls.size(); ++call) {
        for (const int error : plausibleErrors(calls[call - 1])) {
            Scene scene;
            operation.prepare(scene);
            const Trace trace = run(scene, {.call = call, .kind = FaultKind::fail, .errorNumber = error},
                                    mayLeaveOut(calls[call - 1], error));
            ++count;
            if (!inMemory.isAlone && trace.calls.size() < call) break;
            ASSERT_GE(trace.calls.size(), call) << "two runs differ in their calls";
            EXPECT_EQ(trace.finding, "") << "call " << call << " " << trace.calls[call - 1] << ": "
                                         << std::strerror(error) << ": " << trace.message;
        }
    }
    RecordProperty("failures", static_cast<int>(count));
}

TEST_P(EveryStep, ADeathThereLeavesTheOldOrTheNew) {
    for (std::size_t call = 1; call <= calls.size(); ++call) {
        SCOPED_TRACE("killed at call " + std::to_string(call) + " " + calls[call - 1]);
        Scene scene;
        operation.prepare(scene);
        run(scene, {.call = call, .kind = FaultKind::kill}, false);
        const World now = scene.world();
        EXPECT_LE(now.temporaries.size(), 1U);
        EXPECT_TRUE(now.entries == before.entries || now.entries == after.entries ||
                    operation.afterDeath(before, after, now))
            << "from old" << differenceOf(now, before) << "; from new" << differenceOf(now, after);
    }
    RecordProperty("deaths", static_cast<int>(calls.size()));
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryStep, testing::ValuesIn(allOperations()),
                         [](const auto& each) { return std::string(each.param.name); });

} // namespace
