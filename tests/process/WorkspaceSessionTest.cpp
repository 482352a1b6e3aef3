#include <gtest/gtest.h>

#include <filesystem>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/RecordCoding.h"
#include "tests/process/DaemonProcess.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

// One client that works on a copy of this program's sources with every command there is.
class WorkspaceSession : public testing::Test {
protected:
    WorkspaceSession() {
        fs::create_directory(root);
        for (const char* folder : {"shared", "workspace", "tests"}) {
            fs::copy(fs::path(SOURCE_FOLDER) / folder, fs::path(root) / folder, fs::copy_options::recursive);
        }
    }

    std::string path(const std::string& relativePath) const { return root + '/' + relativePath; }

    // The successful response. The directories of the listings that follow it are left in listedPaths.
    EditorDocumentDaemonEnvelope ask(EditorDocumentDaemonRequest request) {
        request.requestID = std::to_string(++requestCount);
        daemon.sendLine(encodeRecord(request).value());
        // Its answer marks the end of what the request has caused.
        daemon.sendLine(R"({"requestID":"mark","command":"close","documentID":"x"})");
        auto response = nextEnvelope();
        // What the system tells of the request before may come first.
        while (response.kind == EditorDocumentEnvelopeKind::event) response = nextEnvelope();
        EXPECT_EQ(response.requestID, request.requestID);
        EXPECT_EQ(response.command, request.command);
        EXPECT_EQ(response.success, true) << response.message.value_or("");
        listedPaths.clear();
        for (auto envelope = nextEnvelope(); envelope.requestID != "mark"; envelope = nextEnvelope()) {
            EXPECT_EQ(envelope.kind, EditorDocumentEnvelopeKind::event);
            const auto& mutation = envelope.workspaceMutation;
            if (mutation && mutation->origin == WorkspaceBrowserMutationOrigin::internalOperation) {
                EXPECT_EQ(mutation, response.workspaceMutation);
            }
            if (!envelope.workspaceDirectory) continue;
            listedPaths.push_back(fs::path(envelope.workspaceDirectory->directoryPath).lexically_relative(root));
        }
        return response;
    }

    WorkspaceBrowserMutationPayload change(Command command, const std::string& item,
                                           const std::optional<std::string>& destination = {}) {
        EditorDocumentDaemonRequest request{.command = command, .rootPath = root, .path = path(item)};
        if (destination) request.destinationPath = path(*destination);
        const auto response = ask(std::move(request));
        EXPECT_TRUE(response.workspaceMutation);
        return response.workspaceMutation.value_or(WorkspaceBrowserMutationPayload{});
    }

    TemporaryDirectory directory;
    const std::string root = directory.path("checkout");
    std::vector<std::string> listedPaths;

private:
    EditorDocumentDaemonEnvelope nextEnvelope() {
        const auto line = daemon.readLine();
        if (!line) throw std::runtime_error("the output has ended");
        return decodeRecord<EditorDocumentDaemonEnvelope>(*line);
    }

    DaemonProcess daemon{{}, {"HOME=" + directory.path("home"), "XDG_DATA_HOME="}};
    int requestCount = 0;
};

TEST_F(WorkspaceSession, UsesEveryCommand) {
    using Paths = std::vector<std::string>;
    EXPECT_EQ(ask({.command = Command::openWorkspace, .rootPath = root}).workspaceDirectory.value().nodes.size(), 3U);
    ask({.command = Command::loadWorkspaceChildren, .rootPath = root, .path = path("workspace")});
    const auto listing =
        ask({.command = Command::loadWorkspaceChildren, .rootPath = root, .path = path("shared")}).workspaceDirectory;
    const auto original = std::distance(fs::directory_iterator(path("shared")), fs::directory_iterator());
    EXPECT_EQ(listing.value().nodes.size(), static_cast<std::size_t>(original));

    const auto document = ask({.command = Command::open, .path = path("shared/UTF8.h")}).snapshot.value();
    change(Command::renameWorkspaceItem, "shared/UTF8.h", "shared/Text.h");
    EXPECT_EQ(listedPaths, Paths{"shared"});
    const auto moved = change(Command::moveWorkspaceItem, "shared", "workspace");
    EXPECT_EQ(listedPaths, (Paths{".", "workspace", "workspace/shared"}));
    EXPECT_EQ(moved.isDirectory, true);
    const auto saved = ask({.command = Command::save,
                            .documentID = document.documentID,
                            .text = "saved\n",
                            .expectedVersion = document.version});
    EXPECT_EQ(saved.snapshot.value().path, path("workspace/shared/Text.h"));
    EXPECT_EQ(readFile(path("workspace/shared/Text.h")), "saved\n");
    ask({.command = Command::close, .documentID = document.documentID});

    change(Command::copyWorkspaceItem, "tests", "copied/tests");
    EXPECT_TRUE(fs::exists(path("copied/tests/process/WorkspaceSessionTest.cpp")));
    EXPECT_EQ(change(Command::duplicateWorkspaceItem, "copied").destinationPath, path("copied copy"));
    EXPECT_EQ(change(Command::createWorkspaceFolder, "copied").destinationPath, path("copied/untitled"));
    EXPECT_EQ(change(Command::createWorkspaceFile, "copied/untitled").destinationPath,
              path("copied/untitled/untitled"));
    change(Command::trashWorkspaceItem, "copied copy");
    EXPECT_TRUE(fs::exists(directory.path("home/.local/share/Trash/files/copied copy/tests")));
    change(Command::deleteWorkspaceItem, "copied");
    EXPECT_EQ(listedPaths, Paths{"."});
    EXPECT_EQ(std::distance(fs::directory_iterator(root), fs::directory_iterator()), 2);

    EXPECT_EQ(ask({.command = Command::closeWorkspace, .rootPath = root}).workspaceRootPath, root);
    change(Command::createWorkspaceFile, ".");
    EXPECT_EQ(listedPaths, Paths{});
}

} // namespace
