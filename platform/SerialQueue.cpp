#include "platform/SerialQueue.h"

#include <pthread.h>

#include <cassert>
#include <new>
#include <utility>

SerialQueue::SerialQueue(std::string queueLabel, std::function<void()> threadPreparation)
    : label(std::move(queueLabel)), prepareThread(std::move(threadPreparation)), thread([this] { runThread(); }) {}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(mutex);
        isEnding = true;
        threadWakeUp.notify_one();
    }
    thread.join();
}

void SerialQueue::sync(const std::function<void()>& task) {
    assert(!isCurrent());
    {
        std::unique_lock lock(mutex);
        if (isBusy || !line.empty()) {
            Waiter waiter;
            line.emplace_back().waiter = &waiter;
            waiter.turn.wait(lock, [&] { return waiter.hasTurn; });
        }
        beginTask();
    }
    struct TaskEnd {
        SerialQueue& queue;
        ~TaskEnd() {
            const std::lock_guard lock(queue.mutex);
            queue.endTask();
        }
    } end{*this};
    task();
}

// The thread is woken when the lock is free, or it would only fall asleep again.
void SerialQueue::async(std::function<void()> task) {
    Line place = placeFor(std::move(task));
    bool isForThread = false;
    {
        const std::lock_guard lock(mutex);
        line.splice(line.end(), place);
        isForThread = hasTaskForThread();
    }
    if (isForThread) threadWakeUp.notify_one();
}

void SerialQueue::asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task) {
    Line place = placeFor(std::move(task));
    bool isFirst = false;
    {
        const std::lock_guard lock(mutex);
        const auto due = delayedTasks.emplace(std::chrono::steady_clock::now() + delay, std::move(place));
        isFirst = due == delayedTasks.begin() && currentThread != thread.get_id();
    }
    if (isFirst) threadWakeUp.notify_one();
}

bool SerialQueue::isCurrent() const {
    const std::lock_guard lock(mutex);
    return isBusy && currentThread == std::this_thread::get_id();
}

SerialQueue::Line SerialQueue::placeFor(std::function<void()> task) {
    Line place;
    place.emplace_back().task = std::move(task);
    return place;
}

void SerialQueue::runThread() {
    // The system keeps fifteen characters of a thread's name; the end of the label tells the queues apart.
    pthread_setname_np(pthread_self(), label.substr(label.size() - std::min<std::size_t>(label.size(), 15)).c_str());
    if (prepareThread) prepareThread();

    std::unique_lock lock(mutex);
    while (!isEnding) {
        enqueueDueTasks();
        if (!hasTaskForThread()) {
            waitForWork(lock);
            continue;
        }
        auto task = std::move(line.front().task);
        line.pop_front();
        beginTask();
        lock.unlock();
        runSubmitted(task);
        // What the task holds may itself use this queue when it goes away.
        task = nullptr;
        lock.lock();
        endTask();
    }
}

// Want of memory costs the task, not the process.
void SerialQueue::runSubmitted(const std::function<void()>& task) {
    try {
        task();
    } catch (const std::bad_alloc&) {
    }
}

void SerialQueue::waitForWork(std::unique_lock<std::mutex>& lock) {
    if (delayedTasks.empty()) {
        threadWakeUp.wait(lock);
        return;
    }
    // A copy, since the entry may go while the lock is open.
    const TimePoint earliest = delayedTasks.begin()->first;
    threadWakeUp.wait_until(lock, earliest);
}

void SerialQueue::enqueueDueTasks() {
    const auto firstLater = delayedTasks.upper_bound(std::chrono::steady_clock::now());
    for (auto due = delayedTasks.begin(); due != firstLater; ++due) line.splice(line.end(), due->second);
    delayedTasks.erase(delayedTasks.begin(), firstLater);
}

void SerialQueue::beginTask() {
    isBusy = true;
    currentThread = std::this_thread::get_id();
}

// The turn passes on: to a waiting caller directly, so that nobody can come in between, else to the queue's thread.
void SerialQueue::endTask() {
    isBusy = false;
    currentThread = {};
    if (line.empty()) return;
    if (Waiter* waiter = line.front().waiter) {
        line.pop_front();
        isBusy = true;
        waiter->hasTurn = true;
        waiter->turn.notify_one();
    } else {
        threadWakeUp.notify_one();
    }
}
