#include "driver/Program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t bufferSize = std::size_t{1} << 20;
constexpr Seconds deadline{60};

void checked(int result, const char* what) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), what);
}

struct Pipe {
    Descriptor reading, writing;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    checked(::pipe2(ends.data(), O_CLOEXEC), "pipe");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

pid_t spawn(const std::vector<std::string>& commandLine, int input, int output) {
    std::vector<char*> arguments;
    for (const std::string& argument : commandLine) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t child = -1;
    const int error = ::posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::system_error(error, std::generic_category(), commandLine[0]);
    return child;
}

} // namespace

Program::Program(const std::vector<std::string>& commandLine)
    : buffer(std::make_unique_for_overwrite<char[]>(bufferSize)) {
    Pipe toChild = makePipe();
    Pipe fromChild = makePipe();
    child = spawn(commandLine, toChild.reading.get(), fromChild.writing.get());
    input = std::move(toChild.writing);
    output = std::move(fromChild.reading);
}

Program::~Program() {
    input = Descriptor();
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

void Program::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(input.get(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        checked(static_cast<int>(count > 0) - 1, "write to the program");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::optional<std::string_view> Program::lineWithin(Seconds time) {
    const Clock::time_point last = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
    for (std::size_t searched = begin;;) {
        const void* found = std::memchr(buffer.get() + searched, '\n', end - searched);
        if (found != nullptr) {
            const auto lineEnd = static_cast<std::size_t>(static_cast<const char*>(found) - buffer.get());
            const std::string_view result(buffer.get() + begin, lineEnd - begin);
            begin = lineEnd + 1;
            return result;
        }
        if (begin > 0) {
            std::memmove(buffer.get(), buffer.get() + begin, end - begin);
            end -= begin;
            begin = 0;
        }
        searched = end;
        if (end == bufferSize) throw std::runtime_error("a line is too long to be kept");
        if (!readMore(last - Clock::now())) return std::nullopt;
    }
}

std::string_view Program::line() {
    const auto result = lineWithin(deadline);
    if (!result) throw std::runtime_error("the program does not answer");
    return *result;
}

// A line feed is always the last byte of what one write has brought, so there is no need to look at the others.
std::size_t Program::skipLine() {
    std::size_t length = end - begin;
    bool isComplete = length > 0 && buffer[end - 1] == '\n';
    begin = end = 0;
    while (!isComplete) {
        end = 0;
        if (!readMore(deadline)) throw std::runtime_error("the program does not answer");
        length += end;
        isComplete = buffer[end - 1] == '\n';
    }
    begin = end = 0;
    return length - 1;
}

std::string_view Program::ask(std::string_view request) {
    send(request);
    return line();
}

std::size_t Program::askAndSkip(std::string_view request) {
    send(request);
    return skipLine();
}

bool Program::readMore(Seconds time) {
    pollfd readable{.fd = output.get(), .events = POLLIN, .revents = 0};
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(time).count();
    if (time != deadline && ::poll(&readable, 1, std::max(0, static_cast<int>(milliseconds))) <= 0) return false;
    const ssize_t count = ::read(output.get(), buffer.get() + end, bufferSize - end);
    if (count <= 0) throw std::runtime_error("the program has ended");
    end += static_cast<std::size_t>(count);
    return true;
}

Usage Program::usage() const {
    Usage result{.processorTime = processorTime()};
    std::ifstream status("/proc/" + std::to_string(child) + "/status");
    for (std::string key; status >> key;) {
        constexpr double kilobytesPerMegabyte = 1000000.0 / 1024;
        double value = 0;
        if (key == "VmRSS:" && status >> value) result.residentMegabytes = value / kilobytesPerMegabyte;
        if (key == "VmHWM:" && status >> value) result.peakMegabytes = value / kilobytesPerMegabyte;
        if (key == "voluntary_ctxt_switches:") status >> result.contextSwitches;
    }
    return result;
}

Seconds Program::processorTime() const {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(child, &clock) != 0) throw std::runtime_error("the program has ended");
    checked(::clock_gettime(clock, &time), "processor time");
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::chrono::steady_clock::time_point Program::waitUntilQuiet(Seconds silence) const {
    constexpr Seconds negligible{0.0003};
    Clock::time_point lastWork = Clock::now();
    for (Seconds known = processorTime(); Clock::now() - lastWork < silence;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const Seconds now = processorTime();
        if (now - known < negligible) continue;
        known = now;
        lastWork = Clock::now();
    }
    return lastWork;
}
