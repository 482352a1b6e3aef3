#include "platform/linux/watch/InotifyReader.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <new>
#include <utility>

#include "platform/linux/watch/KernelRecord.h"

namespace {

constexpr std::size_t blockSize = 64 * 1024;

} // namespace

InotifyReader::InotifyReader(int inotifyDescriptor, std::size_t byteLimit, std::function<void()> onBlocks,
                             std::function<void()> onMounts)
    : inotify(inotifyDescriptor),
      limit(byteLimit),
      blocksArrived(std::move(onBlocks)),
      mountsChanged(std::move(onMounts)),
      ending(::eventfd(0, EFD_CLOEXEC)),
      mountTable(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)),
      thread([this] { run(); }) {}

InotifyReader::~InotifyReader() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(ending.get(), &one, sizeof one);
    thread.join();
}

std::optional<std::string> InotifyReader::takeBlock() {
    const std::lock_guard lock(mutex);
    if (std::exchange(hasLostBlocks, false)) return overflowBlock();
    if (blocks.empty()) return std::nullopt;
    std::string block = std::move(blocks.front());
    blocks.pop_front();
    keptBytes -= block.size();
    return block;
}

void InotifyReader::run() {
    ::pthread_setname_np(::pthread_self(), "inotify-reader");
    std::array<pollfd, 3> waiting{{{ending.get(), POLLIN, 0}, {inotify, POLLIN, 0}, {mountTable.get(), POLLPRI, 0}}};
    while (true) {
        if (::poll(waiting.data(), waiting.size(), -1) < 0) continue;
        if (waiting[0].revents) return;
        if (waiting[1].revents && readBlock() < blockSize / 2) waitForMore(waiting[0]);
        if (waiting[2].revents) call(mountsChanged);
    }
}

std::size_t InotifyReader::readBlock() {
    alignas(8) std::array<char, blockSize> buffer;
    const ssize_t size = ::read(inotify, buffer.data(), buffer.size());
    if (size <= 0) return 0;
    keep({buffer.data(), static_cast<std::size_t>(size)});
    return static_cast<std::size_t>(size);
}

// Events come in bursts, and being woken for each of them costs more than all the rest. So short a time fills no queue
// of the kernel, and nothing is told before things are quiet anyway.
void InotifyReader::waitForMore(pollfd endingDescriptor) {
    constexpr int milliseconds = 1;
    ::poll(&endingDescriptor, 1, milliseconds);
}

void InotifyReader::keep(std::string_view block) {
    bool isFirst = false;
    try {
        const std::lock_guard lock(mutex);
        isFirst = (blocks.empty() && !hasLostBlocks) || mustCallAgain;
        append(block);
    } catch (const std::bad_alloc&) {
        const std::lock_guard lock(mutex);
        loseAll();
    }
    if (isFirst) call(blocksArrived);
}

void InotifyReader::call(const std::function<void()>& function) {
    try {
        mustCallAgain = false;
        function();
    } catch (const std::bad_alloc&) {
        mustCallAgain = true;
    }
}

void InotifyReader::append(std::string_view block) {
    if (keptBytes + block.size() > limit) {
        loseAll();
    } else if (!blocks.empty() && blocks.back().size() + block.size() <= blockSize) {
        blocks.back() += block;
        keptBytes += block.size();
    } else {
        blocks.emplace_back(block);
        keptBytes += block.size();
    }
}

void InotifyReader::loseAll() {
    blocks.clear();
    keptBytes = 0;
    hasLostBlocks = true;
}
