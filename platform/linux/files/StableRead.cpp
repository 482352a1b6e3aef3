#include "platform/linux/files/StableRead.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <thread>

#include "platform/linux/Descriptor.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/StatAttributes.h"
#include "platform/linux/files/SystemCall.h"

namespace {

constexpr int attemptLimit = 5;

bool isReadable(const struct stat& status, std::uint64_t sizeLimit) {
    return S_ISREG(status.st_mode) && static_cast<std::uint64_t>(status.st_size) <= sizeLimit;
}

// Asked before anything is opened: opening a FIFO or a device can wake its other side, even without waiting.
struct stat statusOfPath(const std::string& path) {
    struct stat status {};
    checked(::stat(path.c_str(), &status));
    return status;
}

// The path may lead elsewhere by now, so the opening must neither wait for a FIFO nor adopt a terminal.
Descriptor openForReading(const std::string& path) {
    return Descriptor(checked(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)));
}

// A writer needs a moment to come to an end: 2, 4, 8, 16 milliseconds.
void pauseBeforeAttempt(int attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1 << (attempt - 1)));
}

struct stat statusOfDescriptor(int descriptor) {
    struct stat status {};
    checked(::fstat(descriptor, &status));
    return status;
}

// By way of a piece that stays in the processor's cache, which costs less than to fill a string with zeros first. A
// short answer with which the expected size is reached is the end, and most files take one call. Files that grow, or
// that the kernel makes up and gives no size, are read to their end or just past the limit.
std::string bytes(int descriptor, std::size_t expectedSize, std::uint64_t sizeLimit) {
    std::array<char, 64 * 1024> piece;
    std::string data;
    data.reserve(expectedSize);
    while (data.size() <= sizeLimit) {
        const ssize_t count = ::pread(descriptor, piece.data(), piece.size(), static_cast<off_t>(data.size()));
        if (count < 0 && errno == EINTR) continue;
        data.append(piece.data(), static_cast<std::size_t>(checked(count)));
        const bool isShort = static_cast<std::size_t>(count) < piece.size();
        if (count == 0 || (isShort && data.size() == expectedSize)) break;
    }
    return data;
}

bool isSame(const timespec& left, const timespec& right) {
    return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

bool heldStill(const struct stat& before, const struct stat& after, std::size_t bytesRead) {
    return before.st_size == after.st_size && static_cast<std::size_t>(before.st_size) == bytesRead &&
           isSame(before.st_mtim, after.st_mtim) && isSame(before.st_ctim, after.st_ctim);
}

FileContents stableContents(const std::string& path, std::uint64_t sizeLimit) {
    const struct stat found = statusOfPath(path);
    if (!isReadable(found, sizeLimit)) return {.attributes = fileAttributes(found)};
    const Descriptor file = openForReading(path);
    struct stat before = statusOfDescriptor(file.get());
    for (int attempt = 1; isReadable(before, sizeLimit); ++attempt) {
        std::string data = bytes(file.get(), static_cast<std::size_t>(before.st_size), sizeLimit);
        const struct stat after = statusOfDescriptor(file.get());
        if (attempt == attemptLimit && data.size() > sizeLimit) {
            before.st_size = static_cast<off_t>(data.size()); // it says less than it holds, and holds too much
            break;
        }
        if (attempt == attemptLimit || heldStill(before, after, data.size()))
            return {.data = std::move(data), .attributes = fileAttributes(before, file.get())};
        before = after;
        pauseBeforeAttempt(attempt + 1);
    }
    return {.attributes = fileAttributes(before, file.get())};
}

} // namespace

FileContents contentsOfFile(const std::string& path, std::uint64_t sizeLimit) {
    constexpr std::string_view action = "read";
    try {
        return stableContents(cPath(path, action), sizeLimit);
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), action, path);
    }
}
