#include "platform/linux/watch/WatchLoop.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

namespace {

constexpr std::chrono::milliseconds startBudget{45}; // whoever opens a tree waits for 50 at most
constexpr std::chrono::milliseconds sliceBudget{5};
constexpr std::chrono::seconds lingering{1};

} // namespace

WatchLoop::WatchLoop(std::unique_ptr<LinuxWatchSystem> watchSystem, std::size_t queuedByteLimit,
                     DeliveryPolicy deliveryPolicy)
    : system(std::move(watchSystem)),
      policy(deliveryPolicy),
      watcher(std::make_unique<TreeWatcher>(*system, policy)),
      byteLimit(queuedByteLimit) {}

bool WatchLoop::start(const std::vector<std::string>& rootPaths, Queue& streamQueue,
                      std::function<void(EventStreamBatch)> deliverBatch) {
    try {
        startReader();
    } catch (const std::system_error&) {
        if (system->canWatch()) return false; // no thread, or no descriptor
    }
    deliver = std::move(deliverBatch);
    {
        const std::lock_guard lock(queueMutex);
        queue = &streamQueue;
    }
    roots = rootPaths;
    watcher->setRoots(roots);
    watcher->crawl(startBudget);
    runSoon();
    return true;
}

void WatchLoop::stop() {
    if (!isRunning()) return;
    ++generation;
    deliver = nullptr;
    isRunSubmitted = false;
    timers.clear();
    Queue* const formerQueue = queue;
    {
        const std::lock_guard lock(queueMutex);
        queue = nullptr;
    }
    formerQueue->asyncAfter(lingering, [weakSelf = weak_from_this(), formerGeneration = generation] {
        const auto self = weakSelf.lock();
        if (!self || self->generation != formerGeneration || self->isRunning()) return;
        self->watcher->setRoots({});
    });
}

void WatchLoop::setInterest(const EventStreamInterest& newInterest) {
    interest = newInterest;
    watcher->setInterest(interest);
    if (isRunning()) runSoon();
}

// Without an instance of inotify it looks out for mounts alone.
void WatchLoop::startReader() {
    if (reader) return;
    const auto mountsChanged = [this] {
        haveMountsChanged = true;
        wakeUp();
    };
    reader = std::make_unique<InotifyReader>(
        system->inotifyDescriptor(), byteLimit, [this] { wakeUp(); }, mountsChanged);
}

void WatchLoop::wakeUp() {
    const std::lock_guard lock(queueMutex);
    if (!queue) return; // a later start looks by itself
    queue->async([weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock(); self && self->isRunning()) self->run();
    });
}

void WatchLoop::runSoon() {
    if (isRunSubmitted) return;
    queue->async([weakSelf = weak_from_this(), submittedGeneration = generation] {
        const auto self = weakSelf.lock();
        if (!self || self->generation != submittedGeneration) return;
        self->isRunSubmitted = false;
        self->run();
    });
    isRunSubmitted = true;
}

void WatchLoop::run() {
    EventStreamBatch batch;
    try {
        batch = mustStartAnew ? startAnew() : goOn();
        armTimer();
    } catch (const std::bad_alloc&) {
        // What is known may be half changed.
        mustStartAnew = true;
        batch.clear();
        tryAgainLater();
    }
    // Last, and by a copy: the receiver may stop the stream, and with it do away with the function.
    const auto deliverBatch = deliver;
    if (!batch.empty()) deliverBatch(std::move(batch));
}

EventStreamBatch WatchLoop::goOn() {
    if (haveMountsChanged.exchange(false)) watcher->handleMountChange();
    const bool hasAll = handleBlocks();
    watcher->crawl(sliceBudget);
    // A look at the disk is best taken when all events so far are known.
    EventStreamBatch batch;
    if (hasAll || watcher->isOverdue()) batch = watcher->advance();
    if (!hasAll || watcher->hasWork()) runSoon();
    return batch;
}

// Forgets everything, and says so.
EventStreamBatch WatchLoop::startAnew() {
    watcher = std::make_unique<TreeWatcher>(*system, policy);
    watcher->setInterest(interest);
    watcher->setRoots(roots);
    EventStreamBatch batch;
    for (const std::string& path : roots) batch.push_back({.path = path, .flags = EventStreamFlag::rootChanged});
    for (const std::string& path : interest.directoryPaths) batch.push_back({.path = path});
    mustStartAnew = false;
    runSoon();
    return batch;
}

void WatchLoop::tryAgainLater() {
    try {
        queue->asyncAfter(lingering, [weakSelf = weak_from_this(), submittedGeneration = generation] {
            const auto self = weakSelf.lock();
            if (self && self->generation == submittedGeneration) self->run();
        });
    } catch (const std::bad_alloc&) {
        // The next event will do.
    }
}

// False when there are more.
bool WatchLoop::handleBlocks() {
    const WatchTime end = system->now() + sliceBudget;
    bool hasReadRest = false;
    while (reader) {
        const auto block = reader->takeBlock();
        if (!block) {
            // What has happened since the last read may be what makes things not quiet.
            if (hasReadRest || !isAdvanceDue()) return true;
            reader->readNow();
            hasReadRest = true;
            continue;
        }
        watcher->handleBlock(block->bytes, block->readAt);
        if (system->now() >= end) return false;
    }
    return true;
}

bool WatchLoop::isAdvanceDue() const {
    const auto deadline = watcher->nextDeadline();
    return deadline && system->now() >= *deadline;
}

void WatchLoop::armTimer() {
    const auto deadline = watcher->nextDeadline();
    if (!deadline || (!timers.empty() && *timers.begin() <= *deadline)) return;
    const auto timer = timers.insert(*deadline);
    const auto delay = std::max(*deadline - system->now(), WatchTime::duration::zero());
    try {
        queue->asyncAfter(delay, [weakSelf = weak_from_this(), submittedGeneration = generation, timer] {
            const auto self = weakSelf.lock();
            if (!self || self->generation != submittedGeneration) return;
            self->timers.erase(timer);
            self->run();
        });
    } catch (const std::bad_alloc&) {
        timers.erase(timer); // or no later one would be armed
        throw;
    }
}
