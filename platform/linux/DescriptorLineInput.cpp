#include "platform/linux/DescriptorLineInput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr std::size_t smallestCapacity = 64 * 1024;
// After a larger line its memory goes back to the system.
constexpr std::size_t largestKeptCapacity = 1024 * 1024;

// Zero at the end of input; a descriptor that cannot be read has ended.
std::size_t readSome(int descriptor, char* to, std::size_t count) {
    for (;;) {
        const ssize_t received = ::read(descriptor, to, count);
        if (received >= 0) return static_cast<std::size_t>(received);
        if (errno == EAGAIN) {
            pollfd readable{.fd = descriptor, .events = POLLIN, .revents = 0};
            ::poll(&readable, 1, -1);
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

} // namespace

DescriptorLineInput::DescriptorLineInput(int openDescriptor) : descriptor(openDescriptor) {
    resize(smallestCapacity);
}

std::optional<std::string_view> DescriptorLineInput::nextLine() {
    releaseLargeBuffer();
    std::size_t searched = 0;
    for (;;) {
        const std::string_view unread(bytes.get() + begin, end - begin);
        if (const std::size_t lineFeed = unread.find('\n', searched); lineFeed != std::string_view::npos) {
            begin += lineFeed + 1;
            return unread.substr(0, lineFeed);
        }
        searched = unread.size();
        if (!readMore()) break;
    }
    if (begin == end) return std::nullopt;
    return std::string_view(bytes.get() + std::exchange(begin, end), end - begin);
}

// To be called when the line handed out last is no longer looked at.
void DescriptorLineInput::releaseLargeBuffer() {
    if (capacity <= largestKeptCapacity || end - begin > smallestCapacity / 2) return;
    moveToFront();
    try {
        resize(smallestCapacity);
    } catch (const std::bad_alloc&) {
        // Then the large one is kept for longer.
    }
}

bool DescriptorLineInput::readMore() {
    if (begin == end || begin > capacity / 2) moveToFront();
    if (capacity < end + padding + smallestCapacity / 2) makeRoom();
    const std::size_t received = readSome(descriptor, bytes.get() + end, capacity - padding - end);
    end += received;
    return received > 0;
}

void DescriptorLineInput::makeRoom() {
    try {
        resize(capacity * 2);
    } catch (const std::bad_alloc&) {
        passOverLine();
        throw;
    }
}

void DescriptorLineInput::moveToFront() {
    if (begin > 0 && begin < end) std::memmove(bytes.get(), bytes.get() + begin, end - begin);
    end -= begin;
    begin = 0;
}

void DescriptorLineInput::resize(std::size_t newCapacity) {
    // realloc moves a large block by its pages, without a copy.
    char* resized = static_cast<char*>(std::realloc(bytes.get(), newCapacity));
    if (resized == nullptr) throw std::bad_alloc();
    static_cast<void>(bytes.release());
    bytes.reset(resized);
    capacity = newCapacity;
}

void DescriptorLineInput::passOverLine() {
    for (;;) {
        begin = 0;
        end = readSome(descriptor, bytes.get(), capacity - padding);
        if (end == 0) return;
        const std::size_t lineFeed = std::string_view(bytes.get(), end).find('\n');
        if (lineFeed == std::string_view::npos) continue;
        begin = lineFeed + 1;
        return;
    }
}
