#include "shared/EditorDocumentDaemonClient.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/PlatformError.h"
#include "platform/linux/ProcessLines.h"
#include "shared/RecordCoding.h"
#include "shared/UTF8.h"
#include "shared/Whitespace.h"

namespace {

EditorDocumentDaemonEnvelope failure(const std::string& requestID, const std::string& message) {
    return {.kind = EditorDocumentEnvelopeKind::response, .requestID = requestID, .success = false, .message = message};
}

// Of a line that is no request the daemon's answer names none either.
std::string requestIDIn(std::string_view line) {
    try {
        return decodeRecord<EditorDocumentDaemonRequest>(line).requestID;
    } catch (const DecodingError&) {
        return {};
    }
}

} // namespace

EditorDocumentDaemonClient::EditorDocumentDaemonClient(const std::string& executable, int errorDescriptor)
    : lines(std::make_unique<ProcessLines>(std::vector{executable}, errorDescriptor)) {}

EditorDocumentDaemonClient::~EditorDocumentDaemonClient() = default;

void EditorDocumentDaemonClient::send(EditorDocumentDaemonRequest request, Receive answer) {
    if (request.requestID.empty()) request.requestID = std::to_string(++requestCount);
    const auto line = encodeRecord(request);
    if (!line) throw std::invalid_argument("The request holds text that is not UTF-8.");
    put(*line, {request.requestID, std::move(answer)});
}

std::size_t EditorDocumentDaemonClient::unsentByteCount() const {
    return lines->unsentByteCount();
}

EditorDocumentDaemonEnvelope EditorDocumentDaemonClient::ask(EditorDocumentDaemonRequest request) {
    // Shared with the request, which outlives this call should one of the functions throw.
    const auto answer = std::make_shared<std::optional<EditorDocumentDaemonEnvelope>>();
    send(std::move(request), [answer](const EditorDocumentDaemonEnvelope& envelope) { *answer = envelope; });
    while (!*answer) wait();
    return **answer;
}

void EditorDocumentDaemonClient::sendLine(std::string_view line, Receive answer) {
    if (trimmed(line).empty() || !isWellFormedUTF8(line) || line.find('\n') != line.npos)
        throw std::invalid_argument("The daemon answers one line of UTF-8 that is not blank.");
    put(line, {requestIDIn(line), std::move(answer)});
}

int EditorDocumentDaemonClient::descriptor() const {
    return lines->descriptor();
}

void EditorDocumentDaemonClient::exchange() {
    lines->exchange();
    while (const auto line = lines->nextLine()) receive(*line);
    if (lines->outcome() && !isOver) finish(*lines->outcome());
}

bool EditorDocumentDaemonClient::wait(std::optional<std::chrono::milliseconds> longest) {
    if (isOver || !lines->waitUntilReady(longest)) return false;
    exchange();
    return true;
}

void EditorDocumentDaemonClient::put(std::string_view line, OpenRequest request) {
    if (isOver) throw posixError(EPIPE, "talk to the daemon");
    if (onSentLine) onSentLine(line);
    openRequests.push_back(std::move(request));
    lines->send(line);
}

// What cannot be read comes from a daemon of another version: an event that this program does not know.
void EditorDocumentDaemonClient::receive(const std::string& line) {
    if (onReceivedLine) onReceivedLine(line);
    std::optional<EditorDocumentDaemonEnvelope> envelope;
    try {
        envelope = decodeRecord<EditorDocumentDaemonEnvelope>(line);
    } catch (const DecodingError&) {
        return;
    }
    if (envelope->kind == EditorDocumentEnvelopeKind::response) return receiveResponse(*envelope);
    if (onEvent) onEvent(*envelope);
}

// Requests are answered in their order. A failure that names no request is the answer to the oldest one; an answer to a
// later one means that those before it will get none.
void EditorDocumentDaemonClient::receiveResponse(const EditorDocumentDaemonEnvelope& envelope) {
    const auto isAnswered = [&](const OpenRequest& request) {
        return !envelope.requestID || request.requestID == *envelope.requestID;
    };
    const auto found = std::ranges::find_if(openRequests, isAnswered);
    if (found == openRequests.end()) return;
    // Taken out first: an answer's function may send, ask, and so come here again.
    const OpenRequest answered = std::move(*found);
    const std::deque<OpenRequest> passedOver(std::make_move_iterator(openRequests.begin()),
                                             std::make_move_iterator(found));
    openRequests.erase(openRequests.begin(), std::next(found));
    fail(passedOver, "The daemon gave no answer that could be read.");
    if (answered.answer) answered.answer(envelope);
}

void EditorDocumentDaemonClient::fail(const std::deque<OpenRequest>& requests, const std::string& message) {
    for (const OpenRequest& request : requests) {
        if (request.answer) request.answer(failure(request.requestID, message));
    }
}

void EditorDocumentDaemonClient::finish(const std::string& outcome) {
    isOver = true;
    fail(std::exchange(openRequests, {}), "The daemon " + outcome + " before it answered.");
    if (onEnd) onEnd(outcome);
}
