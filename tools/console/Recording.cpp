#include "tools/console/Recording.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "shared/FileNameText.h"

namespace {

constexpr std::string_view firstLine = "# A session with EditorDocumentDaemon in ";

} // namespace

// For the user's eyes only, as the documents may be.
Recording::Recording(const std::string& filePath, const std::string& folderPath) {
    const Descriptor made(::open(filePath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    file.open(filePath, std::ios::binary);
    file << firstLine << textFromFileName(folderPath) << std::endl;
    if (!file) throw posixError(errno, "write the recording", filePath);
}

// What is not in the file when the program is killed would be missed most.
void Recording::note(char mark, std::string_view line) {
    file << mark << ' ' << line << std::endl;
}

RecordedSession readRecording(const std::string& filePath) {
    std::ifstream file(filePath, std::ios::binary);
    RecordedSession session;
    std::string line;
    if (!std::getline(file, line) || !line.starts_with(firstLine))
        throw posixError(file ? EINVAL : errno, "read the recording", filePath);
    session.folderPath = fileNameFromText(line.substr(firstLine.size()));
    while (std::getline(file, line)) {
        if (line.size() > 2 && line[1] == ' ') session.lines.push_back({line[0], line.substr(2)});
    }
    return session;
}
