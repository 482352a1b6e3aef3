#include "platform/linux/PipeSize.h"

#include <fcntl.h>

#include <array>
#include <charconv>

#include "platform/linux/Descriptor.h"

namespace {

int largestPipeSize() {
    const Descriptor setting(::open("/proc/sys/fs/pipe-max-size", O_RDONLY | O_CLOEXEC));
    std::array<char, 16> digits{};
    const ssize_t count = setting ? ::read(setting.get(), digits.data(), digits.size()) : 0;
    int size = 0;
    if (count > 0) std::from_chars(digits.data(), digits.data() + count, size);
    return size;
}

} // namespace

void enlargePipe(int descriptor) {
    if (::fcntl(descriptor, F_GETPIPE_SZ) < 0) return;
    static const int size = largestPipeSize();
    if (size > 0) ::fcntl(descriptor, F_SETPIPE_SZ, size);
}
