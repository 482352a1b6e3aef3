#pragma once

#include <simdjson.h>

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "shared/DecodingError.h"
#include "shared/DecodingPlace.h"
#include "shared/EnumerationNames.h"
#include "shared/MillisecondDate.h"
#include "shared/RecordFields.h"

// Reads records by their field lists from one message. The library finds the structure and checks UTF-8; it passes over
// values that nobody asks for without a look, so those are checked here, and strings and numbers are read by our own
// rules, which are stricter in some points and more generous in others.
class RecordDecoder {
public:
    // The message must be followed by decodingPadding readable bytes.
    explicit RecordDecoder(std::string_view paddedMessage) : message(paddedMessage) {}

    // Throws a DecodingError or a simdjson::simdjson_error. The parser may be used again and keeps its memory.
    template <WireRecord Record>
    Record decode(simdjson::ondemand::parser& parser) {
        simdjson::ondemand::document document = begin(parser);
        Record record{};
        readObject(record, document.get_object(), {});
        requireEnd(document);
        return record;
    }

private:
    using Value = simdjson::ondemand::value;
    using Object = simdjson::ondemand::object;

    simdjson::ondemand::document begin(simdjson::ondemand::parser& parser) const;
    static void requireEnd(simdjson::ondemand::document& document);

    template <WireRecord Record>
    void readObject(Record& record, Object object, const DecodingPlace& place) const {
        std::bitset<recordFieldCount<Record>> hasValue;
        std::string key;
        for (simdjson::simdjson_result<simdjson::ondemand::field> element : object) {
            simdjson::ondemand::field entry = std::move(element).take_value();
            readKey(entry, key);
            if (!readField(record, hasValue, key, entry.value(), place)) skip(entry.value(), place);
        }
        requireFields<Record>(hasValue, place);
    }

    // False when the key is unknown or has come before: the first of several equal keys counts.
    template <WireRecord Record>
    bool readField(Record& record, std::bitset<recordFieldCount<Record>>& hasValue, std::string_view key, Value& value,
                   const DecodingPlace& place) const {
        const std::size_t index = indexOfField<Record>(key);
        if (index == recordFieldCount<Record> || hasValue[index]) return false;
        readFieldAt(record, index, value, place, std::make_index_sequence<recordFieldCount<Record>>{});
        hasValue[index] = true;
        return true;
    }

    template <WireRecord Record, std::size_t... indices>
    void readFieldAt(Record& record, std::size_t index, Value& value, const DecodingPlace& place,
                     std::index_sequence<indices...>) const {
        const auto readFrom = [&](const auto& field) {
            read(record.*field.member, value, field.form, place.child(field.name));
        };
        ((index == indices ? readFrom(std::get<indices>(recordFields<Record>)) : void()), ...);
    }

    template <WireRecord Record>
    static void requireFields(const std::bitset<recordFieldCount<Record>>& hasValue, const DecodingPlace& place) {
        std::size_t index = 0;
        forEachField<Record>([&]<typename Type>(const RecordField<Record, Type>& field) {
            if (!isOptional<Type> && !hasValue[index]) failMissing(place.child(field.name));
            ++index;
        });
    }

    template <typename Type>
    void read(std::optional<Type>& result, Value& value, StringForm form, const DecodingPlace& place) const {
        if (token(value) != "null") read(result.emplace(), value, form, place);
    }

    template <WireRecord Record>
    void read(Record& record, Value& value, StringForm, const DecodingPlace& place) const {
        requireType(value, '{', "an object", place);
        readObject(record, value.get_object(), place);
    }

    template <typename Element>
    void read(std::vector<Element>& elements, Value& value, StringForm form, const DecodingPlace& place) const {
        requireType(value, '[', "an array", place);
        for (simdjson::simdjson_result<Value> element : value.get_array()) {
            Value elementValue = std::move(element).take_value();
            const std::size_t index = elements.size();
            read(elements.emplace_back(), elementValue, form, place.element(index));
        }
    }

    template <typename Element>
    void read(std::map<std::string, Element>& elements, Value& value, StringForm form,
              const DecodingPlace& place) const {
        requireType(value, '{', "an object", place);
        std::string key;
        for (simdjson::simdjson_result<simdjson::ondemand::field> element : value.get_object()) {
            simdjson::ondemand::field entry = std::move(element).take_value();
            readKey(entry, key);
            const auto [position, isFirst] = elements.try_emplace(key);
            if (isFirst) {
                read(position->second, entry.value(), form, place.child(key));
            } else {
                skip(entry.value(), place);
            }
        }
    }

    template <WireEnumeration Enumeration>
    void read(Enumeration& result, Value& value, StringForm, const DecodingPlace& place) const {
        std::string name;
        read(name, value, StringForm::text, place);
        const auto found = enumerationNamed<Enumeration>(name);
        if (!found) {
            std::vector<std::string_view> names;
            for (const auto& entry : enumerationNames<Enumeration>) names.push_back(entry.second);
            failUnknownName(name, names, place);
        }
        result = *found;
    }

    void read(std::string& result, Value& value, StringForm form, const DecodingPlace& place) const;
    void read(bool& result, Value& value, StringForm form, const DecodingPlace& place) const;
    void read(std::int64_t& result, Value& value, StringForm form, const DecodingPlace& place) const;
    void read(std::uint64_t& result, Value& value, StringForm form, const DecodingPlace& place) const;
    void read(double& result, Value& value, StringForm form, const DecodingPlace& place) const;
    void read(MillisecondDate& result, Value& value, StringForm form, const DecodingPlace& place) const;

    void readKey(simdjson::ondemand::field& entry, std::string& key) const;
    void skip(Value& value, const DecodingPlace& place) const;

    // The value as it stands in the message when it is no object or array, else its opening bracket.
    std::string_view token(Value& value) const;
    std::string_view number(Value& value, std::string_view expected, const DecodingPlace& place) const;
    void requireType(Value& value, char firstCharacter, std::string_view expected, const DecodingPlace& place) const;
    std::string_view messageFrom(const char* position) const;

    [[noreturn]] static void failMissing(const DecodingPlace& place);
    [[noreturn]] static void failUnknownName(std::string_view name, const std::vector<std::string_view>& names,
                                             const DecodingPlace& place);

    std::string_view message;
};
