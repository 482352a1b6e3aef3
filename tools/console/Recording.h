#pragma once

#include <fstream>
#include <string>
#include <string_view>
#include <vector>

// A session as a text file: '>' before a request, '<' before an envelope, '$' before a shell command, in the order in
// which they were seen. It holds what was in the documents.
struct RecordedLine {
    char mark{};
    std::string text{};
};

struct RecordedSession {
    std::string folderPath{};
    std::vector<RecordedLine> lines{};
};

class Recording {
public:
    // Throws a PlatformError when the file cannot be written.
    Recording(const std::string& filePath, const std::string& folderPath);

    void note(char mark, std::string_view line);

private:
    std::ofstream file;
};

// Throws a PlatformError when the file cannot be read or is no recording.
RecordedSession readRecording(const std::string& filePath);
