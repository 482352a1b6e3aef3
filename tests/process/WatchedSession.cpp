#include "tests/process/WatchedSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tests/support/Files.h"
#include "tests/support/ToldEvents.h"
#include "tests/support/WorkspaceTest.h"

namespace {

using Command = EditorDocumentRequestCommand;

} // namespace

WatchedSession::WatchedSession(const std::string& words, const std::vector<std::string>& launcher)
    : client({"HOME=" + directory.path("home"), "XDG_DATA_HOME="}, launcher) {
    // Nobody expands the folder in which the sentinels come and go.
    std::filesystem::create_directories(path("sentinels"));
    for (const std::string& word : wordsOf(words)) {
        if (word.ends_with('/')) {
            std::filesystem::create_directories(path(word));
        } else {
            writeFile(path(word), word);
        }
    }
    ask({.command = Command::openWorkspace, .rootPath = root});
}

void WatchedSession::shell(const std::string& command) const {
    const std::string inRoot = "cd '" + root + "' || exit 1; " + command;
    EXPECT_EQ(std::system(inRoot.c_str()), 0) << command;
}

void WatchedSession::load(const std::string& directoryPath) {
    ask({.command = Command::loadWorkspaceChildren, .rootPath = root, .path = path(directoryPath)});
}

void WatchedSession::expandAgain() {
    const auto shown = picture.folders;
    for (const auto& [folderPath, folder] : shown) {
        if (picture.folders.contains(folderPath))
            ask({.command = Command::loadWorkspaceChildren, .rootPath = root, .path = folderPath});
    }
}

std::string WatchedSession::open(const std::string& document) {
    const auto response = ask({.command = Command::open, .path = path(document)});
    documentIDs.push_back(response.snapshot.value().documentID);
    return documentIDs.back();
}

void WatchedSession::close(const std::string& documentID) {
    ask({.command = Command::close, .documentID = documentID});
    picture.documents.erase(documentID);
}

void WatchedSession::closeWorkspace() {
    ask({.command = Command::closeWorkspace, .rootPath = root});
    picture.folders.clear();
}

EditorDocumentDaemonEnvelope WatchedSession::ask(EditorDocumentDaemonRequest request) {
    client.send(std::move(request));
    return answer();
}

EditorDocumentDaemonEnvelope WatchedSession::answer() {
    for (auto envelope = next();; envelope = next()) {
        if (envelope.kind == EditorDocumentEnvelopeKind::response) return envelope;
    }
}

WatchedSession::Lines WatchedSession::events(std::size_t count) {
    Lines lines;
    while (lines.size() < count) lines.push_back(toldShort(next()));
    return lines;
}

WatchedSession::Lines WatchedSession::eventsUntilQuiet() {
    const std::string sentinel = "sentinels/" + std::to_string(++sentinelCount);
    Lines lines;
    const auto readUntil = [&](const std::string& last) {
        for (std::string line = toldShort(next()); line != last; line = toldShort(next())) lines.push_back(line);
    };
    writeFile(path(sentinel), "");
    readUntil("createdFile " + sentinel);
    // A deletion is held back for as long as anything may be.
    std::filesystem::remove(path(sentinel));
    readUntil("deleted " + sentinel);
    return lines;
}

std::string WatchedSession::differenceInTheEnd() {
    try {
        const std::string sentinel = std::to_string(++sentinelCount);
        writeFile(path("sentinels/" + sentinel), "");
        awaitInListing(sentinel, true);
        std::filesystem::remove(path("sentinels/" + sentinel));
        awaitInListing(sentinel, false);
        // Events that mend nothing may go on for ever.
        const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        for (; !picture.difference().empty(); next()) {
            if (std::chrono::steady_clock::now() > end) throw client.process.failure("no events that mend it");
        }
        return "";
    } catch (const std::runtime_error& noMoreEvents) {
        return picture.difference() + noMoreEvents.what();
    }
}

// What is expanded is told of even where events were lost.
void WatchedSession::awaitInListing(const std::string& sentinel, bool isThere) {
    while (true) {
        const auto folder = picture.folders.find(path("sentinels"));
        if (!picture.folders.contains(root))
            ask({.command = Command::openWorkspace, .rootPath = root});
        else if (folder == picture.folders.end())
            load("sentinels");
        else if (folder->second.children.contains(sentinel) == isThere)
            return;
        else
            next();
    }
}

EditorDocumentDaemonEnvelope WatchedSession::next() {
    auto envelope = client.nextEnvelope();
    picture.take(envelope);
    return envelope;
}

std::string WatchedSession::toldShort(const EditorDocumentDaemonEnvelope& event) const {
    std::string line = toldEvent(event, root);
    for (std::size_t number = 0; number < documentIDs.size(); ++number) {
        const auto position = line.find(documentIDs[number]);
        if (position == line.npos) continue;
        line.replace(position, documentIDs[number].size(), "document-" + std::to_string(number + 1));
    }
    return line;
}
