#include "shared/RecordCoding.h"
#include <new>

#include "shared/AutoWakeClientConfiguration.h"
#include "shared/AutoWakeStoreSnapshot.h"
#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/JSONSyntax.h"
#include "shared/RecordDecoder.h"
#include "shared/RecordEncoder.h"

namespace {

std::string descriptionOf(const JSONFault& fault) {
    return "Invalid JSON at byte " + std::to_string(fault.offset) + ": " + std::string{fault.description} + ".";
}

// Setting up a parser costs more than reading a small message with it; what a large one needs is given back.
constexpr std::size_t largestSmallMessage = 4096;

template <WireRecord Record>
Record decodePadded(std::string_view message) {
    if (message.starts_with(utf8ByteOrderMark)) message.remove_prefix(utf8ByteOrderMark.size());
    if (message.size() <= largestSmallMessage) {
        thread_local simdjson::ondemand::parser parserOfSmallMessages;
        return RecordDecoder{message}.decode<Record>(parserOfSmallMessages);
    }
    simdjson::ondemand::parser parser;
    return RecordDecoder{message}.decode<Record>(parser);
}

template <WireRecord Record>
Record decodeWithPadding(std::string_view json, std::size_t readableSize) {
    if (readableSize >= json.size() + decodingPadding) return decodePadded<Record>(json);
    std::string padded;
    padded.reserve(json.size() + decodingPadding);
    padded.append(json).append(decodingPadding, ' ');
    return decodePadded<Record>(std::string_view{padded}.substr(0, json.size()));
}

} // namespace

template <WireRecord Record>
std::optional<std::string> RecordCoding<Record>::encode(const Record& record, JSONLayout layout) {
    return RecordEncoder{layout}.encode(record);
}

template <WireRecord Record>
std::optional<JSONAroundText> RecordCoding<Record>::encodeAroundText(const Record& record, const std::string& text) {
    return RecordEncoder{text}.encodeAroundText(record);
}

// What is wrong with the grammar is told before what is wrong with a value, wherever it stands.
template <WireRecord Record>
Record RecordCoding<Record>::decode(std::string_view json, std::size_t readableSize) {
    try {
        return decodeWithPadding<Record>(json, readableSize);
    } catch (const DecodingError&) {
        if (const auto fault = findJSONFault(json)) throw DecodingError{descriptionOf(*fault)};
        throw;
    } catch (const simdjson::simdjson_error& error) {
        if (error.error() == simdjson::MEMALLOC) throw std::bad_alloc();
        if (const auto fault = findJSONFault(json)) throw DecodingError{descriptionOf(*fault)};
        throw DecodingError{std::string{"The message could not be read: "} + error.what() + "."};
    }
}

template struct RecordCoding<AutoWakeClientConfiguration>;
template struct RecordCoding<AutoWakeClientState>;
template struct RecordCoding<AutoWakeEventRecord>;
template struct RecordCoding<AutoWakeStoreSnapshot>;
template struct RecordCoding<EditorDocumentDaemonEnvelope>;
template struct RecordCoding<EditorDocumentDaemonRequest>;
template struct RecordCoding<EditorDocumentSnapshotPayload>;
template struct RecordCoding<WorkspaceBrowserDirectoryPayload>;
template struct RecordCoding<WorkspaceBrowserMutationPayload>;
template struct RecordCoding<WorkspaceBrowserNodePayload>;
