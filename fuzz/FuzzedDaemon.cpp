#include "fuzz/FuzzedDaemon.h"

#include <cerrno>

#include "fuzz/Require.h"
#include "platform/linux/text/ICUCollation.h"
#include "platform/linux/text/ICUTextCoding.h"
#include "shared/RecordCoding.h"
#include "shared/UTF8.h"
#include "shared/Whitespace.h"
#include "tests/support/VariableEnvironment.h"
#include "workspace/PathComponents.h"

namespace {

const VariableEnvironment emptyEnvironment;

// Opening these takes longer than most games.
class SharedTextCoding final : public TextCoding {
public:
    std::optional<DetectedText> detect(std::string data) const override { return coding().detect(std::move(data)); }
    std::optional<std::string> encode(std::string_view text, std::uint64_t encodingRawValue,
                                      ByteOrderMark mark) const override {
        return coding().encode(text, encodingRawValue, mark);
    }

private:
    static const TextCoding& coding() {
        static const ICUTextCoding shared;
        return shared;
    }
};

class SharedCollation final : public Collation {
public:
    void appendSortKey(std::string& keys, std::string_view name) const override {
        collation().appendSortKey(keys, name);
    }

private:
    static const ICUCollation& collation() {
        static const ICUCollation shared(emptyEnvironment);
        return shared;
    }
};

std::string withoutCarriageReturns(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            result += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n')
            result += '\n';
    }
    return result;
}

bool changesTheDisk(const EditorDocumentDaemonEnvelope& answer) {
    using Command = EditorDocumentRequestCommand;
    return answer.success == true && answer.command != Command::open && answer.command != Command::close &&
           answer.command != Command::openWorkspace && answer.command != Command::closeWorkspace &&
           answer.command != Command::loadWorkspaceChildren;
}

} // namespace

class FuzzedDaemon::Collector final : public Output {
public:
    // An envelope with a long text comes in several pieces, and many short ones come together.
    void write(std::string_view bytes) override {
        unread += bytes;
        for (std::size_t end = unread.find('\n'); end != unread.npos; end = unread.find('\n')) {
            take(std::string_view(unread).substr(0, end + 1));
            unread.erase(0, end + 1);
        }
    }

    std::vector<EditorDocumentDaemonEnvelope> envelopes{};

private:
    void take(std::string_view line) {
        try {
            envelopes.push_back(decodeRecord<EditorDocumentDaemonEnvelope>(line));
        } catch (const DecodingError& error) {
            require(false, error.localizedDescription + " " + std::string(line));
        }
    }

    std::string unread{};
};

FuzzedDaemon::FuzzedDaemon() {
    for (const char* path : {"/home", "/w", "/w/a", "/w/a/b", "/out"}) disk.put(path, FileType::directory);
    disk.put("/w/x.txt", FileType::regular, "text\n");
    disk.put("/w/a/y", FileType::regular, "\xFF\xFE\x61\x00\r\x00\n\x00");
    disk.put("/w/a/b/z", FileType::regular, "caf\xE9\r");
    disk.put("/w/link", FileType::symbolicLink, "a");
    DaemonPlatform platform{
        .environment = std::make_unique<VariableEnvironment>(),
        .fileIdentification = std::make_unique<MemoryFileIdentification>(disk),
        .directoryWalking = std::make_unique<MemoryDirectoryWalking>(disk),
        .textCoding = std::make_unique<SharedTextCoding>(),
        .collation = std::make_unique<SharedCollation>(),
    };
    output = install<Collector>(platform.output);
    install<Collector>(platform.errorOutput);
    putTogether(std::move(platform), memoryFileManager);
}

void FuzzedDaemon::sendLine(std::string_view line) {
    const std::string_view trimmedLine = trimmed(line);
    if (trimmedLine.empty()) return;
    const auto before = disk.allItems();
    std::string padded(trimmedLine);
    padded.append(LineInput::padding, '"');
    queue->sync([&] { daemon->handle(std::string_view(padded).substr(0, trimmedLine.size())); });
    const auto answers = std::exchange(output->envelopes, {});
    std::optional<std::string> text;
    try {
        text = decodeRecord<EditorDocumentDaemonRequest>(trimmedLine).text;
    } catch (const DecodingError&) {
        // Is answered as such.
    }
    if (isWellFormedUTF8(trimmedLine))
        checkAnswers(answers, before, text);
    else
        require(answers.empty(), "what is no UTF-8 was answered");
}

void FuzzedDaemon::send(EditorDocumentDaemonRequest request) {
    request.requestID = "1";
    if (const auto line = encodeRecord(request)) sendLine(*line);
}

void FuzzedDaemon::checkAnswers(const std::vector<EditorDocumentDaemonEnvelope>& answers,
                                const std::map<std::string, MemoryDisk::Item>& before,
                                const std::optional<std::string>& text) {
    int responseCount = 0;
    bool mayChange = false;
    for (const auto& answer : answers) {
        client.take(answer);
        if (answer.kind != EditorDocumentEnvelopeKind::response) continue;
        ++responseCount;
        require(answer.success == true || !answer.message.value_or("").empty(), "a failure without a reason");
        mayChange = mayChange || changesTheDisk(answer);
        if (answer.snapshot && answer.command == EditorDocumentRequestCommand::save) {
            require(text == answer.snapshot->text, "another text was saved");
            checkSaved(*answer.snapshot);
        }
    }
    require(responseCount == 1, std::to_string(responseCount) + " responses");
    if (mayChange || hadFaults) return;
    // A failed mutation leaves no more than missing folders that it made.
    auto after = disk.allItems();
    for (const auto& [path, item] : before) require(after.contains(path) && after.at(path) == item, path + " changed");
    for (const auto& [path, item] : after)
        require(before.contains(path) || item.type == FileType::directory, path + " was left behind");
}

void FuzzedDaemon::checkSaved(const EditorDocumentSnapshotPayload& snapshot) const {
    constexpr std::uint64_t utf8 = 4;
    if (snapshot.encodingRawValue != utf8) return;
    std::string bytes = disk.get(snapshot.path, FollowLinks::yes).bytes;
    if (bytes.starts_with("\xEF\xBB\xBF") && !snapshot.text.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
    require(withoutCarriageReturns(bytes) == withoutCarriageReturns(snapshot.text), "the file holds another text");
}

void FuzzedDaemon::notify(const std::string& path, std::uint32_t flags, std::uint64_t fileNumber) {
    if (!eventStreams->isRunning()) return;
    eventStreams->send({{path, flags, fileNumber == 0 ? std::nullopt : std::optional<FileIdentifier>(fileNumber)}});
    takeOutput();
}

void FuzzedDaemon::settle() {
    indexingQueue->runPending();
    indexingQueue->advance(std::chrono::seconds(1));
    queue->runPending();
    clock->now += std::chrono::seconds(2);
    watchQueue->advance(std::chrono::seconds(2));
    takeOutput();
}

void FuzzedDaemon::takeOutput() {
    queue->runPending();
    for (const auto& envelope : std::exchange(output->envelopes, {})) {
        require(envelope.kind == EditorDocumentEnvelopeKind::event, "a response without a request");
        client.take(envelope);
    }
}

std::optional<std::string> FuzzedDaemon::freePlace(const std::string& path) const {
    try {
        const std::string place = disk.resolved(path, FollowLinks::no);
        const auto* above = disk.find(parentPath(place), FollowLinks::no);
        if (place == "/" || !above || above->type != FileType::directory) return std::nullopt;
        return place;
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

void FuzzedDaemon::write(const std::string& path, const std::string& text, bool isTold) {
    const auto place = freePlace(path);
    if (!place) return;
    const bool isNew = !disk.find(*place, FollowLinks::no);
    disk.put(*place, FileType::regular, text);
    using namespace EventStreamFlag;
    if (isTold) notify(*place, itemIsFile | (isNew ? itemCreated : itemModified), 0);
}

void FuzzedDaemon::makeDirectory(const std::string& path, bool isTold) {
    const auto place = freePlace(path);
    if (!place || disk.find(*place, FollowLinks::no)) return;
    disk.put(*place, FileType::directory);
    using namespace EventStreamFlag;
    if (isTold) notify(*place, itemIsDir | itemCreated, disk.get(*place, FollowLinks::no).fileNumber);
}

void FuzzedDaemon::link(const std::string& path, const std::string& target, bool isTold) {
    const auto place = freePlace(path);
    if (!place || disk.find(*place, FollowLinks::no) || target.empty()) return;
    disk.put(*place, FileType::symbolicLink, target);
    using namespace EventStreamFlag;
    if (isTold) notify(*place, itemIsSymlink | itemCreated, disk.get(*place, FollowLinks::no).fileNumber);
}

void FuzzedDaemon::remove(const std::string& path, bool isTold) {
    const auto place = freePlace(path);
    const auto* item = place ? disk.find(*place, FollowLinks::no) : nullptr;
    if (!item) return;
    using namespace EventStreamFlag;
    const std::uint32_t type = item->type == FileType::directory ? itemIsDir : itemIsFile;
    disk.erase(*place);
    if (isTold) notify(*place, itemRemoved | type, 0);
}

void FuzzedDaemon::rename(const std::string& path, const std::string& newPath, bool isTold) {
    const auto source = freePlace(path);
    const auto destination = freePlace(newPath);
    const auto* item = source && destination ? disk.find(*source, FollowLinks::no) : nullptr;
    if (!item || isAtOrWithin(*destination, *source) || isAtOrWithin(*source, *destination)) return;
    if (disk.find(*destination, FollowLinks::no)) return;
    using namespace EventStreamFlag;
    const std::uint32_t flags = itemRenamed | (item->type == FileType::directory ? itemIsDir : itemIsFile);
    const FileIdentifier fileID(item->fileNumber);
    disk.move(*source, *destination);
    if (!isTold || !eventStreams->isRunning()) return;
    eventStreams->send({{*source, flags, fileID}, {*destination, flags, fileID}});
    takeOutput();
}

void FuzzedDaemon::failLater(FileOperation operation, int count) {
    hadFaults = true;
    fileManager->failCall(operation, fileManager->callCount(operation) + count, posixError(EIO, "use", "/w"));
}

void FuzzedDaemon::requireConvergence() {
    settle();
    if (hadFaults) return;
    EventStreamBatch batch;
    for (const auto& [rootPath, known] : client.foldersByRoot) {
        for (const auto& [directoryPath, folder] : known) batch.push_back({.path = directoryPath});
    }
    if (!eventStreams->isRunning()) return;
    eventStreams->send(std::move(batch));
    takeOutput();
    settle();
    client.requireTruth(disk);
}
