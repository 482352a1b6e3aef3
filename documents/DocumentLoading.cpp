#include "documents/DocumentLoading.h"

#include <algorithm>
#include <array>

#include "documents/DocumentErrors.h"
#include "documents/NewlineStyle.h"
#include "workspace/PathComponents.h"

namespace {

using namespace std::string_view_literals;

// UTF-16, its big and little endian forms, then UTF-32 and its two.
constexpr std::array<std::uint64_t, 6> wideUnicodeEncodings = {10,         0x90000100, 0x94000100,
                                                               0x8C000100, 0x98000100, 0x9C000100};

constexpr std::size_t longestTextBOM = 4;

void validateAttributes(const FileAttributes& attributes) {
    if (attributes.type != FileType::regular) throw notRegularFileError();
    if (attributes.size.value_or(0) > maxInAppEditorFileSizeBytes) {
        throw fileTooLargeError(*attributes.size, maxInAppEditorFileSizeBytes);
    }
}

} // namespace

std::optional<std::uint64_t> validateOpenDocumentPreconditions(const std::string& path,
                                                               const FileManager& fileManager) {
    if (!fileManager.fileExists(path)) throw fileNotFoundError();
    if (!fileManager.isReadableFile(path)) throw fileNotReadableError();
    const FileAttributes attributes = fileManager.attributesOfItem(path, FollowLinks::yes);
    validateAttributes(attributes);
    return attributes.size;
}

LoadedDocument loadDocument(const std::string& path, const FileManager& fileManager, const TextCoding& textCoding) {
    validateOpenDocumentPreconditions(path, fileManager);
    FileContents contents = fileManager.contentsOfFile(path, maxInAppEditorFileSizeBytes);
    // Another file may stand at the path by now.
    validateAttributes(contents.attributes);

    const bool hasNullBytes = contents.data.find('\0') != std::string::npos;
    const std::string beginning = contents.data.substr(0, longestTextBOM);
    std::optional<DetectedText> detected = textCoding.detect(std::move(contents.data));
    if (hasNullBytes && !supportsNullBytesAsText(beginning, detected ? detected->encodingRawValue : 0)) {
        throw binaryFileError();
    }
    if (!detected) throw undecodableFileError();

    const EditorDocumentNewlineStyle newlineStyle = detectNewlineStyle(detected->text);
    return {
        .text = std::move(detected->text),
        .format = {detected->encodingRawValue, detected->byteOrderMark, newlineStyle},
        .metadata = documentMetadata(contents.attributes),
    };
}

DocumentMetadata currentMetadata(const std::string& path, const FileManager& fileManager) {
    try {
        return documentMetadata(fileManager.attributesOfItem(path, FollowLinks::yes));
    } catch (const PlatformError&) {
        return {.isMissing = true};
    }
}

DocumentPlace currentPlace(const std::string& path, const FileManager& fileManager) {
    const std::string directoryPath = parentPath(path);
    const std::string realDirectoryPath = fileManager.realPath(directoryPath).value_or(directoryPath);
    const auto realPath = fileManager.realPath(path);
    return {.realPath = realPath.value_or(appendingPathComponent(realDirectoryPath, lastPathComponent(path))),
            .realDirectoryPath = realDirectoryPath};
}

DocumentMetadata documentMetadata(const FileAttributes& attributes) {
    DocumentMetadata metadata{
        .modifiedAtTimeIntervalSince1970 = attributes.modificationDate,
        .fileSize = attributes.size,
    };
    if (attributes.fileSystemNumber && attributes.fileNumber) {
        metadata.fileIdentity = {*attributes.fileSystemNumber, *attributes.fileNumber, attributes.creationDate};
    }
    return metadata;
}

bool supportsNullBytesAsText(std::string_view data, std::uint64_t encodingRawValue) {
    return hasUnicodeTextBOM(data) || std::find(wideUnicodeEncodings.begin(), wideUnicodeEncodings.end(),
                                                encodingRawValue) != wideUnicodeEncodings.end();
}

bool hasUnicodeTextBOM(std::string_view data) {
    // The little-endian mark of UTF-32 begins with that of UTF-16.
    return data.starts_with("\xFF\xFE"sv) || data.starts_with("\xFE\xFF"sv) || data.starts_with("\x00\x00\xFE\xFF"sv);
}
