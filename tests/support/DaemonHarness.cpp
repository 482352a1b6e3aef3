#include "tests/support/DaemonHarness.h"

#include "platform/linux/text/ICUCollation.h"
#include "platform/linux/text/ICUTextCoding.h"
#include "shared/RecordCoding.h"
#include "tests/support/SchemaCheck.h"

class DaemonHarness::CollectingOutput final : public Output {
public:
    // An envelope with a long text comes in several pieces, and many short ones come together.
    void write(std::string_view bytes) override {
        ++writeCount;
        unread += bytes;
        for (std::size_t end = unread.find('\n'); end != unread.npos; end = unread.find('\n')) {
            const std::string line = unread.substr(0, end + 1);
            unread.erase(0, line.size());
            expectEnvelopeOfTheSchema(line);
            envelopes.push_back(decodeRecord<EditorDocumentDaemonEnvelope>(line));
        }
    }
    std::vector<EditorDocumentDaemonEnvelope> take() { return std::exchange(envelopes, {}); }

    int writeCount = 0;

private:
    std::string unread;
    std::vector<EditorDocumentDaemonEnvelope> envelopes;
};

DaemonHarness::DaemonHarness() {
    DaemonPlatform platform{.textCoding = std::make_unique<ICUTextCoding>()};
    environment = install<VariableEnvironment>(platform.environment);
    environment->variables["HOME"] = directory.path("home");
    install<ICUCollation>(platform.collation, *environment);
    fileIdentification = install<CountingFileIdentification>(platform.fileIdentification);
    directoryWalking = install<CountingDirectoryWalking>(platform.directoryWalking);
    output = install<CollectingOutput>(platform.output);
    install<CollectingOutput>(platform.errorOutput);
    linuxFileManager = std::make_unique<LinuxFileManager>(*environment);
    putTogether(std::move(platform), *linuxFileManager);
}

int DaemonHarness::writeCount() const {
    return output->writeCount;
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::sendLine(const std::string& line) {
    queue->sync([&] { daemon->handle(line); });
    return output->take();
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::exchange(EditorDocumentDaemonRequest request) {
    request.requestID = "request";
    return sendLine(encodeRecord(request).value());
}

EditorDocumentDaemonEnvelope DaemonHarness::send(EditorDocumentDaemonRequest request) {
    EditorDocumentDaemonEnvelope response;
    int responseCount = 0;
    for (auto& envelope : exchange(std::move(request))) {
        if (envelope.kind == EditorDocumentEnvelopeKind::event) {
            events.push_back(std::move(envelope));
        } else {
            ++responseCount;
            response = std::move(envelope);
        }
    }
    EXPECT_EQ(responseCount, 1);
    return response;
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::checkDocument(const std::string& documentID) {
    queue->sync([&] { daemon->checkDocumentForChanges(documentID); });
    return output->take();
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::advanceIndexing(std::chrono::milliseconds time) {
    indexingQueue->runPending();
    indexingQueue->advance(time);
    queue->runPending();
    return output->take();
}

EditorDocumentDaemonEnvelope DaemonHarness::open(const std::string& path) {
    return send({.command = EditorDocumentRequestCommand::open, .path = path});
}

EditorDocumentDaemonEnvelope DaemonHarness::save(const std::string& documentID, const std::string& text,
                                                 std::optional<std::int64_t> expectedVersion) {
    return send({.command = EditorDocumentRequestCommand::save,
                 .documentID = documentID,
                 .text = text,
                 .expectedVersion = expectedVersion});
}

EditorDocumentDaemonEnvelope DaemonHarness::close(const std::string& documentID) {
    return send({.command = EditorDocumentRequestCommand::close, .documentID = documentID});
}

EditorDocumentDaemonEnvelope DaemonHarness::openWorkspace(const std::string& rootPath) {
    return send({.command = EditorDocumentRequestCommand::openWorkspace, .rootPath = rootPath});
}

EditorDocumentDaemonEnvelope DaemonHarness::loadChildren(const std::string& rootPath, const std::string& path) {
    return send({.command = EditorDocumentRequestCommand::loadWorkspaceChildren, .rootPath = rootPath, .path = path});
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::buildIndexes() {
    indexingQueue->runPending();
    indexingQueue->advance({});
    return takeOutput();
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::notify(EventStreamBatch batch) {
    eventStreams->send(std::move(batch));
    return takeOutput();
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::notifyAppeared() {
    eventStreams->sendAppeared();
    return takeOutput();
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::advance(std::chrono::nanoseconds time) {
    clock->now += time;
    watchQueue->advance(time);
    queue->advance(time);
    return takeOutput();
}

std::vector<EditorDocumentDaemonEnvelope> DaemonHarness::takeOutput() {
    queue->runPending();
    return output->take();
}
