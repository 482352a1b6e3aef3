#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/Descriptor.h"

// Another program behind two pipes, in a process group of its own: what the user types at the terminal to interrupt
// this program is not meant for that one. Our ends of the pipes never block.
class ChildProcess {
public:
    // The program's name or path, then its arguments. A name without a slash is looked for in PATH. What the program
    // says on standard error goes to the given descriptor. Throws a PlatformError when it cannot be started.
    ChildProcess(const std::vector<std::string>& commandLine, int errorDescriptor);
    // Closes both pipes and gives the program a moment to end by itself.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    Descriptor input{};      // the program reads what is written here
    Descriptor output{};     // here can be read what the program writes
    Descriptor completion{}; // readable once the program has ended

    pid_t processID() const { return child; }

    // Absent while the program runs, then "ended with status 1" or the like.
    std::optional<std::string> outcome();

private:
    void endAtOnce() const;

    pid_t child = -1;
    std::optional<std::string> known{};
};
