#include "platform/linux/TemporaryFolder.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <utility>

#include "platform/PlatformError.h"

std::string makeTemporaryFolder(std::string_view nameBeginning) {
    return makeTemporaryFolder(std::filesystem::temp_directory_path().string(), nameBeginning);
}

std::string makeTemporaryFolder(std::string parentPath, std::string_view nameBeginning) {
    constexpr std::size_t replacedLetters = 6; // at the end, by mkdtemp, which wants them to be capital X
    std::string path = std::move(parentPath) + '/' + std::string(nameBeginning) + std::string(replacedLetters, 'X');
    if (!::mkdtemp(path.data())) throw posixError(errno, "make the folder", path);
    return path;
}
