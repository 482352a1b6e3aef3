#pragma once

#include <poll.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/linux/Descriptor.h"
#include "platform/linux/watch/DeliveryWindow.h"

// What was read at one time, or soon after one another; the time is that of the last piece.
struct KernelBlock {
    std::string bytes{};
    WatchTime readAt{};
};

// A thread that does nothing but read what the kernel tells, since the kernel keeps little of what nobody reads and
// then drops the rest. It also looks out for changes of the table of mounts.
class InotifyReader {
public:
    static constexpr std::size_t usualLimit = 64 * 1024 * 1024;

    // Keeps at most so many bytes that nobody takes; beyond that they are replaced by the news that some were lost.
    // The functions are called on the reader's thread: blocksArrived when there is something to take after there was
    // nothing, mountsChanged when it is time to look at the mounts again.
    InotifyReader(int inotifyDescriptor, std::size_t byteLimit, std::function<void()> blocksArrived,
                  std::function<void()> mountsChanged);
    ~InotifyReader();
    InotifyReader(const InotifyReader&) = delete;

    // Takes over from the kernel what its own thread, on a busy machine, may have no time to read. May be called on any
    // thread; blocksArrived is not called for it.
    void readNow();

    // The oldest block that has been read; absent when there is none. May be called on any thread.
    std::optional<KernelBlock> takeBlock();

private:
    void run();
    struct Read {
        std::size_t size = 0;
        bool isFirst = false; // after there was nothing to take
    };
    Read readBlock();
    void readAndWait(pollfd endingDescriptor);
    bool isInBurst();
    bool keep(std::string_view block);
    void append(std::string_view block, WatchTime readAt);
    void loseAll();
    void call(const std::function<void()>& function);

    const int inotify;
    const std::size_t limit;
    const std::function<void()> blocksArrived;
    const std::function<void()> mountsChanged;
    Descriptor ending;
    Descriptor mountTable;
    std::mutex reading{}; // held until what was read is kept, so that nothing overtakes it
    std::mutex mutex{};
    std::deque<KernelBlock> blocks{};
    std::size_t keptBytes = 0;
    bool hasLostBlocks = false;
    // Of the reader's thread alone.
    bool mustCallAgain = false; // for want of memory
    WatchTime lastRead{};
    int readsInBurst = 0;
    std::thread thread;
};
