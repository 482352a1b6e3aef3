#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/ChildProcess.h"

// A program that is spoken to in lines, without threads. Nothing blocks but waitUntilReady, and writing never waits for
// a program that itself waits until somebody reads: each exchange does both.
class ProcessLines {
public:
    ProcessLines(const std::vector<std::string>& commandLine, int errorDescriptor);

    // Readable, for poll and the like, while exchange() has something to do.
    int descriptor() const { return readiness.get(); }
    // False when the time is over first. Without a time as long as it takes.
    bool waitUntilReady(std::optional<std::chrono::milliseconds> longest) const;

    // Puts a line into the queue, the line feed is added, and writes as much of the queue as the pipe takes. What is
    // sent to a program that has ended is dropped.
    void send(std::string_view line);
    std::size_t unsentByteCount() const { return unsent.size() - sentCount; }

    // Writes what can be written and reads one piece of what is there. No line is read before the program's earlier
    // ones were asked for, so whoever does not ask makes the program wait.
    void exchange();
    // The next whole line that was read, without its line feed.
    std::optional<std::string> nextLine();

    // Once everything was read and the program has ended: how.
    const std::optional<std::string>& outcome() const { return end; }
    pid_t processID() const { return process.processID(); }
    void closeInput();

private:
    void flush();
    void readPiece();
    void notice();
    void follow(const Descriptor& source, unsigned events);
    void leave(Descriptor& source);

    ChildProcess process;
    Descriptor readiness{};
    bool waitsForRoom = false;
    std::string unsent{};
    std::size_t sentCount = 0;
    std::string received{};
    std::size_t taken = 0;    // of what was received, handed out
    std::size_t searched = 0; // of what was received, known to hold no line feed after the taken part
    std::optional<std::string> end{};
};
