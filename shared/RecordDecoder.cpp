#include "shared/RecordDecoder.h"

#include "shared/FileNameText.h"
#include "shared/JSONNumber.h"
#include "shared/JSONString.h"
#include "shared/JSONSyntax.h"
#include "shared/RecordCoding.h"

static_assert(decodingPadding >= simdjson::SIMDJSON_PADDING);

namespace {

// Known to be wrong, but not what: the message as a whole is then looked through for the fault.
[[noreturn]] void failSomewhere() {
    throw simdjson::simdjson_error{simdjson::TAPE_ERROR};
}

std::string_view typeName(std::string_view token) {
    switch (token.empty() ? '\0' : token.front()) {
        case '{':
            return "an object";
        case '[':
            return "an array";
        case '"':
            return "a string";
        case 't':
        case 'f':
            return "a Boolean";
        case 'n':
            return "null";
        default:
            return "a number";
    }
}

std::string inQuotes(std::string_view text) {
    return "“" + std::string{text} + "”";
}

[[noreturn]] void failType(std::string_view expected, std::string_view found, const DecodingPlace& place) {
    const std::string subject = place.parent ? "The value of " + inQuotes(place.text()) : "The message";
    throw DecodingError{subject + " must be " + std::string{expected} + ", but is " + std::string{found} + "."};
}

} // namespace

simdjson::ondemand::document RecordDecoder::begin(simdjson::ondemand::parser& parser) const {
    const auto readableSize = message.size() + decodingPadding;
    auto document = parser.iterate(simdjson::padded_string_view{message, readableSize}).take_value();
    const std::string_view first = document.raw_json_token().value();
    if (!first.starts_with('{')) failType("an object", typeName(first), {});
    return document;
}

void RecordDecoder::requireEnd(simdjson::ondemand::document& document) {
    const bool isAtEnd = document.current_location().error() == simdjson::OUT_OF_BOUNDS;
    if (!isAtEnd) failSomewhere();
}

void RecordDecoder::readKey(simdjson::ondemand::field& entry, std::string& key) const {
    key.clear();
    if (!appendUnescaped(key, messageFrom(entry.key().raw()))) failSomewhere();
}

void RecordDecoder::skip(Value& value, const DecodingPlace& place) const {
    const std::size_t openContainers = place.depth() + 1;
    const auto offset = static_cast<std::size_t>(token(value).data() - message.data());
    if (!endOfJSONValue(message, offset, openContainers)) failSomewhere();
}

void RecordDecoder::read(std::string& result, Value& value, StringForm form, const DecodingPlace& place) const {
    requireType(value, '"', "a string", place);
    result.reserve(token(value).size());
    // Taken from the library, which would otherwise pass over it later and believe a string before a colon to be a key.
    const simdjson::ondemand::raw_json_string source = value.get_raw_json_string();
    if (!appendUnescaped(result, messageFrom(source.raw()))) failSomewhere();
    if (form == StringForm::fileName && !isItsOwnText(result)) result = fileNameFromText(result);
}

void RecordDecoder::read(bool& result, Value& value, StringForm, const DecodingPlace& place) const {
    const std::string_view word = token(value);
    if (word != "true" && word != "false") failType("a Boolean", typeName(word), place);
    result = word == "true";
}

void RecordDecoder::read(std::int64_t& result, Value& value, StringForm, const DecodingPlace& place) const {
    constexpr std::string_view expected = "a signed integer of 64 bits";
    const auto integer = exactSignedInteger(number(value, expected, place));
    if (!integer) failType(expected, "a number with a fraction or out of range", place);
    result = *integer;
}

void RecordDecoder::read(std::uint64_t& result, Value& value, StringForm, const DecodingPlace& place) const {
    constexpr std::string_view expected = "an unsigned integer of 64 bits";
    const auto integer = exactUnsignedInteger(number(value, expected, place));
    if (!integer) failType(expected, "a number with a sign or a fraction or out of range", place);
    result = *integer;
}

void RecordDecoder::read(double& result, Value& value, StringForm, const DecodingPlace& place) const {
    constexpr std::string_view expected = "a double-precision number";
    const auto nearest = nearestDouble(number(value, expected, place));
    if (!nearest) failType(expected, "a number out of range", place);
    result = *nearest;
}

void RecordDecoder::read(MillisecondDate& result, Value& value, StringForm form, const DecodingPlace& place) const {
    double milliseconds = 0;
    read(milliseconds, value, form, place);
    result = MillisecondDate{MillisecondDate::duration{milliseconds}};
}

std::string_view RecordDecoder::token(Value& value) const {
    const std::string_view raw = value.raw_json_token();
    const std::string_view token = messageFrom(raw.data()).substr(0, raw.size());
    return token.substr(0, token.find_last_not_of(" \t\n\r") + 1);
}

std::string_view RecordDecoder::number(Value& value, std::string_view expected, const DecodingPlace& place) const {
    const std::string_view digits = token(value);
    if (typeName(digits) != "a number") failType(expected, typeName(digits), place);
    if (numberLength(digits) != digits.size()) failSomewhere();
    return digits;
}

void RecordDecoder::requireType(Value& value, char firstCharacter, std::string_view expected,
                                const DecodingPlace& place) const {
    const std::string_view found = token(value);
    if (!found.starts_with(firstCharacter)) failType(expected, typeName(found), place);
}

// Where brackets are not balanced, the library may go on into the bytes behind the message.
std::string_view RecordDecoder::messageFrom(const char* position) const {
    const auto offset = static_cast<std::size_t>(position - message.data());
    if (offset >= message.size()) failSomewhere();
    return message.substr(offset);
}

void RecordDecoder::failMissing(const DecodingPlace& place) {
    throw DecodingError{"The key " + inQuotes(place.text()) + " is missing."};
}

// A long name is left out: it may be a document's text under the wrong key.
void RecordDecoder::failUnknownName(std::string_view name, const std::vector<std::string_view>& names,
                                    const DecodingPlace& place) {
    constexpr std::size_t longestShownName = 40;
    std::string description = "The value " + (name.size() <= longestShownName ? inQuotes(name) + " " : std::string{});
    description += "of " + inQuotes(place.text()) + " is unknown; it must be ";
    for (std::size_t index = 0; index < names.size(); ++index) {
        if (index > 0) description += index + 1 == names.size() ? " or " : ", ";
        description += inQuotes(names[index]);
    }
    throw DecodingError{description + "."};
}
