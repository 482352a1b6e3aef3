#include <gtest/gtest.h>

#include "shared/JSONSyntax.h"
#include "shared/RecordCoding.h"
#include "tests/shared/SampleRecords.h"

namespace {

// The description of the failure; empty when the message can be read.
template <WireRecord Record>
std::string failure(std::string_view json) {
    try {
        decodeRecord<Record>(json);
        return {};
    } catch (const DecodingError& error) {
        return error.localizedDescription;
    }
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    while (count-- > 0) result += text;
    return result;
}

// A request whose further members are given.
std::string request(std::string_view members) {
    return R"({"requestID":"1","command":"save")" + std::string{members.empty() ? "" : ","} + std::string{members} +
           "}";
}

struct Accepted {
    const char* name;
    std::string json;
    EditorDocumentDaemonRequest expected;
};

EditorDocumentDaemonRequest with(EditorDocumentDaemonRequest changes) {
    changes.requestID = "1";
    changes.command = EditorDocumentRequestCommand::save;
    return changes;
}

TEST(DecodingRules, accepted) {
    const Accepted cases[] = {
        {"white space", " \t\r\n" + request(" \n\"text\" : \"a\" ") + " \r\n", with({.text = "a"})},
        {"byte order mark", "\xEF\xBB\xBF" + request(""), with({})},
        {"null for absent", request(R"("rootPath":null,"expectedVersion": null )"), with({})},
        {"first of equal keys", request(R"("text":"a","text":"b","text":3)"), with({.text = "a"})},
        {"null first of equal keys", request(R"("text":null,"text":"b")"), with({})},
        {"unknown huge exponent", request(R"("u":1e400,"v":[-1e99999])"), with({})},
        {"escaped key", request(R"("te\u0078t":"a")"), with({.text = "a"})},
        {"key of another case", request(R"("Text":3)"), with({})},
        {"unknown keys of every type", request(R"("u":[1,{"a":[]},"\u00e9",true,null],"v":{},"w":-0.5e-7)"), with({})},
        {"unknown keys before and between", R"({"u":{"text":"x"},"requestID":"1","v":[],"command":"save"})", with({})},
        {"unknown number of a hundred digits", request("\"u\":1" + std::string(100, '0')), with({})},
        {"integer as 3.0", request(R"("expectedVersion":3.0)"), with({.expectedVersion = 3})},
        {"escapes", request(R"("text":"\"\\\/\b\f\n\r\t\u00e9\u2028\uD83D\uDE42")"),
         with({.text = "\"\\/\b\f\n\r\té\u2028🙂"})},
        {"NUL by escape", request(R"("path":"a\u0000b")"), with({.path = std::string("a\0b", 3)})},
        {"file name escape", request("\"path\":\"a\U0010F8FF\",\"text\":\"a\U0010F8FF\""),
         with({.path = "a\xFF", .text = "a\U0010F8FF"})},
        {"512 levels", request("\"u\":" + repeated("[", 511) + repeated("]", 511)), with({})},
    };
    for (const auto& [name, json, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(failure<EditorDocumentDaemonRequest>(json), "");
        EXPECT_EQ(findJSONFault(json), std::nullopt);
        if (failure<EditorDocumentDaemonRequest>(json).empty()) {
            EXPECT_EQ(decodeRecord<EditorDocumentDaemonRequest>(json), expected);
        }
    }
}

struct Refused {
    const char* name;
    std::string json;
    const char* description; // the whole of it
};

TEST(DecodingRules, refusedForTheirValues) {
    const Refused cases[] = {
        {"missing key", "{}", "The key “requestID” is missing."},
        {"null for a required key", R"({"requestID":null,"command":"open"})",
         "The value of “requestID” must be a string, but is null."},
        {"wrong type first of equal keys", request(R"("text":3,"text":"a")"),
         "The value of “text” must be a string, but is a number."},
        {"number from string", request(R"("expectedVersion":"3")"),
         "The value of “expectedVersion” must be a signed integer of 64 bits, but is a string."},
        {"fraction", request(R"("expectedVersion":3.5)"),
         "The value of “expectedVersion” must be a signed integer of 64 bits, but is a number with a fraction or out "
         "of range."},
        {"beyond 64 bits", request(R"("expectedVersion":9223372036854775808)"),
         "The value of “expectedVersion” must be a signed integer of 64 bits, but is a number with a fraction or out "
         "of range."},
        {"string from object", request(R"("name":{"a":1})"), "The value of “name” must be a string, but is an object."},
        {"array on top", R"([{"requestID":"1"}])", "The message must be an object, but is an array."},
        {"null on top", "null", "The message must be an object, but is null."},
    };
    for (const auto& [name, json, description] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(failure<EditorDocumentDaemonRequest>(json), description);
        EXPECT_EQ(findJSONFault(json), std::nullopt);
    }
}

TEST(DecodingRules, unknownNamesAreToldUnlessTheyCouldBeText) {
    EXPECT_EQ(failure<EditorDocumentSnapshotPayload>(
                  R"({"documentID":"","path":"","version":1,"text":"","encodingRawValue":4,"newlineStyle":"LF"})"),
              "The value “LF” of “newlineStyle” is unknown; it must be “lf”, “crlf” or “cr”.");
    const std::string longName(41, 'x');
    const std::string description =
        failure<EditorDocumentDaemonRequest>(R"({"requestID":"1","command":")" + longName + R"("})");
    EXPECT_TRUE(description.starts_with("The value of “command” is unknown; it must be “open”, “save”, "))
        << description;
    EXPECT_TRUE(description.ends_with(" or “deleteWorkspaceItem”.")) << description;
    EXPECT_NE(failure<EditorDocumentDaemonRequest>(R"({"requestID":"1","command":"Open"})"), "");
}

TEST(DecodingRules, placesInsideOtherRecords) {
    const auto envelope = [](std::string_view member) { return R"({"kind":"event",)" + std::string{member} + "}"; };
    const Refused cases[] = {
        {"missing in a record", envelope(R"("snapshot":{"documentID":"d","path":"p"})"),
         "The key “snapshot.version” is missing."},
        {"wrong in a record of an array",
         envelope(R"("workspaceDirectory":{"rootPath":"/","directoryPath":"/","nodes":[{"nodeID":"n","path":"p",
            "name":"m","isDirectory":true,"isRoot":false},{"nodeID":"n","path":"p","name":5}]})"),
         "The value of “workspaceDirectory.nodes[1].name” must be a string, but is a number."},
        {"null in an array of strings", envelope(R"("workspaceMutation":{"affectedDirectoryPaths":["/",null]})"),
         "The value of “workspaceMutation.affectedDirectoryPaths[1]” must be a string, but is null."},
        {"array from object", envelope(R"("workspaceMutation":{"affectedDirectoryPaths":{}})"),
         "The value of “workspaceMutation.affectedDirectoryPaths” must be an array, but is an object."},
        {"object from array", envelope(R"("snapshot":[])"),
         "The value of “snapshot” must be an object, but is an array."},
        {"Boolean from number", envelope(R"("success":1)"),
         "The value of “success” must be a Boolean, but is a number."},
        {"negative unsigned", envelope(R"("snapshot":{"encodingRawValue":-1})"),
         "The value of “snapshot.encodingRawValue” must be an unsigned integer of 64 bits, but is a number with a sign "
         "or a fraction or out of range."},
        {"too large a double", envelope(R"("snapshot":{"modifiedAtTimeIntervalSince1970":1e400})"),
         "The value of “snapshot.modifiedAtTimeIntervalSince1970” must be a double-precision number, but is a number "
         "out of range."},
    };
    for (const auto& [name, json, description] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(failure<EditorDocumentDaemonEnvelope>(json), description);
    }
}

struct Malformed {
    const char* name;
    std::string json;
    std::size_t offset;
    const char* fragment;
};

TEST(DecodingRules, refusedForTheirGrammar) {
    const std::size_t next = request("").size(); // where a further member begins
    const Malformed cases[] = {
        {"nothing", "", 0, "ends too early"},
        {"word", "hello", 0, "a value is expected"},
        {"unclosed", R"({"requestID":"1")", 16, "ends too early"},
        {"no colon", R"({"requestID" "1"})", 13, "colon"},
        {"key without quotes", "{requestID:1}", 1, "key"},
        {"trailing comma", request("\"u\":1,"), next + 6, "key"},
        {"two commas", request("\"u\":1,,\"v\":1"), next + 6, "key"},
        {"no comma", request("\"u\":1 \"v\":1"), next + 6, "comma or “}”"},
        {"wrong bracket", request("\"u\":[1}"), next + 6, "comma or “]”"},
        {"colon after a known string", request(R"("text":"a":"b"],"u":1)"), next + 10, "comma or “}”"},
        {"line comment at the end", request("") + "// end", next, "nothing may follow"},
        {"NUL at the end", request("") + std::string(1, '\0'), next, "nothing may follow"},
        {"NUL in a known string", request(std::string("\"text\":\"a\0\"", 11)), next + 9, "control character"},
        {"raw line feed in a known string", request("\"text\":\"a\n\""), next + 9, "control character"},
        {"raw control character in a key", request("\"\x01\":1"), next + 1, "control character"},
        {"NaN", request("\"u\":NaN"), next + 4, "a value is expected"},
        {"leading zero", request("\"u\":01"), next + 5, "comma or “}”"},
        {"leading zero in a known number", request("\"expectedVersion\":01"), next + 19, "comma or “}”"},
        {"point first", request("\"u\":.5"), next + 4, "a value is expected"},
        {"exponent without digits", request("\"expectedVersion\":1e+"), next + 18, "number is malformed"},
        {"null with a tail", request("\"text\":nullx"), next + 11, "comma or “}”"},
        {"high surrogate before a letter", request(R"("text":"\uD83D\u0041")"), next + 8, "surrogate"},
        {"low surrogate alone", request(R"("text":"\uDE42")"), next + 8, "surrogate"},
        {"unknown escape", request(R"("text":"\x41")"), next + 8, "escape"},
        {"short escape", request(R"("u":"\u12")"), next + 5, "escape"},
        {"bad UTF-8 in a known string", request("\"text\":\"\xC3\x28\""), next + 8, "UTF-8"},
        {"surrogate in UTF-8", request("\"path\":\"\xED\xA0\x80\""), next + 8, "UTF-8"},
        {"fault after a wrong type", request("\"text\":1,\"u\":[}"), next + 14, "a value is expected"},
        {"byte order mark twice", "\xEF\xBB\xBF\xEF\xBB\xBF{}", 3, "a value is expected"},
        {"513 levels", request("\"u\":" + repeated("[", 512) + repeated("]", 512)), next + 4 + 511, "512"},
        {"513 levels of objects", request("\"u\":" + repeated("{\"\":", 512) + "1" + repeated("}", 512)),
         next + 4 + 4 * 511, "512"},
        {"513 levels in a known string's place", request("\"text\":" + repeated("[", 512) + repeated("]", 512)),
         next + 7 + 511, "512"},
        {"a megabyte of brackets", std::string(1 << 20, '['), 512, "512"},
    };
    for (const auto& [name, json, offset, fragment] : cases) {
        SCOPED_TRACE(name);
        const std::string description = failure<EditorDocumentDaemonRequest>(json);
        const std::string place = "Invalid JSON at byte " + std::to_string(offset) + ": ";
        EXPECT_TRUE(description.starts_with(place)) << description << "\nexpected: " << place;
        EXPECT_NE(description.find(fragment), std::string::npos) << description;
    }
}

// Whatever lies behind a message in its buffer must not be taken for a part of it.
TEST(DecodingRules, bytesBehindTheMessageAreNotRead) {
    const std::string full = *encodeRecord(fullEnvelope());
    for (const std::string_view filler : {"}", "]", ",", "\"", ":", "{", "0", "\\"}) {
        for (std::size_t length = 0; length <= full.size(); ++length) {
            const std::string buffer = full.substr(0, length) + repeated(filler, decodingPadding);
            const std::string_view message = std::string_view{buffer}.substr(0, length);
            if (length == full.size()) {
                EXPECT_EQ(decodeRecord<EditorDocumentDaemonEnvelope>(message, buffer.size()), fullEnvelope());
            } else {
                EXPECT_THROW(decodeRecord<EditorDocumentDaemonEnvelope>(message, buffer.size()), DecodingError)
                    << message;
            }
        }
    }
}

} // namespace
