#pragma once

#include <sys/types.h>

#include <chrono>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// The real executable behind its pipes. Everything that waits does so up to a deadline, and then fails the test with
// the whole conversation so far.
class DaemonProcess {
public:
    // The launcher is a command line that starts the command line given after it, as env does.
    explicit DaemonProcess(std::vector<std::string> arguments = {}, std::vector<std::string> environment = {},
                           const std::vector<std::string>& launcher = {});
    ~DaemonProcess();
    DaemonProcess(const DaemonProcess&) = delete;
    DaemonProcess& operator=(const DaemonProcess&) = delete;

    void send(const std::string& bytes);
    void sendLine(const std::string& line) { send(line + '\n'); }

    // The next line of output without its line feed; absent at its end.
    std::optional<std::string> readLine();

    // The conversation so far, or the end of a long one.
    std::string recorded() const;

    // For a conversation that cannot go on: what is missing, what the process has complained of, and what was said.
    std::runtime_error failure(const std::string& what);

    // Sends the line and waits for one line of answer.
    std::string ask(const std::string& line);

    void closeInput();
    void closeOutput();

    // Waits for the process to end. Not negative: the exit status; negative: the signal that ended it.
    int wait();

    // What has come on standard error since the last call.
    std::string errors();

    pid_t processID() const { return child; }

private:
    void record(const std::string& direction, const std::string& text);

    mutable std::mutex mutex; // one thread may send while another reads
    std::string conversation;
    std::string buffered;
    pid_t child = -1;
    int input = -1;
    int output = -1;
    int error = -1;
};
