#include "tests/process/DaemonProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>

#include "tests/support/SchemaCheck.h"

extern char** environ;

namespace {

constexpr std::chrono::seconds deadline{60};
constexpr std::size_t recordedLimit = 20'000; // of what is recorded for the message of a failure

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
    return ends;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

void closeOnce(int& descriptor) {
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
}

bool becomesReadable(int descriptor, std::chrono::milliseconds time) {
    pollfd readable{.fd = descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&readable, 1, static_cast<int>(time.count())) == 1;
}

} // namespace

DaemonProcess::DaemonProcess(std::vector<std::string> arguments, std::vector<std::string> environment,
                             const std::vector<std::string>& launcher) {
    const auto inputPipe = makePipe();
    const auto outputPipe = makePipe();
    const auto errorPipe = makePipe();
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, inputPipe[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, outputPipe[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errorPipe[1], STDERR_FILENO);

    arguments.insert(arguments.begin(), DAEMON_EXECUTABLE);
    arguments.insert(arguments.begin(), launcher.begin(), launcher.end());
    for (char** variable = environ; *variable; ++variable) environment.emplace_back(*variable);
    // Otherwise a race would be told on standard error alone, while the daemon goes on.
    environment.emplace_back("TSAN_OPTIONS=halt_on_error=1");
    // A child inherits what is ignored, and is to see to that itself.
    std::signal(SIGPIPE, SIG_DFL);
    const int failure = ::posix_spawnp(&child, arguments[0].c_str(), &actions, nullptr, pointers(arguments).data(),
                                       pointers(environment).data());
    std::signal(SIGPIPE, SIG_IGN);
    ::posix_spawn_file_actions_destroy(&actions);
    for (const int end : {inputPipe[0], outputPipe[1], errorPipe[1]}) ::close(end);
    input = inputPipe[1];
    output = outputPipe[0];
    error = errorPipe[0];
    if (failure != 0) throw std::runtime_error("cannot start " DAEMON_EXECUTABLE);
}

DaemonProcess::~DaemonProcess() {
    closeInput();
    closeOutput();
    closeOnce(error);
    if (child > 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
}

void DaemonProcess::send(const std::string& bytes) {
    record("> ", bytes);
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = ::write(input, bytes.data() + sent, bytes.size() - sent);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw failure("the daemon no longer reads");
        sent += static_cast<std::size_t>(count);
    }
}

std::optional<std::string> DaemonProcess::readLine() {
    for (std::size_t searched = 0;;) {
        if (const auto lineFeed = buffered.find('\n', searched); lineFeed != std::string::npos) {
            std::string line = buffered.substr(0, lineFeed);
            buffered.erase(0, lineFeed + 1);
            record("< ", line + '\n');
            expectEnvelopeOfTheSchema(line);
            return line;
        }
        searched = buffered.size();
        if (!becomesReadable(output, deadline)) throw failure("no answer in time");
        std::array<char, 65536> bytes{};
        const ssize_t count = ::read(output, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        buffered.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

std::string DaemonProcess::ask(const std::string& line) {
    sendLine(line);
    auto answer = readLine();
    if (!answer) throw failure("the daemon ended");
    return *answer;
}

void DaemonProcess::closeInput() {
    closeOnce(input);
}

void DaemonProcess::closeOutput() {
    closeOnce(output);
}

int DaemonProcess::wait() {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    child = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string DaemonProcess::errors() {
    std::string text;
    std::array<char, 4096> bytes{};
    while (becomesReadable(error, {})) {
        const ssize_t count = ::read(error, bytes.data(), bytes.size());
        if (count <= 0) break;
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return text;
}

// Of a long line only the beginning.
void DaemonProcess::record(const std::string& direction, const std::string& text) {
    const std::lock_guard lock(mutex);
    conversation += direction + text.substr(0, 1000);
    if (conversation.size() > 30 * recordedLimit) conversation.erase(0, conversation.size() - recordedLimit);
}

std::runtime_error DaemonProcess::failure(const std::string& what) {
    return std::runtime_error(what + '\n' + errors() + recorded());
}

std::string DaemonProcess::recorded() const {
    const std::lock_guard lock(mutex);
    if (conversation.size() <= recordedLimit) return conversation;
    return "...\n" + conversation.substr(conversation.size() - recordedLimit);
}
