#include "shared/RecordCoding.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/shared/SampleRecords.h"

namespace {

template <WireRecord Record>
void checkRoundTrip(const char* name, const Record& record) {
    SCOPED_TRACE(name);
    for (const JSONLayout layout : {JSONLayout::compact, JSONLayout::pretty}) {
        const auto json = encodeRecord(record, layout);
        ASSERT_TRUE(json);
        EXPECT_EQ(decodeRecord<Record>(*json), record) << *json;
    }
}

TEST(RecordCoding, everyRecordComesBackWithAllAndWithNoOptionalFields) {
    checkRoundTrip("full request", fullRequest());
    checkRoundTrip("full envelope", fullEnvelope()); // which holds all others
    checkRoundTrip("empty request", EditorDocumentDaemonRequest{});
    checkRoundTrip("empty snapshot", EditorDocumentSnapshotPayload{});
    checkRoundTrip("empty mutation", WorkspaceBrowserMutationPayload{});
    checkRoundTrip("empty envelope", EditorDocumentDaemonEnvelope{});
}

// The names are the protocol: nobody may change one together with its table and have the round trip still pass.
TEST(RecordCoding, envelopeOnTheWire) {
    EXPECT_EQ(encodeRecord(fullEnvelope()),
              "{\"kind\":\"event\",\"requestID\":\"r2\",\"command\":\"save\",\"success\":false,"
              "\"message\":\"Cannot read “\U0010F8FF”\",\"event\":\"workspaceMutation\",\"documentID\":\"d3\","
              "\"snapshot\":{\"documentID\":\"d2\",\"path\":\"/s\U0010F8C0\",\"version\":3,\"text\":\"t\","
              "\"encodingRawValue\":18446744073709551615,\"newlineStyle\":\"crlf\","
              "\"modifiedAtTimeIntervalSince1970\":1700000000.123456},\"workspaceRootPath\":\"/workspace\","
              "\"workspaceDirectory\":{\"rootPath\":\"/w\",\"directoryPath\":\"/w/d\",\"nodes\":["
              "{\"nodeID\":\"path:/n\U0010F8FE\",\"path\":\"/n\U0010F8FE\",\"parentPath\":\"/p\","
              "\"name\":\"n\U0010F8FE\",\"isDirectory\":true,\"isRoot\":true},"
              "{\"nodeID\":\"\",\"path\":\"\",\"name\":\"second\",\"isDirectory\":false,\"isRoot\":false}]},"
              "\"workspaceMutation\":{\"rootPath\":\"/m\",\"origin\":\"externalWatch\",\"kind\":\"deleted\","
              "\"itemNodeID\":\"data:AA==\",\"isDirectory\":false,\"sourcePath\":\"/from\U0010F880\","
              "\"destinationPath\":\"/to\",\"affectedDirectoryPaths\":[\"/a\U0010F881\",\"/b\"]}}");
}

TEST(RecordCoding, requestOnTheWire) {
    EXPECT_EQ(
        encodeRecord(fullRequest()),
        "{\"requestID\":\"r1\",\"command\":\"deleteWorkspaceItem\",\"rootPath\":\"/root\","
        "\"path\":\"/root/\U0010F8FF\",\"destinationPath\":\"/root/b\",\"name\":\"name \\\"quoted\\\"\","
        "\"documentID\":\"d1\",\"text\":\"line\\r\\n\\tline\\u2028Ж🙂\",\"expectedVersion\":-9223372036854775808}");
}

TEST(RecordCoding, absentFieldsAreLeftOutAndEmptyArraysAreNot) {
    EXPECT_EQ(encodeRecord(EditorDocumentDaemonEnvelope{}), R"({"kind":"response"})");
    EXPECT_EQ(encodeRecord(WorkspaceBrowserDirectoryPayload{}), R"({"rootPath":"","directoryPath":"","nodes":[]})");
}

TEST(RecordCoding, prettyLayoutSortsKeysAndKeepsEmptyContainersOpen) {
    const WorkspaceBrowserDirectoryPayload empty{.rootPath = "/", .directoryPath = "/d"};
    EXPECT_EQ(encodeRecord(empty, JSONLayout::pretty),
              "{\n  \"directoryPath\" : \"/d\",\n  \"nodes\" : [\n\n  ],\n  \"rootPath\" : \"/\"\n}");
    const WorkspaceBrowserMutationPayload mutation{.rootPath = "/", .affectedDirectoryPaths = {"/a", "/b"}};
    EXPECT_EQ(encodeRecord(mutation, JSONLayout::pretty),
              "{\n  \"affectedDirectoryPaths\" : [\n    \"/a\",\n    \"/b\"\n  ],\n  \"kind\" : \"createdFile\",\n"
              "  \"origin\" : \"internalOperation\",\n  \"rootPath\" : \"/\"\n}");
}

TEST(RecordCoding, whatJSONCannotSayIsRefused) {
    EditorDocumentSnapshotPayload snapshot;
    for (const double value : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity()}) {
        snapshot.modifiedAtTimeIntervalSince1970 = value;
        EXPECT_EQ(encodeRecord(snapshot), std::nullopt);
        EXPECT_EQ(encodeRecord(EditorDocumentDaemonEnvelope{.snapshot = snapshot}), std::nullopt);
    }
    EXPECT_EQ(encodeRecord(EditorDocumentDaemonRequest{.text = "caf\xE9"}), std::nullopt);
    EXPECT_EQ(encodeRecord(EditorDocumentDaemonRequest{.text = "half a pair \xED\xA0\x80"}), std::nullopt);
}

// A record's list that leaves a member out, wherever it stands, must not compile.
struct Triple {
    std::string first{};
    std::string second{};
    std::optional<int> third{};
};

} // namespace

template <>
inline constexpr auto recordFields<Triple> = std::tuple{field("first", &Triple::first), field("third", &Triple::third)};
static_assert(!listsEveryMember<Triple>());

namespace {

struct Pair {
    std::string first{};
    std::optional<int> second{};
};

} // namespace

template <>
inline constexpr auto recordFields<Pair> = std::tuple{field("first", &Pair::first)};
static_assert(!listsEveryMember<Pair>());
