#include "platform/linux/files/FileData.h"

#include <unistd.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "platform/linux/files/SystemCall.h"

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

template <class Call>
ssize_t uninterrupted(Call call) {
    ssize_t result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

void writeAll(int destination, const char* data, std::size_t size, off_t offset) {
    while (size > 0) {
        const ssize_t count = checked(uninterrupted([&] { return ::pwrite(destination, data, size, offset); }));
        data += count;
        size -= static_cast<std::size_t>(count);
        offset += count;
    }
}

// Both ranges return how far they came: `end`, or less where the source ends earlier.
off_t copyRangeByReading(int source, int destination, off_t offset, off_t end) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
    while (offset < end) {
        const std::size_t wanted = std::min(bufferSize, static_cast<std::size_t>(end - offset));
        const ssize_t count = checked(uninterrupted([&] { return ::pread(source, buffer.get(), wanted, offset); }));
        if (count == 0) break;
        writeAll(destination, buffer.get(), static_cast<std::size_t>(count), offset);
        offset += count;
    }
    return offset;
}

void copyToEnd(int source, int destination, off_t offset) {
    copyRangeByReading(source, destination, offset, std::numeric_limits<off_t>::max());
}

bool isForReading(int errorNumber) {
    return errorNumber == EXDEV || errorNumber == EINVAL || errorNumber == EOPNOTSUPP || errorNumber == ENOSYS;
}

off_t copyRange(int source, int destination, off_t offset, off_t end) {
    while (offset < end) {
        off_t from = offset;
        off_t to = offset;
        const auto wanted = static_cast<std::size_t>(end - offset);
        const ssize_t count =
            uninterrupted([&] { return ::copy_file_range(source, &from, destination, &to, wanted, 0); });
        if (count < 0 && !isForReading(errno)) checked(count);
        // Some kernels answer 0 before the end where they ought to refuse, so reading has the last word.
        if (count <= 0) return copyRangeByReading(source, destination, offset, end);
        offset += count;
    }
    return offset;
}

} // namespace

void copyFileData(int source, int destination, off_t size) {
    // Files that the system makes up while they are read, as in /proc, say that they are empty.
    if (size == 0) return copyToEnd(source, destination, 0);
    off_t written = 0;
    for (off_t offset = 0; offset < size;) {
        const off_t begin = ::lseek(source, offset, SEEK_DATA);
        if (begin < 0 && errno == ENXIO) break;
        if (begin < 0) return copyToEnd(source, destination, offset);
        const off_t end = std::min(checked(::lseek(source, begin, SEEK_HOLE)), size);
        if (begin >= end) break;
        written = copyRange(source, destination, begin, end);
        if (written < end) return;
        offset = end;
    }
    if (written < size) checked(::ftruncate(destination, size));
}
