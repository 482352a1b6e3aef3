#include "daemon/EncodedLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "shared/RecordCoding.h"

namespace {

class PieceOutput final : public Output {
public:
    void write(std::string_view bytes) override { pieces.emplace_back(bytes); }

    std::vector<std::string> pieces;
};

EditorDocumentDaemonEnvelope envelopeWith(std::string text, std::string requestID = "1") {
    return {
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = std::move(requestID),
        .success = true,
        .snapshot = EditorDocumentSnapshotPayload{.documentID = "\"text\":\"\"", .path = "/a", .text = std::move(text)},
    };
}

std::string repeated(std::string_view unit, std::size_t size) {
    std::string text;
    while (text.size() + unit.size() <= size) text += unit;
    return text;
}

TEST(EncodedLine, IsTheRecordWhateverTheTextAndItsLength) {
    constexpr std::size_t piece = 64 * 1024;
    for (const std::string_view unit : {"a", "\n", "é", "🙂", "\u2028", "int main() {\n\treturn \"x\";\n}\n"}) {
        for (const std::size_t size : {std::size_t{0}, std::size_t{1}, piece - 1, piece, piece + 1, 2 * piece - 300,
                                       2 * piece, 5 * piece + 77}) {
            for (const std::size_t identifierSize : {std::size_t{1}, piece + 1, 2 * piece, 3 * piece}) {
                auto envelope = envelopeWith(repeated(unit, size), std::string(identifierSize, 'r'));
                const std::string expected = encodeRecord(envelope).value() + '\n';
                PieceOutput output;
                EncodedLine::of(std::move(envelope)).value().writeTo(output);
                std::string written;
                for (const std::string& part : output.pieces) written += part;
                ASSERT_TRUE(written == expected) << unit << " " << size << " " << identifierSize;
            }
        }
    }
}

TEST(EncodedLine, IsWrittenAtOnceUnlessItHasALongText) {
    const auto writesOf = [](EditorDocumentDaemonEnvelope envelope) {
        PieceOutput output;
        EncodedLine::of(std::move(envelope)).value().writeTo(output);
        return output.pieces;
    };
    EXPECT_EQ(writesOf(envelopeWith("short")).size(), 1);
    EXPECT_EQ(writesOf(envelopeWith("short", std::string(1'000'000, 'r'))).size(), 1);
    const auto pieces = writesOf(envelopeWith(std::string(1'000'000, '\n')));
    EXPECT_GT(pieces.size(), 10);
    const auto largest = std::ranges::max_element(pieces, {}, &std::string::size);
    EXPECT_LE(largest->size(), 128 * 1024);
}

// Before a first piece is out.
TEST(EncodedLine, IsAbsentWhereJSONCannotSayIt) {
    const std::string longText(1'000'000, 'a');
    for (const std::string& text : {std::string("short"), longText}) {
        auto endless = envelopeWith(text);
        endless.snapshot->modifiedAtTimeIntervalSince1970 = std::numeric_limits<double>::infinity();
        EXPECT_FALSE(EncodedLine::of(std::move(endless))) << text.size();
        auto noText = envelopeWith(text, "caf\xE9");
        EXPECT_FALSE(EncodedLine::of(std::move(noText))) << text.size();
    }
}

} // namespace
