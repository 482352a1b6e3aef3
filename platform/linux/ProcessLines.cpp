#include "platform/linux/ProcessLines.h"

#include <poll.h>
#include <sys/epoll.h>

#include <cerrno>
#include <csignal>
#include <ctime>

#include "platform/PlatformError.h"
#include "platform/linux/files/SystemCall.h"

namespace {

constexpr std::size_t pieceSize = 256 * 1024;
constexpr std::size_t keptCapacity = 1024 * 1024;

// Writing to a program that has ended raises a signal that kills whoever has not provided for it. A library cannot ask
// for that, nor change it for the whole process; so the signal is held back and taken away.
class WithoutBrokenPipeSignal {
public:
    WithoutBrokenPipeSignal() {
        ::sigemptyset(&broken);
        ::sigaddset(&broken, SIGPIPE);
        sigset_t pending;
        ::sigpending(&pending);
        wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &broken, &before);
    }
    ~WithoutBrokenPipeSignal() {
        const int keptError = errno;
        const timespec noTime{};
        if (!wasPending) uninterrupted([&] { return ::sigtimedwait(&broken, nullptr, &noTime); });
        ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
        errno = keptError;
    }
    WithoutBrokenPipeSignal(const WithoutBrokenPipeSignal&) = delete;
    WithoutBrokenPipeSignal& operator=(const WithoutBrokenPipeSignal&) = delete;

private:
    sigset_t broken{};
    sigset_t before{};
    bool wasPending = false;
};

Descriptor makeReadiness() {
    Descriptor made(::epoll_create1(EPOLL_CLOEXEC));
    if (!made) throw posixError(errno, "wait for another program");
    return made;
}

ssize_t writeQuietly(int descriptor, std::string_view bytes) {
    const WithoutBrokenPipeSignal quiet;
    return uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
}

} // namespace

ProcessLines::ProcessLines(const std::vector<std::string>& commandLine, int errorDescriptor)
    : process(commandLine, errorDescriptor), readiness(makeReadiness()) {
    follow(process.output, EPOLLIN);
}

bool ProcessLines::waitUntilReady(std::optional<std::chrono::milliseconds> longest) const {
    pollfd ready{.fd = descriptor(), .events = POLLIN, .revents = 0};
    return ::poll(&ready, 1, longest ? static_cast<int>(longest->count()) : -1) > 0;
}

void ProcessLines::send(std::string_view line) {
    if (!process.input) return;
    unsent.append(line).push_back('\n');
    flush();
}

void ProcessLines::exchange() {
    flush();
    if (process.output) {
        readPiece();
    } else {
        notice();
    }
}

std::optional<std::string> ProcessLines::nextLine() {
    const std::size_t lineFeed = received.find('\n', searched);
    if (lineFeed == std::string::npos) {
        received.erase(0, taken);
        searched = received.size();
        taken = 0;
        if (received.empty() && received.capacity() > keptCapacity) received.shrink_to_fit();
        return std::nullopt;
    }
    std::string line = received.substr(taken, lineFeed - taken);
    taken = searched = lineFeed + 1;
    return line;
}

void ProcessLines::closeInput() {
    leave(process.input);
    unsent.clear();
    sentCount = 0;
}

void ProcessLines::flush() {
    while (process.input && sentCount < unsent.size()) {
        const ssize_t written = writeQuietly(process.input.get(), std::string_view(unsent).substr(sentCount));
        if (written < 0 && errno != EAGAIN) return closeInput();
        if (written < 0) break;
        sentCount += static_cast<std::size_t>(written);
    }
    const bool isDone = sentCount == unsent.size();
    if (isDone || sentCount > keptCapacity) {
        unsent.erase(0, sentCount);
        sentCount = 0;
    }
    if (!process.input || waitsForRoom == !isDone) return;
    waitsForRoom = !isDone;
    if (waitsForRoom) {
        follow(process.input, EPOLLOUT);
    } else {
        checked(::epoll_ctl(readiness.get(), EPOLL_CTL_DEL, process.input.get(), nullptr));
    }
}

void ProcessLines::readPiece() {
    const std::size_t before = received.size();
    received.resize(before + pieceSize);
    const ssize_t count =
        uninterrupted([&] { return ::read(process.output.get(), received.data() + before, pieceSize); });
    received.resize(before + static_cast<std::size_t>(count > 0 ? count : 0));
    if (count > 0 || (count < 0 && errno == EAGAIN)) return;
    // The output ends a little before the process does.
    leave(process.output);
    closeInput();
    if (process.completion) follow(process.completion, EPOLLIN);
    notice();
}

void ProcessLines::notice() {
    if (end) return;
    end = process.outcome();
    if (end) leave(process.completion);
}

void ProcessLines::follow(const Descriptor& source, unsigned events) {
    epoll_event event{.events = events, .data = {}};
    checked(::epoll_ctl(readiness.get(), EPOLL_CTL_ADD, source.get(), &event));
}

// Closing takes the descriptor from the set as well, because nobody else has it open.
void ProcessLines::leave(Descriptor& source) {
    source = Descriptor();
}
