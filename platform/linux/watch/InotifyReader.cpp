#include "platform/linux/watch/InotifyReader.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <new>
#include <system_error>
#include <utility>

#include "platform/linux/watch/KernelRecord.h"

namespace {

constexpr std::size_t blockSize = 64 * 1024;

// Events that follow one another within this time are a burst, whose first reads do not wait for more: a single change
// is told in two or three events, and how long things are quiet counts from the last.
constexpr std::chrono::milliseconds burstPause{5};
constexpr int promptReads = 3;

// Without it the thread could not be ended.
int newEventDescriptor() {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC);
    if (descriptor < 0) throw std::system_error(errno, std::generic_category());
    return descriptor;
}

} // namespace

InotifyReader::InotifyReader(int inotifyDescriptor, std::size_t byteLimit, std::function<void()> onBlocks,
                             std::function<void()> onMounts)
    : inotify(inotifyDescriptor),
      limit(byteLimit),
      blocksArrived(std::move(onBlocks)),
      mountsChanged(std::move(onMounts)),
      ending(newEventDescriptor()),
      mountTable(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)),
      thread([this] { run(); }) {}

InotifyReader::~InotifyReader() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(ending.get(), &one, sizeof one);
    thread.join();
}

std::optional<KernelBlock> InotifyReader::takeBlock() {
    const std::lock_guard lock(mutex);
    if (std::exchange(hasLostBlocks, false)) return KernelBlock{overflowBlock(), WatchTime::clock::now()};
    if (blocks.empty()) return std::nullopt;
    KernelBlock block = std::move(blocks.front());
    blocks.pop_front();
    keptBytes -= block.bytes.size();
    return block;
}

void InotifyReader::run() {
    ::pthread_setname_np(::pthread_self(), "inotify-reader");
    std::array<pollfd, 3> waiting{{{ending.get(), POLLIN, 0}, {inotify, POLLIN, 0}, {mountTable.get(), POLLPRI, 0}}};
    while (true) {
        if (::poll(waiting.data(), waiting.size(), -1) < 0) continue;
        if (waiting[0].revents) return;
        if (waiting[1].revents) readAndWait(waiting[0]);
        if (waiting[2].revents) call(mountsChanged);
    }
}

void InotifyReader::readNow() {
    readBlock();
}

InotifyReader::Read InotifyReader::readBlock() {
    alignas(8) std::array<char, blockSize> buffer;
    const std::lock_guard lock(reading);
    const ssize_t size = ::read(inotify, buffer.data(), buffer.size());
    if (size <= 0) return {};
    const bool isFirst = keep({buffer.data(), static_cast<std::size_t>(size)});
    return {static_cast<std::size_t>(size), isFirst};
}

// Events come in bursts, and being woken for each of them costs more than all the rest. So short a time fills no queue
// of the kernel, and nothing is told before things are quiet anyway.
void InotifyReader::readAndWait(pollfd endingDescriptor) {
    constexpr int milliseconds = 1;
    const Read read = readBlock();
    if (read.isFirst || mustCallAgain) call(blocksArrived);
    if (!isInBurst() || read.size > blockSize / 2) return;
    ::poll(&endingDescriptor, 1, milliseconds);
}

bool InotifyReader::isInBurst() {
    const WatchTime now = WatchTime::clock::now();
    readsInBurst = now - std::exchange(lastRead, now) < burstPause ? readsInBurst + 1 : 1;
    return readsInBurst > promptReads;
}

// Returns whether there was nothing to take before.
bool InotifyReader::keep(std::string_view block) {
    const std::lock_guard lock(mutex);
    const bool isFirst = blocks.empty() && !hasLostBlocks;
    try {
        append(block, WatchTime::clock::now());
    } catch (const std::bad_alloc&) {
        loseAll();
    }
    return isFirst;
}

void InotifyReader::call(const std::function<void()>& function) {
    try {
        mustCallAgain = false;
        function();
    } catch (const std::bad_alloc&) {
        mustCallAgain = true;
    }
}

void InotifyReader::append(std::string_view block, WatchTime readAt) {
    if (keptBytes + block.size() > limit) {
        loseAll();
    } else if (!blocks.empty() && blocks.back().bytes.size() + block.size() <= blockSize) {
        blocks.back().bytes += block;
        blocks.back().readAt = readAt;
        keptBytes += block.size();
    } else {
        blocks.push_back({std::string(block), readAt});
        keptBytes += block.size();
    }
}

void InotifyReader::loseAll() {
    blocks.clear();
    keptBytes = 0;
    hasLostBlocks = true;
}
