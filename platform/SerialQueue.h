#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "platform/Queue.h"

// A queue on the standard library's threads. Its one thread starts with the first asynchronous task; a synchronous task
// always runs on the thread that submits it, which waits for its turn if others are before it.
// On destruction the running task is waited for and what has not begun is dropped.
class SerialQueue final : public Queue {
public:
    // The preparation runs first on the queue's own thread, for instance to lower its priority.
    explicit SerialQueue(std::string queueLabel, std::function<void()> threadPreparation = {});
    ~SerialQueue() override;

    void sync(const std::function<void()>& task) override;
    void async(std::function<void()> task) override;
    void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task) override;
    bool isCurrent() const override;

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    // A caller of sync() that waits for the tasks before its own.
    struct Waiter {
        std::condition_variable turn{};
        bool hasTurn = false;
    };

    // One place in the line: an asynchronous task, or a waiting caller who will run a task of its own.
    struct Place {
        std::function<void()> task{};
        Waiter* waiter = nullptr;
    };

    void startThreadIfNeeded();
    void runThread();
    static void runSubmitted(const std::function<void()>& task);
    void waitForWork(std::unique_lock<std::mutex>& lock);
    void enqueueDueTasks();
    bool hasTaskForThread() const { return !isBusy && !line.empty() && line.front().waiter == nullptr; }
    void beginTask();
    void endTask();

    const std::string label;
    const std::function<void()> prepareThread;
    mutable std::mutex mutex;
    std::condition_variable threadWakeUp;
    std::deque<Place> line;
    std::multimap<TimePoint, std::function<void()>> delayedTasks;
    bool isBusy = false;
    bool isEnding = false;
    std::thread::id currentThread;
    std::thread thread;
};
