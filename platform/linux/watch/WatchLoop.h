#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/EventStream.h"
#include "platform/linux/watch/InotifyReader.h"
#include "platform/linux/watch/LinuxWatchSystem.h"
#include "platform/linux/watch/TreeWatcher.h"

// Brings the watcher, the reader and a queue together: on the queue, the watcher is given what was read, in short tasks
// that let others in between, and what it has to tell is delivered. Everything but the reader's wake-up calls happens
// on the queue.
class WatchLoop : public std::enable_shared_from_this<WatchLoop> {
public:
    WatchLoop(std::unique_ptr<LinuxWatchSystem> watchSystem, std::size_t queuedByteLimit,
              DeliveryPolicy deliveryPolicy);

    bool start(const std::vector<std::string>& rootPaths, Queue& queue, std::function<void(EventStreamBatch)> deliver);
    // What is watched stays watched for a moment, since the next stream is likely to want it.
    void stop();
    bool isRunning() const { return static_cast<bool>(deliver); }
    void setInterest(const EventStreamInterest& newInterest);

    TreeWatcher::Statistics statistics() const { return watcher->statistics(); }

private:
    void startReader();
    void wakeUp(); // on the reader's thread
    void run();
    EventStreamBatch goOn();
    EventStreamBatch startAnew();
    void tryAgainLater();
    void runSoon();
    bool handleBlocks();
    bool isAdvanceDue() const;
    void armTimer();

    std::unique_ptr<LinuxWatchSystem> system;
    const DeliveryPolicy policy;
    std::unique_ptr<TreeWatcher> watcher;
    std::vector<std::string> roots{};
    EventStreamInterest interest{};
    bool mustStartAnew = false;
    const std::size_t byteLimit;
    std::function<void(EventStreamBatch)> deliver{}; // absent while stopped
    std::uint64_t generation = 0;                    // of the stream; what was submitted for a former one does nothing
    bool isRunSubmitted = false;
    std::multiset<WatchTime> timers{};

    std::mutex queueMutex{};
    Queue* queue{}; // absent while stopped, so that the reader leaves it alone
    std::atomic<bool> haveMountsChanged = false;

    std::unique_ptr<InotifyReader> reader{}; // last, to end before the rest goes
};
