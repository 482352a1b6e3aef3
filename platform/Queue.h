#pragma once

#include <chrono>
#include <functional>

// A serial queue: its tasks run one at a time, in the order in which they were submitted. May be called on any thread.
class Queue {
public:
    virtual ~Queue() = default;

    // Runs the task and returns when it is done; what the task throws comes out here. On an idle queue it runs at once
    // on the calling thread. Never call it from a task of the same queue: it would wait for itself.
    virtual void sync(const std::function<void()>& task) = 0;

    // A task that is submitted and throws std::bad_alloc is given up; one that must not be lost has to catch it itself.
    virtual void async(std::function<void()> task) = 0;

    // Submits the task once the delay has passed.
    virtual void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task) = 0;

    // Whether the caller runs inside a task of this queue.
    virtual bool isCurrent() const = 0;
};
