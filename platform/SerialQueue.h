#pragma once

#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "platform/Queue.h"

// A queue on the standard library's threads. It has one thread from the beginning, so that no task can come to a queue
// for which the system has none left; a synchronous task always runs on the thread that submits it, which waits for its
// turn if others are before it. Want of memory may keep a task from being submitted; one that was submitted is run.
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

    // A line in which the task is alone. It becomes a part of another one without any memory.
    using Line = std::list<Place>;
    static Line placeFor(std::function<void()> task);
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
    Line line;
    std::multimap<TimePoint, Line> delayedTasks; // each in a place of its own
    bool isBusy = false;
    bool isEnding = false;
    std::thread::id currentThread;
    std::thread thread; // last, as it uses all the others
};
