// Watches and reads the whole tree of a path, answers, and from then on writes a line for each event of the kernel.
#include <climits>

#include "Crawl.h"

namespace {

void tellEvents(const Crawl& crawl) {
    alignas(inotify_event) std::array<char, 64 * 1024> buffer;
    std::string line;
    for (ssize_t filled = 0; (filled = ::read(crawl.inotify, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t position = 0; position < filled;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + position);
            position += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if (event->wd < 0 || event->len == 0) continue;
            line = std::to_string(event->mask);
            ((line += ' ') += crawl.pathByWatch[static_cast<std::size_t>(event->wd)]) += '/';
            (line += event->name) += '\n';
            writeAll(STDOUT_FILENO, line);
        }
    }
}

} // namespace

int main() {
    enlargePipes();
    std::string path;
    if (!readLine(path)) return 0;
    Crawl crawl{.inotify = ::inotify_init1(IN_CLOEXEC)};
    crawl.all(path);
    writeAll(STDOUT_FILENO, "watched\n");
    tellEvents(crawl);
}
