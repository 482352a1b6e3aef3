#include "documents/DocumentSnapshot.h"

namespace {

std::optional<double> seconds(std::optional<std::chrono::nanoseconds> time) {
    if (!time) return std::nullopt;
    return std::chrono::duration<double>(*time).count();
}

} // namespace

EditorDocumentSnapshotPayload documentSnapshot(const ManagedDocument& document, std::string text) {
    return {
        .documentID = document.documentID,
        .path = document.path,
        .version = document.version,
        .text = std::move(text),
        .encodingRawValue = document.format.encodingRawValue,
        .newlineStyle = document.format.newlineStyle,
        .modifiedAtTimeIntervalSince1970 = seconds(document.metadata.modifiedAtTimeIntervalSince1970),
    };
}
