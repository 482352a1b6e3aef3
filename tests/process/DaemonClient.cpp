#include "tests/process/DaemonClient.h"

#include <stdexcept>
#include <utility>

#include "shared/RecordCoding.h"

DaemonClient::DaemonClient(std::vector<std::string> environment, const std::vector<std::string>& launcher)
    : process({}, std::move(environment), launcher) {}

std::string DaemonClient::send(EditorDocumentDaemonRequest request) {
    request.requestID = std::to_string(++requestCount);
    process.sendLine(encodeRecord(request).value());
    return request.requestID;
}

EditorDocumentDaemonEnvelope DaemonClient::ask(EditorDocumentDaemonRequest request) {
    send(std::move(request));
    while (true) {
        auto envelope = readEnvelope();
        if (envelope.kind == EditorDocumentEnvelopeKind::response) return envelope;
        waiting.push_back(std::move(envelope));
    }
}

EditorDocumentDaemonEnvelope DaemonClient::nextEvent() {
    while (true) {
        auto envelope = nextEnvelope();
        if (envelope.kind == EditorDocumentEnvelopeKind::event) return envelope;
    }
}

EditorDocumentDaemonEnvelope DaemonClient::nextEnvelope() {
    if (waiting.empty()) return readEnvelope();
    auto envelope = std::move(waiting.front());
    waiting.pop_front();
    return envelope;
}

EditorDocumentDaemonEnvelope DaemonClient::readEnvelope() {
    const auto line = process.readLine();
    if (!line) throw process.failure("the daemon ended");
    return decodeRecord<EditorDocumentDaemonEnvelope>(*line);
}
