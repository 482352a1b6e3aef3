// Puts the text of every request into the file that the argument names, and answers with it.
#include <memory>

#include "Limit.h"

int main(int, char** arguments) {
    enlargePipes();
    const std::string path = arguments[1];
    const std::string temporary = path + ".new";
    std::string line;
    while (readLine(line)) {
        constexpr std::string_view key = "\"text\":\"";
        const std::size_t begin = line.find(key) + key.size();
        line.append(2 * windowSize, ' ');
        const auto text = std::make_unique_for_overwrite<char[]>(line.size() + 2 * windowSize);
        const char* textEnd = unescaped(line.data() + begin, text.get());
        const std::string_view saved(text.get(), textEnd);

        const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        require(file >= 0, "open");
        writeAll(file, saved);
        require(::fsync(file) == 0, "fsync");
        ::close(file);
        require(::rename(temporary.c_str(), path.c_str()) == 0, "rename");

        const auto answer = std::make_unique_for_overwrite<char[]>(2 * saved.size() + 4 * windowSize);
        char* end = answer.get();
        *end++ = '"';
        end = escaped(saved, end);
        *end++ = '"';
        *end++ = '\n';
        writeAll(STDOUT_FILENO, {answer.get(), end});
    }
}
