#include "documents/DocumentErrors.h"

#include <array>
#include <cstdio>

#include "shared/ErrorDomain.h"

namespace {

PlatformError documentError(std::int64_t code, std::string description) {
    return {std::string(daemonErrorDomain), code, std::move(description)};
}

double megabytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / 1'048'576;
}

} // namespace

PlatformError binaryFileError() {
    return documentError(1001, "Binary files are not supported in the in-app editor.");
}

PlatformError undecodableFileError() {
    return documentError(1002, "Failed to decode this text file.");
}

PlatformError fileNotFoundError() {
    return documentError(1003, "The file could not be found.");
}

PlatformError fileNotReadableError() {
    return documentError(1004, "The file is not readable.");
}

PlatformError notRegularFileError() {
    return documentError(1005, "Only regular files are supported in the in-app editor.");
}

PlatformError fileTooLargeError(std::uint64_t size, std::uint64_t limit) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), "This file is too large for the in-app editor (%.1f MB > %.1f MB).",
                  megabytes(size), megabytes(limit));
    return documentError(1006, text.data());
}
