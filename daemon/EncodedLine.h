#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/Output.h"
#include "shared/EditorDocumentDaemonEnvelope.h"

// An envelope that has become a line. Whatever can fail has been done by then; only to hand it over is left.
//
// A long text is kept as it is, and escaped while the line is handed over, piece by piece: the reader begins while the
// rest is made, and there never is a second text in memory.
class EncodedLine {
public:
    // Absent when the envelope holds what JSON cannot say. A long text of its snapshot is taken out of it, and the rest
    // is left as it was.
    static std::optional<EncodedLine> of(EditorDocumentDaemonEnvelope&& envelope);

    void writeTo(Output& output) const;

private:
    // A piece stays in the processor's cache until the system has copied it.
    static constexpr std::size_t roomSize = 128 * 1024;

    struct LongText {
        std::string text;
        std::string behind;
        std::array<char, roomSize> room;
    };

    explicit EncodedLine(std::string json) : before(std::move(json)) {}

    void writeInPieces(Output& output) const;

    std::string before; // of the long text; all of the line when there is none
    std::unique_ptr<LongText> longText{};
};
