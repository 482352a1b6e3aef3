#include "tests/support/SchemaCheck.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include "tests/support/Files.h"

namespace {

constexpr unsigned strictly = rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;

rapidjson::Document parsed(std::string_view json) {
    rapidjson::Document document;
    document.Parse<strictly>(json.data(), json.size());
    return document;
}

rapidjson::SchemaDocument schemaNamed(const std::string& name) {
    std::string text = readFile(std::string(SOURCE_FOLDER) + "/schema/" + name + ".schema.json");
    // The library takes a reference with a bare dollar sign for none at all, and would accept anything in its place.
    for (std::size_t at = 0; (at = text.find("#/$", at)) != std::string::npos; ++at) text.replace(at, 3, "#/%24");
    const auto document = parsed(text);
    EXPECT_FALSE(document.HasParseError()) << name;
    return rapidjson::SchemaDocument(document);
}

std::string textOf(const rapidjson::Pointer& pointer) {
    rapidjson::StringBuffer text;
    pointer.StringifyUriFragment(text);
    return text.GetString();
}

std::optional<std::string> violation(std::string_view line, const rapidjson::SchemaDocument& schema) {
    const auto document = parsed(line);
    if (document.HasParseError()) return "no JSON from byte " + std::to_string(document.GetErrorOffset()) + " on";
    rapidjson::SchemaValidator validator(schema);
    if (document.Accept(validator)) return std::nullopt;
    return textOf(validator.GetInvalidDocumentPointer()) + " breaks “" + validator.GetInvalidSchemaKeyword() + "” of " +
           textOf(validator.GetInvalidSchemaPointer());
}

} // namespace

std::optional<std::string> violationOfRequestSchema(std::string_view line) {
    static const auto schema = schemaNamed("request");
    return violation(line, schema);
}

std::optional<std::string> violationOfEnvelopeSchema(std::string_view line) {
    static const auto schema = schemaNamed("envelope");
    return violation(line, schema);
}

void expectEnvelopeOfTheSchema(std::string_view line) {
    const auto found = violationOfEnvelopeSchema(line);
    EXPECT_FALSE(found) << found.value_or("") << " in " << line.substr(0, 2000);
}
