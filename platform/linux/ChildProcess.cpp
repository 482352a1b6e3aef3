#include "platform/linux/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <memory>

#include "platform/PlatformError.h"
#include "platform/linux/PipeSize.h"
#include "platform/linux/files/SystemCall.h"

extern char** environ;

namespace {

constexpr auto startAction = "start";
constexpr int millisecondsToEnd = 5000;

struct Pipe {
    Descriptor reading{};
    Descriptor writing{};
};

Pipe makePipe() {
    int ends[2];
    checked(::pipe2(ends, O_CLOEXEC));
    enlargePipe(ends[0]);
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

void neverBlock(const Descriptor& descriptor) {
    checked(::fcntl(descriptor.get(), F_SETFL, ::fcntl(descriptor.get(), F_GETFL) | O_NONBLOCK));
}

struct FileActions {
    FileActions() { ::posix_spawn_file_actions_init(&actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    posix_spawn_file_actions_t actions;
};

// The signals are those of a fresh program, whatever this one blocks or ignores.
struct Attributes {
    Attributes() {
        ::posix_spawnattr_init(&attributes);
        sigset_t none, broken;
        ::sigemptyset(&none);
        ::sigemptyset(&broken);
        ::sigaddset(&broken, SIGPIPE);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &broken);
        ::posix_spawnattr_setpgroup(&attributes, 0);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    posix_spawnattr_t attributes;
};

pid_t spawn(const std::vector<std::string>& commandLine, int input, int output, int errors) {
    FileActions streams;
    const auto connect = [&](int from, int to) { ::posix_spawn_file_actions_adddup2(&streams.actions, from, to); };
    connect(input, STDIN_FILENO);
    connect(output, STDOUT_FILENO);
    connect(errors, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& argument : commandLine) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    Attributes fresh;
    pid_t child = -1;
    const int failure =
        ::posix_spawnp(&child, arguments[0], &streams.actions, &fresh.attributes, arguments.data(), environ);
    if (failure != 0) throw posixError(failure, startAction, commandLine.front());
    return child;
}

std::string description(int status) {
    if (WIFEXITED(status)) return "ended with status " + std::to_string(WEXITSTATUS(status));
    const char* name = ::sigabbrev_np(WTERMSIG(status));
    return std::string("was ended by signal ") + (name ? "SIG" + std::string(name) : std::to_string(WTERMSIG(status)));
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& commandLine, int errorDescriptor) try {
    Pipe toChild = makePipe();
    Pipe fromChild = makePipe();
    neverBlock(toChild.writing);
    neverBlock(fromChild.reading);
    child = spawn(commandLine, toChild.reading.get(), fromChild.writing.get(), errorDescriptor);
    input = std::move(toChild.writing);
    output = std::move(fromChild.reading);
    // The C library's own declaration cannot be used from C++ in Debian 12.
    completion = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    if (!completion) {
        const int failure = errno;
        endAtOnce();
        throw posixError(failure, startAction, commandLine.front());
    }
} catch (const std::system_error& error) {
    throw posixError(error.code().value(), startAction, commandLine.front());
}

ChildProcess::~ChildProcess() {
    input = Descriptor();
    output = Descriptor();
    pollfd ended{.fd = completion.get(), .events = POLLIN, .revents = 0};
    if (!known) uninterrupted([&] { return ::poll(&ended, 1, millisecondsToEnd); });
    if (!outcome()) endAtOnce();
}

std::optional<std::string> ChildProcess::outcome() {
    int status = 0;
    if (!known && uninterrupted([&] { return ::waitpid(child, &status, WNOHANG); }) == child)
        known = description(status);
    return known;
}

void ChildProcess::endAtOnce() const {
    ::kill(child, SIGKILL);
    uninterrupted([&] { return ::waitpid(child, nullptr, 0); });
}
