#include "tools/schema/WireSchema.h"

#include <gtest/gtest.h>

#include "shared/RecordCoding.h"
#include "tests/shared/SampleRecords.h"
#include "tests/support/Files.h"
#include "tests/support/SchemaCheck.h"

namespace {

TEST(WireSchema, CommittedFilesAreWhatTheRecordsSay) {
    const std::string advice = "run build/dev/MakeWireSchema schema";
    const std::string folder = std::string(SOURCE_FOLDER) + "/schema/";
    EXPECT_EQ(readFile(folder + "request.schema.json"), requestSchema()) << advice;
    EXPECT_EQ(readFile(folder + "envelope.schema.json"), envelopeSchema()) << advice;
}

bool isReadAsRequest(const std::string& line) {
    try {
        decodeRecord<EditorDocumentDaemonRequest>(line);
        return true;
    } catch (const DecodingError&) {
        return false;
    }
}

TEST(WireSchema, AcceptsTheRequestsThatTheDaemonReads) {
    const std::string begin = R"({"requestID":"1","command":"save")";
    const struct {
        const char* name;
        std::string line;
        bool isAccepted;
    } cases[] = {
        {"every field", encodeRecord(fullRequest()).value(), true},
        {"no more than it needs", begin + "}", true},
        {"an unknown key", begin + R"(,"colour":{"of":[1,null]}})", true},
        {"null for an absent field", begin + R"(,"rootPath":null,"text":null,"expectedVersion":null})", true},
        {"null for a field that must be there", R"({"requestID":null,"command":"save"})", false},
        {"no identifier", R"({"command":"save"})", false},
        {"no command", R"({"requestID":"1"})", false},
        {"a command that there is not", R"({"requestID":"1","command":"Save"})", false},
        {"a number for an identifier", R"({"requestID":1,"command":"save"})", false},
        {"a number for a path", begin + R"(,"path":7})", false},
        {"a text for a version", begin + R"(,"expectedVersion":"1"})", false},
        {"half a version", begin + R"(,"expectedVersion":1.5})", false},
        {"the greatest version", begin + R"(,"expectedVersion":9223372036854775807})", true},
        {"a version beyond it", begin + R"(,"expectedVersion":9223372036854775808})", false},
        {"no object", "[]", false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(isReadAsRequest(row.line), row.isAccepted) << row.name;
        const auto violation = violationOfRequestSchema(row.line);
        EXPECT_EQ(!violation, row.isAccepted) << row.name << ": " << violation.value_or("accepted");
    }
}

std::string encoded(const EditorDocumentDaemonEnvelope& envelope) {
    return encodeRecord(envelope).value();
}

TEST(WireSchema, RefusesEnvelopesThatTheDaemonNeverWrites) {
    using Kind = EditorDocumentEnvelopeKind;
    using Event = EditorDocumentEventKind;
    const auto snapshot = fullSnapshot();
    const std::string updated =
        encoded({.kind = Kind::event, .event = Event::updated, .documentID = "d", .snapshot = snapshot});
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string line = updated;
        return line.replace(line.find(from), from.size(), to);
    };
    EXPECT_EQ(violationOfEnvelopeSchema(updated), std::nullopt);
    const struct {
        const char* name;
        std::string line;
    } cases[] = {
        {"an event without its snapshot", encoded({.kind = Kind::event, .event = Event::updated, .documentID = "d"})},
        {"an event that answers a request",
         encoded({.kind = Kind::event, .requestID = "1", .event = Event::deleted, .documentID = "d"})},
        {"an event with the fields of another",
         encoded({.kind = Kind::event, .event = Event::deleted, .documentID = "d", .snapshot = snapshot})},
        {"a response without success",
         encoded({.requestID = "1", .command = EditorDocumentRequestCommand::open, .snapshot = snapshot})},
        {"a success with the result of another command", encoded({.requestID = "1",
                                                                  .command = EditorDocumentRequestCommand::close,
                                                                  .success = true,
                                                                  .snapshot = snapshot})},
        {"a failure that says nothing", encoded({.success = false})},
        {"a failure with half an address", encoded({.requestID = "1", .success = false, .message = "m"})},
        {"an unknown key", with("{", R"({"colour":"red",)")},
        {"an unknown key in a payload", with(R"("version")", R"("revision":1,"version")")},
        {"a missing key in a payload", with(R"("version":3,)", "")},
        {"a newline style that there is not", with("crlf", "lfcr")},
        {"a negative encoding", with("18446744073709551615", "-1")},
        {"null", with("1700000000.123456", "null")},
        {"two envelopes on a line", updated + updated},
        {"bytes that are no UTF-8", with("\"t\"", "\"\xFF\"")},
    };
    for (const auto& row : cases) EXPECT_TRUE(violationOfEnvelopeSchema(row.line)) << row.name;
}

} // namespace
