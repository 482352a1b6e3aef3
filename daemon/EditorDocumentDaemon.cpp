#include "daemon/EditorDocumentDaemon.h"

#include <cassert>
#include <new>

#include "shared/DecodingError.h"
#include "shared/RecordCoding.h"
#include "shared/UTF8.h"
#include "shared/Whitespace.h"

static_assert(LineInput::padding >= decodingPadding, "a line is decoded where it was read");

namespace {

constexpr std::string_view outOfMemory = "The request needs more memory than there is.";

} // namespace

EditorDocumentDaemon::EditorDocumentDaemon(DaemonPlatform daemonPlatform)
    : platform(std::move(daemonPlatform)),
      output(*platform.output),
      queue(platform.queue.get()),
      workspaceIndexingQueue(platform.workspaceIndexingQueue.get()),
      fileManager(*platform.fileManager),
      textCoding(*platform.textCoding),
      collation(*platform.collation) {}

void EditorDocumentDaemon::run(LineInput& input) {
    queue->sync([this] { refreshWatchRoots(); });
    for (;;) {
        try {
            const auto line = input.nextLine();
            if (!line) break;
            const std::string_view trimmedLine = trimmed(*line);
            if (!trimmedLine.empty()) queue->sync([&] { handle(trimmedLine); });
        } catch (const std::bad_alloc&) {
            queue->sync([this] { respondUnreadable(outOfMemory); });
        }
    }
    queue->sync([this] { cancelWatching(); });
}

void EditorDocumentDaemon::handle(std::string_view line) {
    assert(queue->isCurrent());
    try {
        auto request = decodeRecord<EditorDocumentDaemonRequest>(line, line.size() + LineInput::padding);
        const Handler handler = handlerForCommand(request.command);
        (this->*handler)(std::move(request));
    } catch (const DecodingError& error) {
        // A line that is not UTF-8 never decodes, so that only lines which do not are asked.
        if (isWellFormedUTF8(line)) respondUnreadable(error.what());
    } catch (const std::bad_alloc&) {
        if (isWellFormedUTF8(line)) respondUnreadable(outOfMemory);
    } catch (const PlatformError& error) {
        // A failed handler deliberately answers like an unreadable line, although its request was read.
        respondUnreadable(error.localizedDescription);
    } catch (const std::exception& error) {
        respondUnreadable(error.what());
    }
}

void EditorDocumentDaemon::emit(const std::optional<EncodedLine>& line) {
    assert(queue->isCurrent());
    if (line) line->writeTo(output);
}

void EditorDocumentDaemon::respondFailure(const EditorDocumentDaemonRequest& request, std::string message) {
    write({
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = request.requestID,
        .command = request.command,
        .success = false,
        .message = std::move(message),
    });
}

void EditorDocumentDaemon::respondUnreadable(std::string_view description) {
    write({
        .kind = EditorDocumentEnvelopeKind::response,
        .success = false,
        .message = "Failed to decode request: " + std::string(description),
    });
}
