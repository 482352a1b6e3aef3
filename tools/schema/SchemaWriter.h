#pragma once

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/RecordFields.h"

// The name under which other types refer to a record or an enumeration.
template <typename Type>
inline constexpr std::string_view definitionName = Type::isMissingInTheListOfDefinitionNames;
template <>
inline constexpr std::string_view definitionName<EditorDocumentRequestCommand> = "EditorDocumentRequestCommand";
template <>
inline constexpr std::string_view definitionName<EditorDocumentSnapshotPayload> = "EditorDocumentSnapshotPayload";
template <>
inline constexpr std::string_view definitionName<EditorDocumentNewlineStyle> = "EditorDocumentNewlineStyle";
template <>
inline constexpr std::string_view definitionName<EditorDocumentEnvelopeKind> = "EditorDocumentEnvelopeKind";
template <>
inline constexpr std::string_view definitionName<EditorDocumentEventKind> = "EditorDocumentEventKind";
template <>
inline constexpr std::string_view definitionName<WorkspaceBrowserDirectoryPayload> = "WorkspaceBrowserDirectoryPayload";
template <>
inline constexpr std::string_view definitionName<WorkspaceBrowserNodePayload> = "WorkspaceBrowserNodePayload";
template <>
inline constexpr std::string_view definitionName<WorkspaceBrowserMutationPayload> = "WorkspaceBrowserMutationPayload";
template <>
inline constexpr std::string_view definitionName<WorkspaceBrowserMutationKind> = "WorkspaceBrowserMutationKind";
template <>
inline constexpr std::string_view definitionName<WorkspaceBrowserMutationOrigin> = "WorkspaceBrowserMutationOrigin";

// Writes one schema document. A list of alternatives is an "enum" even where it has one member, since older validators
// do not know "const".
class SchemaWriter {
public:
    SchemaWriter(std::string_view title, std::string_view description) {
        writer.SetIndent(' ', 2);
        writer.StartObject();
        entry("$schema", "https://json-schema.org/draft/2020-12/schema");
        entry("title", title);
        entry("description", description);
    }

    std::string takeOutput() {
        writer.EndObject();
        return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
    }

    void oneOf(const std::vector<std::string_view>& names) {
        key("oneOf");
        writer.StartArray();
        for (const std::string_view name : names) writeObject([&] { reference(name); });
        writer.EndArray();
    }

    void beginDefinitions() {
        key("$defs");
        writer.StartObject();
    }
    void endDefinitions() { writer.EndObject(); }

    template <typename Body>
    void definition(std::string_view name, Body body) {
        key(name);
        writeObject(body);
    }

    void fileNameDefinition() {
        definition("FileNameText", [&] {
            entry(
                "description",
                "A file name, or a text that may quote one. A byte that is not part of well-formed UTF-8 stands as the "
                "character U+10F800 + byte.");
            entry("type", "string");
        });
    }

    template <WireRecord Record>
    void define() {
        definition(definitionName<Record>, [&] {
            beginClosedObject();
            fields<Record>(NullForAbsent::no);
            endObject();
        });
    }

    template <WireEnumeration Enumeration>
    void define() {
        definition(definitionName<Enumeration>, [&] {
            std::vector<std::string_view> names;
            for (const auto& named : enumerationNames<Enumeration>) names.push_back(named.second);
            alternatives(names);
        });
    }

    // A record as the daemon reads it, in the place of the document itself.
    template <WireRecord Record>
    void openRecord() {
        beginObject();
        fields<Record>(NullForAbsent::yes);
        endObject();
    }

    void beginClosedObject() {
        beginObject();
        isClosed = true;
    }

    void endObject() {
        writer.EndObject();
        key("required");
        strings(required);
        if (isClosed) {
            key("additionalProperties");
            writer.Bool(false);
        }
    }

    template <typename Body>
    void property(std::string_view name, Body body) {
        required.emplace_back(name);
        optionalProperty(name, body);
    }

    template <typename Body>
    void optionalProperty(std::string_view name, Body body) {
        key(name);
        writeObject(body);
    }

    void literal(std::string_view name, const std::vector<std::string_view>& values) {
        property(name, [&] { alternatives(values); });
    }

    void literal(std::string_view name, bool value) {
        property(name, [&] {
            key("enum");
            writer.StartArray();
            writer.Bool(value);
            writer.EndArray();
        });
    }

    // The type of a record's field, as it is when it is present.
    template <WireRecord Record>
    void type(std::string_view fieldName) {
        bool isFound = false;
        forEachField<Record>([&]<typename Value>(const RecordField<Record, Value>& field) {
            if (field.name != fieldName) return;
            isFound = true;
            describe(static_cast<Value*>(nullptr), field.form);
        });
        if (!isFound) throw std::logic_error("there is no field " + std::string(fieldName));
    }

private:
    enum class NullForAbsent { yes, no };

    template <WireRecord Record>
    void fields(NullForAbsent nullForAbsent) {
        forEachField<Record>([&]<typename Value>(const RecordField<Record, Value>& field) {
            const auto describeField = [&] { describe(static_cast<Value*>(nullptr), field.form); };
            if (!isOptional<Value>) {
                property(field.name, describeField);
            } else if (nullForAbsent == NullForAbsent::no) {
                optionalProperty(field.name, describeField);
            } else {
                optionalProperty(field.name, [&] { orNull(describeField); });
            }
        });
    }

    template <typename Body>
    void orNull(Body body) {
        key("anyOf");
        writer.StartArray();
        writeObject(body);
        writeObject([&] { entry("type", "null"); });
        writer.EndArray();
    }

    template <typename Value>
    void describe(std::optional<Value>*, StringForm form) {
        describe(static_cast<Value*>(nullptr), form);
    }

    template <typename Element>
    void describe(std::vector<Element>*, StringForm form) {
        entry("type", "array");
        definition("items", [&] { describe(static_cast<Element*>(nullptr), form); });
    }

    template <typename Value>
    void describe(Value*, StringForm form) {
        if constexpr (std::is_same_v<Value, std::string>) {
            if (form == StringForm::fileName) return reference("FileNameText");
            entry("type", "string");
        } else if constexpr (std::is_same_v<Value, bool>) {
            entry("type", "boolean");
        } else if constexpr (std::is_same_v<Value, double>) {
            entry("type", "number");
        } else if constexpr (std::is_integral_v<Value>) {
            entry("type", "integer");
            key("minimum");
            integer(std::numeric_limits<Value>::min());
            key("maximum");
            integer(std::numeric_limits<Value>::max());
        } else {
            reference(definitionName<Value>);
        }
    }

    void integer(std::int64_t value) { writer.Int64(value); }
    void integer(std::uint64_t value) { writer.Uint64(value); }

    void alternatives(const std::vector<std::string_view>& names) {
        key("enum");
        strings(names);
    }

    void reference(std::string_view name) { entry("$ref", "#/$defs/" + std::string(name)); }

    void beginObject() {
        required.clear();
        isClosed = false;
        entry("type", "object");
        key("properties");
        writer.StartObject();
    }

    template <typename Body>
    void writeObject(Body body) {
        writer.StartObject();
        body();
        writer.EndObject();
    }

    template <typename Text>
    void strings(const std::vector<Text>& texts) {
        writer.StartArray();
        for (const Text& text : texts) string(text);
        writer.EndArray();
    }

    void entry(std::string_view name, std::string_view value) {
        key(name);
        string(value);
    }

    void key(std::string_view name) { writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size())); }
    void string(std::string_view text) { writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size())); }

    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer{buffer};
    std::vector<std::string> required; // of the object that is being written; they do not nest
    bool isClosed = false;
};
