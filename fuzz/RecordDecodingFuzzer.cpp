// Every message is read as every record. What is accepted can be written and comes back the same; what is refused is
// refused in a sentence.

#include <algorithm>
#include <memory>
#include <string>

#include "fuzz/Require.h"
#include "shared/AutoWakeStoreSnapshot.h"
#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/JSONSyntax.h"
#include "shared/RecordCoding.h"
#include "shared/UTF8.h"

namespace {

template <WireRecord Record>
void readAs(std::string_view message, std::size_t readableSize, bool isJSON) {
    Record record;
    try {
        record = decodeRecord<Record>(message, readableSize);
    } catch (const DecodingError& error) {
        const std::string_view text = error.what();
        require(text.size() > 10 && text.size() < 600 && isWellFormedUTF8(text), text);
        return;
    }
    require(isJSON, "what is no JSON was accepted");
    for (const JSONLayout layout : {JSONLayout::compact, JSONLayout::pretty}) {
        const auto json = encodeRecord(record, layout);
        require(json.has_value(), "what was read cannot be written");
        require(isWellFormedUTF8(*json), "what was written is not UTF-8");
        require(layout == JSONLayout::pretty || json->find('\n') == std::string::npos, "more than one line");
        require(encodeRecord(decodeRecord<Record>(*json), layout) == json, "what was written does not come back");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    // The first byte says whether there is room behind the message, and the exact room shows who reads too far.
    const std::size_t padding = data[0] % 2 == 0 ? 0 : decodingPadding;
    const std::size_t messageSize = size - 1;
    const auto buffer = std::make_unique<char[]>(messageSize + padding);
    std::copy_n(data + 1, messageSize, buffer.get());
    std::fill_n(buffer.get() + messageSize, padding, static_cast<char>(data[0]));
    const std::string_view message(buffer.get(), messageSize);
    const bool isJSON = !findJSONFault(message);
    readAs<EditorDocumentDaemonRequest>(message, messageSize + padding, isJSON);
    readAs<EditorDocumentDaemonEnvelope>(message, messageSize + padding, isJSON);
    readAs<AutoWakeStoreSnapshot>(message, messageSize + padding, isJSON);
    return 0;
}
