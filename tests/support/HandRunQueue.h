#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>

#include "platform/Queue.h"

// A queue without a thread. Asynchronous tasks wait for runPending(), delayed ones for a clock that the test moves.
class HandRunQueue final : public Queue {
public:
    void sync(const std::function<void()>& task) override { runTask(task); }
    void async(std::function<void()> task) override { pending.push_back(std::move(task)); }
    void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task) override {
        delayed.emplace(now + delay, std::move(task));
    }
    bool isCurrent() const override { return depth > 0; }

    void runPending() {
        while (!pending.empty()) {
            const auto task = std::move(pending.front());
            pending.pop_front();
            runTask(task);
        }
    }
    void advance(std::chrono::nanoseconds time) {
        now += time;
        while (!delayed.empty() && delayed.begin()->first <= now) {
            pending.push_back(std::move(delayed.begin()->second));
            delayed.erase(delayed.begin());
        }
        runPending();
    }

private:
    void runTask(const std::function<void()>& task) {
        struct Depth {
            int& depth;
            explicit Depth(int& counted) : depth(counted) { ++depth; }
            ~Depth() { --depth; }
        } const inside(depth);
        task();
    }

    std::deque<std::function<void()>> pending;
    std::multimap<std::chrono::nanoseconds, std::function<void()>> delayed;
    std::chrono::nanoseconds now{};
    int depth = 0;
};
