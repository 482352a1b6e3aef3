#pragma once

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "shared/EnumerationNames.h"
#include "shared/FileNameText.h"
#include "shared/JSONWriter.h"
#include "shared/MillisecondDate.h"
#include "shared/RecordCoding.h"
#include "shared/RecordFields.h"

// Writes records by their field lists.
class RecordEncoder {
public:
    explicit RecordEncoder(JSONLayout chosenLayout) : layout(chosenLayout), writer(chosenLayout) {}
    // For a record one of whose texts is to be left out.
    explicit RecordEncoder(const std::string& text) : RecordEncoder(JSONLayout::compact) { leftOut = &text; }

    template <WireRecord Record>
    std::optional<std::string> encode(const Record& record) {
        write(record, StringForm::text);
        if (!writer.isValid()) return std::nullopt;
        return writer.takeOutput();
    }

    // The text that is left out must be one of the record's own.
    template <WireRecord Record>
    std::optional<JSONAroundText> encodeAroundText(const Record& record) {
        auto json = encode(record);
        if (!json) return std::nullopt;
        return JSONAroundText{.before = json->substr(0, placeOfLeftOut), .behind = json->substr(placeOfLeftOut)};
    }

private:
    template <WireRecord Record>
    void write(const Record& record, StringForm) {
        writer.beginObject();
        constexpr auto indices = std::make_index_sequence<recordFieldCount<Record>>{};
        layout == JSONLayout::pretty ? writeFieldsByName(record, indices) : writeFields(record, indices);
        writer.endObject();
    }

    template <WireRecord Record, std::size_t... indices>
    void writeFields(const Record& record, std::index_sequence<indices...>) {
        (writeField(record, std::get<indices>(recordFields<Record>)), ...);
    }

    // In the order of the keys' bytes, found out by the compiler.
    template <WireRecord Record, std::size_t... indices>
    void writeFieldsByName(const Record& record, std::index_sequence<indices...>) {
        static constexpr auto order = [] {
            const auto names = std::array{std::get<indices>(recordFields<Record>).name...};
            std::array<std::size_t, sizeof...(indices)> positions{indices...};
            std::ranges::sort(positions, {}, [&](std::size_t position) { return names[position]; });
            return positions;
        }();
        (writeField(record, std::get<order[indices]>(recordFields<Record>)), ...);
    }

    template <typename Record, typename Value>
    [[gnu::always_inline]] void writeField(const Record& record, const RecordField<Record, Value>& field) {
        const Value& value = record.*field.member;
        if constexpr (isOptional<Value>) {
            if (!value) return;
            writer.key(field.name);
            write(*value, field.form);
        } else {
            writer.key(field.name);
            write(value, field.form);
        }
    }

    template <typename Element>
    void write(const std::vector<Element>& elements, StringForm form) {
        constexpr std::size_t judgedBy = 64;
        const std::size_t sizeBefore = writer.size();
        std::size_t written = 0;
        writer.beginArray();
        for (const Element& element : elements) {
            writer.element();
            write(element, form);
            // A large output that grows by itself is copied again and again.
            if (++written == judgedBy) writer.expect((writer.size() - sizeBefore) / judgedBy * elements.size());
        }
        writer.endArray();
    }

    // A map's keys are in byte order already.
    template <typename Element>
    void write(const std::map<std::string, Element>& elements, StringForm form) {
        writer.beginObject();
        for (const auto& [key, element] : elements) {
            writer.textKey(key);
            write(element, form);
        }
        writer.endObject();
    }

    void write(MillisecondDate date, StringForm) { writer.number(date.time_since_epoch().count()); }

    void write(const std::string& string, StringForm form) {
        if (&string == leftOut) return writeEmptyPlace();
        if (writer.shortPlainString(string)) return;
        if (form == StringForm::text) return writer.string(string);
        if (isItsOwnText(string)) return writer.wellFormedString(string);
        writer.wellFormedString(textFromFileName(string));
    }

    void writeEmptyPlace() {
        writer.wellFormedString("");
        placeOfLeftOut = writer.size() - 1;
    }

    template <WireEnumeration Enumeration>
    void write(Enumeration value, StringForm) {
        writer.name(nameOf(value));
    }

    template <typename Number>
    requires std::is_arithmetic_v<Number>
    void write(Number value, StringForm) {
        if constexpr (std::is_same_v<Number, bool>) {
            writer.boolean(value);
        } else {
            writer.number(value);
        }
    }

    JSONLayout layout;
    JSONWriter writer;
    const std::string* leftOut = nullptr;
    std::size_t placeOfLeftOut = 0;
};
