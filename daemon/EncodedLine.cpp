#include "daemon/EncodedLine.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <utility>

#include "shared/JSONString.h"
#include "shared/RecordCoding.h"
#include "shared/UTF8.h"

namespace {

constexpr std::size_t shortestLongText = 64 * 1024;

bool hasLongText(const EditorDocumentDaemonEnvelope& envelope) {
    return envelope.snapshot && envelope.snapshot->text.size() >= shortestLongText;
}

} // namespace

std::optional<EncodedLine> EncodedLine::of(EditorDocumentDaemonEnvelope&& envelope) {
    if (!hasLongText(envelope)) {
        auto json = encodeRecord(envelope);
        if (!json) return std::nullopt;
        *json += '\n';
        return EncodedLine(std::move(*json));
    }
    std::string& text = envelope.snapshot->text;
    auto json = encodeAroundText(envelope, text);
    if (!json) return std::nullopt;
    // A document's text comes from a file that was recognised as text, or from a request that was read. Both make sure
    // that it is UTF-8, and a third look would cost a tenth of what the whole line does.
    assert(isWellFormedUTF8(text));
    EncodedLine line(std::move(json->before));
    line.longText = std::make_unique_for_overwrite<LongText>();
    line.longText->behind = std::move(json->behind);
    line.longText->behind += '\n';
    line.longText->text = std::move(text);
    return line;
}

void EncodedLine::writeTo(Output& output) const {
    if (!longText) return output.write(before);
    writeInPieces(output);
}

// What stands before the text goes with its first piece where it fits, and what stands behind with its last.
void EncodedLine::writeInPieces(Output& output) const {
    const std::span<char> room = longText->room;
    std::size_t filled = 0;
    const auto flush = [&] { output.write({room.data(), std::exchange(filled, 0)}); };
    const auto put = [&](std::string_view bytes) {
        if (bytes.size() > room.size() - filled) flush();
        if (bytes.size() > room.size()) return output.write(bytes);
        std::ranges::copy(bytes, room.data() + filled);
        filled += bytes.size();
    };
    put(before);
    for (std::string_view text = longText->text; !text.empty();) {
        if (filled > room.size() / 2) flush();
        const EscapedPiece piece = escapePiece(text, room.subspan(filled));
        filled += piece.written;
        text.remove_prefix(piece.consumed);
    }
    put(longText->behind);
    flush();
}
