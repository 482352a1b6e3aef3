#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "documents/ManagedDocument.h"
#include "platform/FileManager.h"

// Bytes. A file of exactly this size can be opened.
inline constexpr std::uint64_t maxInAppEditorFileSizeBytes = 8'388'608;

// Refuses what cannot be a document, before anything is read. Returns the size in bytes if it is known. Follows links.
// Throws 1003 to 1006, or the system's error when the attributes cannot be read.
std::optional<std::uint64_t> validateOpenDocumentPreconditions(const std::string& path, const FileManager& fileManager);

// Reads the file and finds out its encoding and line ends. Throws what the preconditions throw, 1001, 1002, or the
// system's error of a failed reading.
LoadedDocument loadDocument(const std::string& path, const FileManager& fileManager, const TextCoding& textCoding);

// Never fails: a file that cannot be asked is missing. Follows links.
DocumentMetadata currentMetadata(const std::string& path, const FileManager& fileManager);

// Without links where there is nothing.
DocumentPlace currentPlace(const std::string& path, const FileManager& fileManager);

DocumentMetadata documentMetadata(const FileAttributes& attributes);

// Whether bytes of zero belong to a text in this encoding, rather than to a binary file.
bool supportsNullBytesAsText(std::string_view data, std::uint64_t encodingRawValue);

// The mark of UTF-16 or UTF-32. That of UTF-8 deliberately does not count.
bool hasUnicodeTextBOM(std::string_view data);
