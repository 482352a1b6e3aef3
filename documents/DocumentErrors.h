#pragma once

#include <cstdint>

#include "platform/PlatformError.h"

// Why a file is refused as a document, in the daemon's own name.
PlatformError binaryFileError();                                          // 1001
PlatformError undecodableFileError();                                     // 1002
PlatformError fileNotFoundError();                                        // 1003
PlatformError fileNotReadableError();                                     // 1004
PlatformError notRegularFileError();                                      // 1005
PlatformError fileTooLargeError(std::uint64_t size, std::uint64_t limit); // 1006, both in bytes
