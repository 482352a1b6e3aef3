#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/TextCoding.h"
#include "shared/EditorDocumentSnapshotPayload.h"

// Which file stands at a path, whatever its name. Two files that live at the same time differ in their numbers; one
// that was given the number of a file before it has another date.
struct DocumentFileIdentity {
    std::uint64_t fileSystemNumber{};
    std::uint64_t fileNumber{};
    std::optional<std::chrono::nanoseconds> creationDate{};

    bool operator==(const DocumentFileIdentity&) const = default;
};

// The file of a document as last seen on disk. The time is kept in full and becomes a double only on the wire.
struct DocumentMetadata {
    std::optional<std::chrono::nanoseconds> modifiedAtTimeIntervalSince1970{};
    std::optional<std::uint64_t> fileSize{}; // bytes
    std::optional<DocumentFileIdentity> fileIdentity{};
    bool isMissing{};

    bool operator==(const DocumentMetadata&) const = default;
};

// How the text of a document stands in its file. Saving puts it back in the same way.
struct DocumentTextFormat {
    std::uint64_t encodingRawValue{};
    ByteOrderMark byteOrderMark{};
    EditorDocumentNewlineStyle newlineStyle{};

    bool operator==(const DocumentTextFormat&) const = default;
};

// What a load gives: all of it from one moment of the file.
struct LoadedDocument {
    std::string text{};
    DocumentTextFormat format{};
    DocumentMetadata metadata{};
};

// Where the file of a document is, with no link on the way.
struct DocumentPlace {
    std::string realPath{};
    std::string realDirectoryPath{}; // of the document's own path, which a link under the file's name leads out of

    bool operator==(const DocumentPlace&) const = default;
};

// One open document. Its text lives with the client only.
struct ManagedDocument {
    std::string documentID{};
    std::string path{};    // normalised
    DocumentPlace place{}; // when a file was last found at the path
    std::int64_t version{};
    DocumentTextFormat format{};
    DocumentMetadata metadata{};

    bool operator==(const ManagedDocument&) const = default;
};
