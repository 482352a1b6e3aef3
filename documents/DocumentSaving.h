#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/ManagedDocument.h"
#include "platform/FileManager.h"

// The bytes of a text in a document's format: its line ends, its encoding, its byte order mark. Absent when the
// encoding cannot represent the text.
std::optional<std::string> encodedDocumentText(std::string text, const DocumentTextFormat& format,
                                               const TextCoding& textCoding);

// A save that is complete but for its last step.
class PreparedSave {
public:
    // Makes missing folders above the file and puts the new file together beside the old one; the bytes must stay until
    // the commit. Throws the system's error. Without a commit no file and no folder is left that was not there before.
    PreparedSave(const std::string& path, std::string_view bytes, FileManager& fileManager);
    PreparedSave(const PreparedSave&) = delete;
    PreparedSave& operator=(const PreparedSave&) = delete;
    ~PreparedSave();

    // What is known of the new file.
    DocumentMetadata metadata() const;

    // Replaces the file in one step. Throws the system's error; the old file then still stands.
    DocumentMetadata commit();

private:
    FileManager& fileManager;
    std::vector<std::string> madeDirectories;
    std::unique_ptr<FileReplacement> replacement;
    bool isCommitted = false;
};
