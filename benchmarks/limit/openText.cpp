// Answers every path with the file's text, as a JSON string.
#include <sys/stat.h>

#include <memory>

#include "Limit.h"

int main() {
    enlargePipes();
    std::string path;
    while (readLine(path)) {
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        struct stat status {};
        require(::fstat(file, &status) == 0, "fstat");
        const auto size = static_cast<std::size_t>(status.st_size);
        const auto text = std::make_unique_for_overwrite<char[]>(size + 2 * windowSize);
        require(::read(file, text.get(), size) == status.st_size, "read");
        ::close(file);
        const auto answer = std::make_unique_for_overwrite<char[]>(2 * size + 4 * windowSize);
        char* end = answer.get();
        *end++ = '"';
        end = escaped({text.get(), size}, end);
        *end++ = '"';
        *end++ = '\n';
        writeAll(STDOUT_FILENO, {answer.get(), end});
    }
}
