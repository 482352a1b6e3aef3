#include "documents/DocumentSaving.h"

#include "documents/DocumentLoading.h"
#include "documents/NewlineStyle.h"
#include "workspace/PathComponents.h"

std::optional<std::string> encodedDocumentText(std::string text, const DocumentTextFormat& format,
                                               const TextCoding& textCoding) {
    return textCoding.encode(convertingNewlines(std::move(text), format.newlineStyle), format.encodingRawValue,
                             format.byteOrderMark);
}

PreparedSave::PreparedSave(const std::string& path, std::string_view bytes, FileManager& usedFileManager)
    : fileManager(usedFileManager), madeDirectories(fileManager.createDirectory(parentPath(path))) {
    try {
        replacement = fileManager.prepareReplacement(path, bytes);
    } catch (...) {
        fileManager.removeEmptyDirectories(madeDirectories);
        throw;
    }
}

PreparedSave::~PreparedSave() {
    if (isCommitted) return;
    // The folders are empty only when the new file is gone.
    replacement.reset();
    fileManager.removeEmptyDirectories(madeDirectories);
}

DocumentMetadata PreparedSave::metadata() const {
    return documentMetadata(replacement->attributes());
}

DocumentMetadata PreparedSave::commit() {
    const FileAttributes attributes = replacement->commit();
    isCommitted = true;
    return documentMetadata(attributes);
}
