#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/RecordCoding.h"
#include "tests/process/DaemonProcess.h"
#include "tests/support/DeepFolder.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/ProcessLimits.h"
#include "tests/support/TemporaryDirectory.h"

// What the system grants and what it allows for names, at the edge. Every request is answered, whatever is refused says
// why, and the daemon goes on.

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

class Limits : public testing::Test {
protected:
    Limits() { fs::create_directories(root); }

    // The response, after whatever events come before it.
    EditorDocumentDaemonEnvelope ask(EditorDocumentDaemonRequest request) {
        request.requestID = std::to_string(++requestCount);
        if (!request.rootPath) request.rootPath = root;
        daemon->sendLine(encodeRecord(request).value());
        while (const auto line = daemon->readLine()) {
            auto envelope = decodeRecord<EditorDocumentDaemonEnvelope>(*line);
            if (envelope.kind == EditorDocumentEnvelopeKind::response) return envelope;
        }
        throw std::runtime_error("the daemon ended");
    }

    // Empty, or the message of the failure.
    std::string failureOf(EditorDocumentDaemonRequest request) {
        const auto response = ask(std::move(request));
        return response.success == true ? "" : response.message.value_or("no message");
    }

    std::string path(const std::string& name) const { return root + '/' + name; }

    // Opens, saves, creates, renames, copies and removes in the folder, all of which must work.
    void useEverything(const std::string& folder) {
        SCOPED_TRACE(folder);
        const std::string file = folder + "/used.txt";
        EXPECT_EQ(failureOf({.command = Command::openWorkspace}), "");
        EXPECT_EQ(failureOf({.command = Command::createWorkspaceFile, .path = folder, .name = "used.txt"}), "");
        const auto opened = ask({.command = Command::open, .path = file});
        ASSERT_TRUE(opened.snapshot) << opened.message.value_or("");
        EXPECT_EQ(failureOf({.command = Command::save,
                             .documentID = opened.snapshot->documentID,
                             .text = "text",
                             .expectedVersion = opened.snapshot->version}),
                  "");
        EXPECT_EQ(readFile(file), "text");
        EXPECT_EQ(failureOf({.command = Command::renameWorkspaceItem, .path = file, .destinationPath = file + "2"}),
                  "");
        EXPECT_EQ(failureOf({.command = Command::copyWorkspaceItem, .path = file + "2", .destinationPath = file}), "");
        EXPECT_EQ(failureOf({.command = Command::loadWorkspaceChildren, .path = folder}), "");
        EXPECT_EQ(failureOf({.command = Command::close, .documentID = opened.snapshot->documentID}), "");
        for (const std::string& each : {file, file + "2"})
            EXPECT_EQ(failureOf({.command = Command::deleteWorkspaceItem, .path = each}), "");
    }

    void expectAlive() { EXPECT_EQ(failureOf({.command = Command::close, .documentID = "x"}), "Unknown document."); }

    const TemporaryDirectory directory;
    const std::string root = directory.path("w");
    std::unique_ptr<DaemonProcess> daemon = std::make_unique<DaemonProcess>();

private:
    int requestCount = 0;
};

TEST_F(Limits, FewDescriptors) {
    if (IS_SANITIZED) GTEST_SKIP() << "a sanitizer needs descriptors of its own to look at an object";
    fs::create_directories(path("a/b/c/d/e"));
    ASSERT_EQ(failureOf({.command = Command::openWorkspace}), "");
    const rlim_t firstFree = firstFreeDescriptor(daemon->processID());
    // From none to enough for everything.
    for (const rlim_t spare : {0, 1, 2, 3, 12}) {
        const ProcessLimit limit(daemon->processID(), RLIMIT_NOFILE, firstFree + spare);
        if (spare == 12) {
            useEverything(path("a/b"));
            break;
        }
        const std::string source = path("file" + std::to_string(spare)), text = "text of the file";
        writeFile(source, text);
        const std::string failure =
            failureOf({.command = Command::copyWorkspaceItem, .path = source, .destinationPath = source + " copy"});
        EXPECT_EQ(fs::exists(source + " copy"), failure.empty()) << failure;
        const std::string createFailure =
            failureOf({.command = Command::createWorkspaceFile, .name = "made" + std::to_string(spare)});
        EXPECT_EQ(fs::exists(path("made" + std::to_string(spare))), createFailure.empty()) << createFailure;
        EXPECT_EQ(spare == 0, !createFailure.empty()) << spare;
        expectAlive();
        EXPECT_EQ(readFile(source), text);
    }
}

TEST_F(Limits, NoMoreThreads) {
    if (IS_SANITIZED) GTEST_SKIP() << "a sanitizer reserves address space without end";
    expectAlive();
    // A little more than there is, and nothing like the stack of another thread.
    const ProcessLimit limit(daemon->processID(), RLIMIT_AS, addressSpace(daemon->processID()) + (4U << 20U));
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(failureOf({.command = Command::openWorkspace}), "");
        writeFile(path("told"), "");
        useEverything(root);
        fs::remove(path("told"));
    }
    expectAlive();
}

TEST_F(Limits, AFullDisk) {
    const MountedDisk disk(path("disk"), "size=256k");
    if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
    writeFile(path("disk/a.txt"), "old");
    writeFile(path("large"), std::string(200'000, 'x'));
    const auto opened = ask({.command = Command::open, .path = path("disk/a.txt")});
    writeFile(path("disk/filler"), std::string(200'000, 'x'));
    const std::string full = "No space left on device.";
    EXPECT_TRUE(failureOf({.command = Command::save,
                           .documentID = opened.snapshot.value().documentID,
                           .text = std::string(100'000, 'y'),
                           .expectedVersion = 1})
                    .ends_with(full));
    EXPECT_TRUE(failureOf({.command = Command::moveWorkspaceItem, .path = path("large"), .destinationPath = disk.path})
                    .ends_with(full));
    EXPECT_EQ(readFile(path("disk/a.txt")), "old");
    EXPECT_EQ(fs::file_size(path("large")), 200'000U);
    EXPECT_EQ(std::distance(fs::directory_iterator(disk.path), fs::directory_iterator()), 2);
    fs::remove(path("disk/filler"));
    useEverything(disk.path);
}

TEST_F(Limits, FilesThatMayNotGrow) {
    writeFile(path("a.txt"), "old");
    const auto opened = ask({.command = Command::open, .path = path("a.txt")});
    const EditorDocumentDaemonRequest save{.command = Command::save,
                                           .documentID = opened.snapshot.value().documentID,
                                           .text = std::string(200, 'y'),
                                           .expectedVersion = 1};
    {
        const ProcessLimit limit(daemon->processID(), RLIMIT_FSIZE, 100);
        EXPECT_TRUE(failureOf(save).ends_with("File too large.")) << failureOf(save);
        EXPECT_EQ(readFile(path("a.txt")), "old");
    }
    EXPECT_EQ(failureOf(save), "");
}

TEST_F(Limits, AReadOnlyFileSystem) {
    const MountedDisk disk(path("disk"));
    if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
    writeFile(path("disk/a.txt"), "old");
    ASSERT_EQ(::mount("", disk.path.c_str(), "", MS_REMOUNT | MS_RDONLY, nullptr), 0);
    const auto opened = ask({.command = Command::open, .path = path("disk/a.txt")});
    ASSERT_TRUE(opened.snapshot);
    const EditorDocumentDaemonRequest refused[] = {
        {.command = Command::save, .documentID = opened.snapshot->documentID, .text = "new", .expectedVersion = 1},
        {.command = Command::createWorkspaceFile, .path = disk.path},
        {.command = Command::createWorkspaceFolder, .path = disk.path},
        {.command = Command::renameWorkspaceItem, .path = path("disk/a.txt"), .destinationPath = path("disk/b.txt")},
        {.command = Command::moveWorkspaceItem, .path = path("disk/a.txt"), .destinationPath = root},
        {.command = Command::duplicateWorkspaceItem, .path = path("disk/a.txt")},
        {.command = Command::trashWorkspaceItem, .path = path("disk/a.txt")},
        {.command = Command::deleteWorkspaceItem, .path = path("disk/a.txt")},
    };
    for (const auto& request : refused) EXPECT_NE(failureOf(request), "") << encodeRecord(request).value();
    EXPECT_EQ(readFile(path("disk/a.txt")), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(root), fs::directory_iterator()), 1);
    EXPECT_EQ(failureOf({.command = Command::copyWorkspaceItem, .path = path("disk/a.txt"), .destinationPath = root}),
              "");
}

TEST_F(Limits, AnOverlay) {
    const MountedDisk disk(directory.path("layers"), "size=4m");
    if (!disk.reason.empty()) GTEST_SKIP() << disk.reason;
    for (const char* layer : {"/lower/folder", "/upper", "/work"}) fs::create_directories(disk.path + layer);
    writeFile(disk.path + "/lower/folder/file", "lower");
    const std::string options =
        "lowerdir=" + disk.path + "/lower,upperdir=" + disk.path + "/upper,workdir=" + disk.path + "/work";
    if (::mount("overlay", root.c_str(), "overlay", 0, options.c_str()) != 0) GTEST_SKIP() << "no overlays";
    useEverything(root);
    useEverything(path("folder"));
    // A folder of the lower layer cannot be renamed there; it is copied instead.
    EXPECT_EQ(
        failureOf(
            {.command = Command::renameWorkspaceItem, .path = path("folder"), .destinationPath = path("renamed")}),
        "");
    EXPECT_EQ(readFile(path("renamed/file")), "lower");
    EXPECT_FALSE(fs::exists(path("folder")));
    ask({.command = Command::closeWorkspace});
    ::umount2(root.c_str(), MNT_DETACH);
}

TEST_F(Limits, NoHomeAndNoLocale) {
    daemon = std::make_unique<DaemonProcess>(
        std::vector<std::string>{},
        std::vector<std::string>{"HOME=", "LANG=xx_XX.nothing", "LC_ALL=", "XDG_DATA_HOME=", "PATH=", "TMPDIR="});
    writeFile(path("a"), "");
    writeFile(path("B"), "");
    const auto listing = ask({.command = Command::openWorkspace}).workspaceDirectory.value();
    EXPECT_EQ(listing.nodes.at(0).name + listing.nodes.at(1).name, "aB");
    useEverything(root);
}

TEST_F(Limits, PathsOfTheGreatestLength) {
    // 4,095 bytes are the most that the system takes for a path.
    std::string folder = root;
    const auto room = [&] { return 4095 - std::string("/used.txt").size() - folder.size() - 1; };
    while (room() > 255) folder += '/' + std::string(100, 'd');
    fs::create_directories(folder);
    folder += '/' + std::string(room(), 'e');
    ASSERT_EQ(failureOf({.command = Command::createWorkspaceFolder,
                         .path = fs::path(folder).parent_path(),
                         .name = fs::path(folder).filename()}),
              "");
    // Temporaries would be longer than that; folders are opened instead of named.
    EXPECT_EQ(failureOf({.command = Command::openWorkspace}), "");
    EXPECT_EQ(failureOf({.command = Command::createWorkspaceFile, .path = folder, .name = "used.txt"}), "");
    const auto opened = ask({.command = Command::open, .path = folder + "/used.txt"});
    ASSERT_TRUE(opened.snapshot) << opened.message.value_or("");
    EXPECT_EQ(failureOf({.command = Command::save,
                         .documentID = opened.snapshot->documentID,
                         .text = "text",
                         .expectedVersion = 1}),
              "");
    EXPECT_EQ(readFile(folder + "/used.txt"), "text");
    EXPECT_NE(failureOf({.command = Command::createWorkspaceFile, .path = folder, .name = std::string(40, 'n')}), "");
    EXPECT_EQ(failureOf({.command = Command::deleteWorkspaceItem, .path = folder + "/used.txt"}), "");
}

TEST_F(Limits, AHundredThousandEntries) {
    for (int i = 0; i < 100'000; ++i) Descriptor(::creat(path("entry" + std::to_string(i)).c_str(), 0600));
    EXPECT_EQ(ask({.command = Command::openWorkspace}).workspaceDirectory.value().nodes.size(), 100'000U);
    EXPECT_EQ(failureOf({.command = Command::deleteWorkspaceItem, .path = path("entry1")}), "");
    expectAlive();
}

TEST_F(Limits, FiveThousandFoldersDeep) {
    makeDeepFolder(path("deep"), 5000);
    const ProcessLimit limit(daemon->processID(), RLIMIT_NOFILE, 200);
    EXPECT_EQ(failureOf({.command = Command::openWorkspace}), "");
    EXPECT_EQ(
        failureOf({.command = Command::renameWorkspaceItem, .path = path("deep"), .destinationPath = path("moved")}),
        "");
    EXPECT_EQ(depthOfFolder(path("moved")), 5000U);
    EXPECT_EQ(failureOf({.command = Command::deleteWorkspaceItem, .path = path("moved")}), "");
    EXPECT_FALSE(fs::exists(path("moved")));
}

TEST_F(Limits, LoopsOfLinksAndMounts) {
    fs::create_directories(path("a/b"));
    fs::create_symlink("loop2", path("loop1"));
    fs::create_symlink("loop1", path("loop2"));
    fs::create_symlink("../..", path("a/b/up"));
    EXPECT_EQ(failureOf({.command = Command::openWorkspace}), "");
    EXPECT_NE(failureOf({.command = Command::open, .path = path("loop1")}), "");
    EXPECT_NE(failureOf({.command = Command::loadWorkspaceChildren, .path = path("loop1")}), "");
    std::string around = path("a/b");
    for (int round = 0; round < 45; ++round) around += "/up/a/b";
    EXPECT_NE(failureOf({.command = Command::loadWorkspaceChildren, .path = around}), "");
    EXPECT_EQ(failureOf({.command = Command::copyWorkspaceItem, .path = path("a"), .destinationPath = path("copy")}),
              "");
    EXPECT_EQ(fs::read_symlink(path("copy/b/up")), "../..");
    if (::mount(root.c_str(), path("a/b").c_str(), "", MS_BIND, nullptr) == 0) {
        EXPECT_EQ(failureOf({.command = Command::openWorkspace}), "");
        EXPECT_EQ(failureOf({.command = Command::loadWorkspaceChildren, .path = path("a/b/a")}), "");
        EXPECT_NE(failureOf({.command = Command::deleteWorkspaceItem, .path = path("a")}), "");
        EXPECT_TRUE(fs::exists(path("copy/b")));
        ::umount2(path("a/b").c_str(), MNT_DETACH);
    }
    useEverything(path("a/b"));
}

TEST_F(Limits, ARootWhoseFileSystemVanishes) {
    auto disk = std::make_unique<MountedDisk>(path("disk"), "size=4m");
    if (!disk->reason.empty()) GTEST_SKIP() << disk->reason;
    writeFile(path("disk/w/a.txt"), "text");
    const std::string inner = path("disk/w");
    EXPECT_EQ(failureOf({.command = Command::openWorkspace, .rootPath = inner}), "");
    const auto opened = ask({.command = Command::open, .path = path("disk/w/a.txt")});
    disk.reset();
    EXPECT_EQ(failureOf({.command = Command::loadWorkspaceChildren, .rootPath = inner, .path = inner}),
              "The requested directory is unavailable.");
    EXPECT_NE(failureOf({.command = Command::createWorkspaceFile, .rootPath = inner}), "");
    EXPECT_NE(failureOf({.command = Command::open, .path = path("disk/w/a.txt")}), "");
    useEverything(root);
}

// White space around a path is dropped, and what is then meant may be another item.
TEST_F(Limits, NamesThatBeginOrEndWithBlanks) {
    EXPECT_EQ(failureOf({.command = Command::openWorkspace}), "");
    for (const std::string blank : {" ", "\n", "\t", "\u00A0", " \n"}) {
        const std::string name = "a" + blank, folder = "folder" + blank;
        SCOPED_TRACE(testing::PrintToString(blank));
        for (const std::string& each : std::vector<std::string>{"a", name, "folder/a", folder + "/a"})
            writeFile(path(each), each);
        const auto opened = ask({.command = Command::open, .path = path(name)});
        ASSERT_TRUE(opened.snapshot) << opened.message.value_or("");
        EXPECT_EQ(opened.snapshot->text, name);
        const auto trimmed = ask({.command = Command::open, .path = blank + path("folder/a") + blank});
        ASSERT_TRUE(trimmed.snapshot) << trimmed.message.value_or("");
        EXPECT_EQ(trimmed.snapshot->path, path("folder/a"));

        EXPECT_EQ(
            ask({.command = Command::loadWorkspaceChildren, .path = path(folder)}).workspaceDirectory->directoryPath,
            path(folder));
        EXPECT_EQ(failureOf({.command = Command::createWorkspaceFile, .path = path(folder), .name = "new"}), "");
        EXPECT_EQ(
            failureOf({.command = Command::copyWorkspaceItem, .path = path(name), .destinationPath = path(folder)}),
            "");
        EXPECT_EQ(failureOf({.command = Command::deleteWorkspaceItem, .path = path(name)}), "");
        EXPECT_EQ(readFile(path("a")), "a");
        EXPECT_EQ(readFile(path(folder + '/' + name)), name);
        EXPECT_TRUE(fs::exists(path(folder + "/new")));
        EXPECT_EQ(ask({.command = Command::openWorkspace, .rootPath = path(folder)}).workspaceRootPath, path(folder));
        EXPECT_EQ(ask({.command = Command::closeWorkspace, .rootPath = path(folder)}).workspaceRootPath, path(folder));
        EXPECT_EQ(failureOf({.command = Command::deleteWorkspaceItem, .path = path(folder)}), "");
        EXPECT_TRUE(fs::exists(path("folder")));
    }
}

TEST_F(Limits, NamesOfEveryByte) {
    EXPECT_EQ(failureOf({.command = Command::openWorkspace}), "");
    for (int byte = 1; byte < 256; ++byte) {
        if (byte == '/') continue;
        const std::string name = std::string("a") + static_cast<char>(byte) + "b";
        SCOPED_TRACE(byte);
        writeFile(path(name), "old");
        const auto opened = ask({.command = Command::open, .path = path(name)});
        ASSERT_TRUE(opened.snapshot) << opened.message.value_or("");
        EXPECT_EQ(opened.snapshot->path, path(name));
        EXPECT_EQ(failureOf({.command = Command::save,
                             .documentID = opened.snapshot->documentID,
                             .text = "new",
                             .expectedVersion = 1}),
                  "");
        EXPECT_EQ(readFile(path(name)), "new");
        EXPECT_EQ(
            failureOf(
                {.command = Command::renameWorkspaceItem, .path = path(name), .destinationPath = path(name + "2")}),
            "");
    }
    const auto listing = ask({.command = Command::loadWorkspaceChildren, .path = root}).workspaceDirectory.value();
    ASSERT_EQ(listing.nodes.size(), 254U);
    for (const auto& node : listing.nodes) EXPECT_TRUE(fs::exists(path(node.name))) << node.name;
}

} // namespace
