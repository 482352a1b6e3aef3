#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/Descriptor.h"

using Seconds = std::chrono::duration<double>;

// What a process has used up to now.
struct Usage {
    Seconds processorTime{};
    double residentMegabytes{};
    double peakMegabytes{};
    long contextSwitches{}; // that it asked for itself, by waiting
};

// A measured program at the other end of two pipes. Whatever does not happen within a minute is thrown as an error.
class Program {
public:
    explicit Program(const std::vector<std::string>& commandLine);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program(); // the program is ended

    void send(std::string_view bytes);
    // The next line without its line feed; absent when none has come by the deadline.
    std::optional<std::string_view> lineWithin(Seconds time);
    std::string_view line();
    // As line(), for a line of any length that nobody reads. Returns its length.
    std::size_t skipLine();

    // Sends the line and waits for one line of answer.
    std::string_view ask(std::string_view request);
    std::size_t askAndSkip(std::string_view request);

    Usage usage() const;
    Seconds processorTime() const;
    // When the program last did anything, once it has done nothing for so long.
    std::chrono::steady_clock::time_point waitUntilQuiet(Seconds silence) const;

private:
    bool readMore(Seconds time);

    pid_t child = -1;
    Descriptor input{};
    Descriptor output{};
    std::unique_ptr<char[]> buffer;
    std::size_t begin = 0;
    std::size_t end = 0;
};
