#include "platform/linux/DescriptorOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>

#include "platform/linux/PipeSize.h"

namespace {

constexpr std::chrono::milliseconds patience{5000};

mode_t typeOf(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

// Another opening of the same pipe, so that what others do with the descriptor they share stays as it is.
Descriptor openWithoutWaiting(int pipe) {
    const std::string path = "/proc/self/fd/" + std::to_string(pipe);
    return Descriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

} // namespace

DescriptorOutput::DescriptorOutput(int openDescriptor, int inputDescriptor)
    : descriptor(openDescriptor), input(inputDescriptor) {
    const mode_t type = typeOf(descriptor);
    isSocket = type == S_IFSOCK;
    if (type != S_IFIFO) return;
    enlargePipe(descriptor);
    ownPipe = openWithoutWaiting(descriptor);
    if (ownPipe) descriptor = ownPipe.get();
}

void DescriptorOutput::write(std::string_view bytes) {
    while (!bytes.empty() && !isClosed) {
        const ssize_t written = writeSome(bytes);
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            isClosed = !waitForRoom();
        } else if (errno != EINTR) {
            // After a lost piece nothing more may follow: the reader would take the rest for a line of its own.
            isClosed = true;
        }
    }
}

ssize_t DescriptorOutput::writeSome(std::string_view bytes) const {
    if (isSocket) return ::send(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return ::write(descriptor, bytes.data(), bytes.size());
}

// A client that has closed the input and reads no more may itself be waiting, for this process to end.
bool DescriptorOutput::waitForRoom() const {
    pollfd ends[] = {{.fd = descriptor, .events = POLLOUT, .revents = 0},
                     {.fd = input, .events = POLLRDHUP, .revents = 0}};
    ::poll(ends, 2, -1);
    if (ends[0].revents != 0 || ends[1].revents == 0) return true;
    return ::poll(ends, 1, static_cast<int>(patience.count())) != 0;
}
