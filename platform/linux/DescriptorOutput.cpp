#include "platform/linux/DescriptorOutput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/PipeSize.h"

DescriptorOutput::DescriptorOutput(int openDescriptor) : descriptor(openDescriptor) {
    enlargePipe(descriptor);
}

void DescriptorOutput::write(std::string_view bytes) {
    while (!bytes.empty() && !isClosed) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd writable{.fd = descriptor, .events = POLLOUT, .revents = 0};
            ::poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            // After a lost piece nothing more may follow: the reader would take the rest for a line of its own.
            isClosed = true;
        }
    }
}
