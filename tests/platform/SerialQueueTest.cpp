#include "platform/SerialQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <latch>
#include <new>
#include <stdexcept>
#include <vector>

using namespace std::chrono_literals;

namespace {

thread_local bool hasMemory = true;

} // namespace

// A sanitizer has allocations of its own, which must not be mixed with others.
#if !IS_SANITIZED

void* operator new(std::size_t size) {
    void* const memory = hasMemory ? std::malloc(size) : nullptr;
    return memory ? memory : throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif

namespace {

TEST(SerialQueue, RunsASynchronousTaskOnTheCallersThread) {
    SerialQueue queue("test");
    std::thread::id ranOn;
    queue.sync([&] {
        ranOn = std::this_thread::get_id();
        EXPECT_TRUE(queue.isCurrent());
    });
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialQueue, KeepsTheOrderOfSubmission) {
    SerialQueue queue("test");
    std::latch release(1);
    std::vector<int> order;
    queue.async([&] { release.wait(); });
    for (int number = 0; number < 3; ++number) queue.async([&order, number] { order.push_back(number); });
    release.count_down();
    queue.sync([&] { order.push_back(3); });
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
}

TEST(SerialQueue, NeverRunsTwoTasksAtOnce) {
    SerialQueue queue("test");
    int inside = 0;
    int most = 0;
    int total = 0;
    const auto task = [&] {
        most = std::max(most, ++inside);
        ++total;
        --inside;
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 500; ++round) {
                queue.sync(task);
                queue.async(task);
                queue.asyncAfter(0ns, task);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::promise<void> last;
    queue.asyncAfter(1ms, [&] { last.set_value(); });
    last.get_future().wait();
    queue.sync([&] { EXPECT_EQ(total, 6000); });
    EXPECT_EQ(most, 1);
}

TEST(SerialQueue, AFailedSynchronousTaskFreesTheQueue) {
    SerialQueue queue("test");
    EXPECT_THROW(queue.sync([] { throw std::runtime_error("no"); }), std::runtime_error);
    bool hasRun = false;
    queue.sync([&] { hasRun = true; });
    EXPECT_TRUE(hasRun);
}

TEST(SerialQueue, RunsDelayedTasksInTheOrderOfTheirTimes) {
    SerialQueue queue("test");
    std::vector<int> order;
    std::promise<void> done;
    queue.sync([&] {
        queue.asyncAfter(20ms, [&] {
            order.push_back(2);
            done.set_value();
        });
        queue.asyncAfter(1ms, [&] { order.push_back(1); });
    });
    done.get_future().wait();
    EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST(SerialQueue, WhatWasSubmittedNeedsNoMoreMemory) {
    if (IS_SANITIZED) GTEST_SKIP() << "memory cannot be made to lack";
    SerialQueue queue("test");
    constexpr int count = 1000;
    std::promise<void> done;
    int runs = 0;
    // They fall due while the queue's thread is in this task, and so all at once after it.
    queue.async([&] {
        for (int number = 0; number < count; ++number) queue.asyncAfter(0ns, [&] { ++runs; });
        queue.asyncAfter(0ns, [&] {
            hasMemory = true;
            done.set_value();
        });
        hasMemory = false;
    });
    done.get_future().wait();
    EXPECT_EQ(runs, count);
}

TEST(SerialQueue, DropsWhatHasNotBegunWhenItEnds) {
    std::atomic<bool> hasRun = false;
    {
        SerialQueue queue("test");
        std::promise<void> begun;
        queue.async([&] { begun.set_value(); });
        queue.asyncAfter(1h, [&] { hasRun = true; });
        begun.get_future().wait();
    }
    EXPECT_FALSE(hasRun);
}

} // namespace
