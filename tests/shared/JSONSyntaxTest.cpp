#include "shared/JSONSyntax.h"

#include <gtest/gtest.h>
#include <simdjson.h>

#include <iostream>
#include <random>

#include "shared/RecordCoding.h"
#include "tests/shared/SampleRecords.h"

namespace {

// Pieces that faults are made of, so that mutations hit grammar rather than letters.
constexpr std::string_view pieces[] = {
    "{",        "}",        "[",  "]",  ",",    ":",    "\"", "\\",    "\\u", "\\uD83D",     "\\uDE42", "0",
    "-",        ".",        "e",  "1",  "true", "null", " ",  "\n",    "\t",  "\x01",        "é",       "\x80",
    "\xED\xA0", "\"a\":1,", "[]", "{}", "\\n",  "/",    ";",  "\":\"", "+",   "\xEF\xBB\xBF"};

std::string mutated(std::string text, std::mt19937& random) {
    const auto below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>{0, limit - 1}(random);
    };
    for (std::size_t count = 1 + below(3); count > 0 && !text.empty(); --count) {
        const std::size_t position = below(text.size());
        switch (below(4)) {
            case 0:
                text.erase(position, 1 + below(3));
                break;
            case 1:
                text.insert(position, pieces[below(std::size(pieces))]);
                break;
            case 2:
                text.replace(position, 1, pieces[below(std::size(pieces))]);
                break;
            default:
                text.insert(position, text.substr(below(text.size()), below(12)));
                break;
        }
    }
    return text;
}

const std::string seeds[] = {
    *encodeRecord(fullRequest()),
    *encodeRecord(fullEnvelope(), JSONLayout::pretty),
    R"({"requestID":"1","command":"open","u":[1,-2.5,3e4,{"a":{},"b":[[],"x\n\u00e9\ud83d\ude42"]},true,false,null]})",
    R"({"kind":"event","u":"\\\"","workspaceDirectory":{"rootPath":"","directoryPath":"","v":[{}],"nodes":[]}})",
};

template <WireRecord Record>
void checkDecoderAgrees(const std::string& json) {
    const bool isValid = !findJSONFault(json);
    try {
        decodeRecord<Record>(json);
        EXPECT_TRUE(isValid) << "decoded, though the grammar is wrong: " << json;
    } catch (const DecodingError& error) {
        const bool tellsGrammar = error.localizedDescription.starts_with("Invalid JSON at byte ");
        const bool tellsValue = error.localizedDescription.starts_with("The key “") ||
                                error.localizedDescription.starts_with("The value ") ||
                                error.localizedDescription.starts_with("The message must be");
        EXPECT_EQ(isValid ? tellsValue : tellsGrammar, true) << error.what() << "\n" << json;
    }
}

// The library's document interface validates everything, but knows no numbers beyond its types.
void checkLibraryAgrees(const std::string& json) {
    simdjson::dom::parser parser;
    const bool hasMark = json.starts_with(utf8ByteOrderMark);
    const auto error = parser.parse(hasMark ? json.substr(utf8ByteOrderMark.size()) : json).error();
    if (error == simdjson::NUMBER_ERROR || error == simdjson::DEPTH_ERROR) return;
    EXPECT_EQ(!findJSONFault(json), error == simdjson::SUCCESS) << simdjson::error_message(error) << "\n" << json;
}

TEST(JSONSyntax, agreesWithDecoderAndLibraryOnMutatedMessages) {
    const auto seed = std::random_device{}();
    std::cout << "seed " << seed << std::endl;
    std::mt19937 random{seed};
    for (int round = 0; round < 20'000 && !testing::Test::HasFailure(); ++round) {
        const std::string json = mutated(seeds[static_cast<std::size_t>(round) % std::size(seeds)], random);
        checkDecoderAgrees<EditorDocumentDaemonRequest>(json);
        checkDecoderAgrees<EditorDocumentDaemonEnvelope>(json);
        checkLibraryAgrees(json);
    }
}

TEST(JSONSyntax, valueEndsAreFoundInsideContainers) {
    struct Case {
        const char* name;
        std::string_view text;
        std::size_t offset;
        std::optional<std::size_t> end;
    };
    const Case cases[] = {
        {"number", R"({"a":12 ,)", 5, 7},
        {"string with brackets", R"(["]}" ])", 1, 5},
        {"containers", R"([{"a":[1,"]"]},2])", 1, 14},
        {"number with a tail", R"([12x])", 1, std::nullopt},
        {"value without continuation", R"([12 13])", 1, std::nullopt},
        {"nothing behind", "[12", 1, std::nullopt},
    };
    for (const auto& [name, text, offset, end] : cases) {
        EXPECT_EQ(endOfJSONValue(text, offset, 1), end) << name;
    }
    EXPECT_TRUE(endOfJSONValue("[],", 0, maximumJSONDepth - 1));
    EXPECT_FALSE(endOfJSONValue("[],", 0, maximumJSONDepth));
}

} // namespace
