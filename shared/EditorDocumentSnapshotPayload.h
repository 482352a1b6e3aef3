#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "shared/EnumerationNames.h"
#include "shared/RecordFields.h"

enum class EditorDocumentNewlineStyle { lf, crlf, cr };

template <>
inline constexpr auto enumerationNames<EditorDocumentNewlineStyle> = namesInOrder<EditorDocumentNewlineStyle>({
    {EditorDocumentNewlineStyle::lf, "lf"},
    {EditorDocumentNewlineStyle::crlf, "crlf"},
    {EditorDocumentNewlineStyle::cr, "cr"},
});

// The content of an open document and what belongs to it at one version.
struct EditorDocumentSnapshotPayload {
    std::string documentID{};
    std::string path{};
    std::int64_t version{};
    std::string text{};
    std::uint64_t encodingRawValue{};
    EditorDocumentNewlineStyle newlineStyle{};
    std::optional<double> modifiedAtTimeIntervalSince1970{};
};

template <>
inline constexpr auto recordFields<EditorDocumentSnapshotPayload> = std::tuple{
    field("documentID", &EditorDocumentSnapshotPayload::documentID),
    pathField("path", &EditorDocumentSnapshotPayload::path),
    field("version", &EditorDocumentSnapshotPayload::version),
    field("text", &EditorDocumentSnapshotPayload::text),
    field("encodingRawValue", &EditorDocumentSnapshotPayload::encodingRawValue),
    field("newlineStyle", &EditorDocumentSnapshotPayload::newlineStyle),
    field("modifiedAtTimeIntervalSince1970", &EditorDocumentSnapshotPayload::modifiedAtTimeIntervalSince1970),
};
static_assert(listsEveryMember<EditorDocumentSnapshotPayload>());
