#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>
#include <thread>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/RecordCoding.h"
#include "tests/process/DaemonProcess.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

// Two daemons and another program on one tree. Each daemon saves one file, again and again; all three rename both files
// meanwhile, each file within names of its own, so that nobody but its daemon can overwrite it. RACE_SEED=n plays one
// game again, as far as that is possible.

namespace {

using Command = EditorDocumentRequestCommand;
using Random = std::mt19937_64;

constexpr int saveCount = 600;

std::string textOf(char owner, int step) {
    return owner + std::to_string(step) + ":" + std::string(20'000, owner) + "\n";
}

class Client {
public:
    Client(std::string sharedRoot, char owned, std::uint64_t seed)
        : root(std::move(sharedRoot)), owner(owned), random(seed) {
        ask({.command = Command::openWorkspace});
        documentID = ask({.command = Command::open, .path = root + '/' + owner + '0'}).snapshot.value().documentID;
    }

    // The last text that was reported as saved.
    std::string play() {
        std::string saved = textOf(owner, 0);
        int savedCount = 0;
        for (int step = 1; step <= saveCount; ++step) {
            const char file = random() % 2 == 0 ? 'a' : 'b';
            ask({.command = Command::renameWorkspaceItem, .path = anyPath(file), .destinationPath = anyPath(file)});
            const auto response = ask({.command = Command::save,
                                       .documentID = documentID,
                                       .text = textOf(owner, step),
                                       .expectedVersion = version});
            if (response.success == true) saved = textOf(owner, step), ++savedCount;
        }
        EXPECT_GT(savedCount, saveCount / 10);
        daemon.closeInput();
        EXPECT_EQ(daemon.wait(), 0);
        return saved;
    }

private:
    std::string anyPath(char file) { return root + '/' + file + std::to_string(random() % 2); }

    EditorDocumentDaemonEnvelope ask(EditorDocumentDaemonRequest request) {
        request.requestID = "1";
        request.rootPath = root;
        daemon.sendLine(encodeRecord(request).value());
        while (const auto line = daemon.readLine()) {
            auto envelope = decodeRecord<EditorDocumentDaemonEnvelope>(*line);
            if (envelope.snapshot) version = envelope.snapshot->version;
            if (envelope.event == EditorDocumentEventKind::deleted) ++version;
            if (envelope.kind == EditorDocumentEnvelopeKind::response) return envelope;
        }
        throw std::runtime_error("the daemon ended");
    }

    const std::string root;
    const char owner;
    Random random;
    DaemonProcess daemon{};
    std::string documentID{};
    std::int64_t version = 0;
};

TEST(Races, NoTextIsLostThatWasReportedAsSaved) {
    const char* given = std::getenv("RACE_SEED");
    const std::uint64_t seed = given ? std::strtoull(given, nullptr, 10) : std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    const TemporaryDirectory directory;
    for (const char owner : {'a', 'b'}) writeFile(directory.path(owner + std::string("0")), textOf(owner, 0));
    Client first(directory.path(), 'a', seed), second(directory.path(), 'b', seed + 1);
    std::string saved[2];
    std::atomic<int> playing = 2;
    std::thread clients[] = {std::thread([&] { saved[0] = first.play(), --playing; }),
                             std::thread([&] { saved[1] = second.play(), --playing; })};
    Random random(seed + 2);
    const auto anyPath = [&](char file) { return directory.path(file + std::to_string(random() % 2)); };
    for (int move = 0; playing > 0; ++move) {
        const char file = random() % 2 == 0 ? 'a' : 'b';
        // Now and then to a name of its own, so that the others become free again.
        const std::string to = move % 4 == 0 ? directory.path(file + std::to_string(100 + move)) : anyPath(file);
        ::renameat2(AT_FDCWD, anyPath(file).c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
        std::this_thread::yield();
    }
    for (std::thread& client : clients) client.join();
    std::set<std::string> texts;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        const std::string text = readFile(entry.path()), name = entry.path().filename();
        EXPECT_NE(name[0], '.') << name << " was left behind";
        EXPECT_EQ(text, textOf(name[0], std::atoi(text.c_str() + 1))) << name << " is no whole text of its file";
        texts.insert(text);
    }
    for (const std::string& text : saved) EXPECT_TRUE(texts.contains(text)) << text.substr(0, 10) << " is lost";
}

} // namespace
