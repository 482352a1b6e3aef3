#include "tools/console/ShellCommand.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/PlatformError.h"
#include "platform/linux/TemporaryFolder.h"

namespace {

int exitStatus(int status) {
    constexpr int notStarted = 127;
    if (status == -1) return notStarted;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

std::string editorCommand() {
    for (const char* variable : {"VISUAL", "EDITOR"}) {
        const char* value = std::getenv(variable);
        if (value && *value != '\0') return value;
    }
    return "vi";
}

int runOnTerminal(const std::string& command) {
    return exitStatus(std::system(command.c_str()));
}

int runForOutput(const std::string& command, const std::function<void(const std::string&)>& takeLine) {
    std::FILE* output = ::popen(("{ " + command + "\n} 2>&1 </dev/null").c_str(), "re");
    if (!output) return exitStatus(-1);
    char* line = nullptr;
    std::size_t capacity = 0;
    for (ssize_t length; (length = ::getline(&line, &capacity, output)) > 0;) {
        std::string_view text(line, static_cast<std::size_t>(length));
        if (text.ends_with('\n')) text.remove_suffix(1);
        takeLine(std::string(text));
    }
    std::free(line);
    return exitStatus(::pclose(output));
}

// The extension lets an editor know the language; more of the name is not needed, and it may hold anything.
Draft::Draft(const std::string& text, std::string_view extension) {
    folderPath = makeTemporaryFolder("editor-document-");
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    };
    filePath = folderPath + "/text";
    if (!extension.empty() && std::ranges::all_of(extension, isPlain)) filePath += "." + std::string(extension);
    std::ofstream file(filePath, std::ios::binary);
    if (!file.write(text.data(), static_cast<std::streamsize>(text.size())).flush())
        throw posixError(errno, "write", filePath);
}

Draft::~Draft() {
    std::error_code ignored;
    if (!isKept) std::filesystem::remove_all(folderPath, ignored);
}

std::optional<std::string> Draft::text() const {
    std::ifstream file(filePath, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    return file ? std::optional(text) : std::nullopt;
}
