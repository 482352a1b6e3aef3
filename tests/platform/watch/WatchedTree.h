#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/SerialQueue.h"
#include "platform/linux/watch/LinuxEventStreamSource.h"
#include "platform/linux/watch/WatchLoop.h"
#include "tests/platform/watch/Told.h"
#include "tests/support/TemporaryDirectory.h"

// Finds no memory for a timer when it is told to.
class QueueShortOfMemory final : public Queue {
public:
    void sync(const std::function<void()>& task) override { queue.sync(task); }
    void async(std::function<void()> task) override { queue.async(std::move(task)); }
    void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task) override {
        if (isShort.exchange(false)) throw std::bad_alloc();
        queue.asyncAfter(delay, std::move(task));
    }
    bool isCurrent() const override { return queue.isCurrent(); }

    std::atomic<bool> isShort = false;

private:
    SerialQueue queue{"watched-tree"};
};

// A real directory under a real stream. What is told is collected; paths below the directory are relative to it.
class WatchedTree {
public:
    explicit WatchedTree(std::unique_ptr<LinuxWatchSystem> system = std::make_unique<LinuxWatchSystem>(),
                         std::size_t byteLimit = InotifyReader::usualLimit)
        : source(std::move(system), byteLimit) {}
    ~WatchedTree() {
        onQueue([&] { stream.reset(); });
    }

    std::string path(const std::string& name) const { return directory.path(name); }
    const std::string& path() const { return directory.path(); }

    void onQueue(const std::function<void()>& task) { queue.sync(task); }

    // Watches these roots from now on, instead of what was watched before.
    void watch(const std::vector<std::string>& names) {
        std::vector<std::string> roots;
        for (const std::string& name : names) roots.push_back(path(name));
        onQueue([&] {
            stream.reset();
            stream = source.makeEventStream(roots, std::chrono::milliseconds(100), queue,
                                            [this](EventStreamBatch batch) { collect(std::move(batch)); });
            if (!stream->start()) stream.reset();
        });
    }

    void setInterest(const EventStreamInterest& interest) {
        onQueue([&] { source.setInterest(interest); });
    }

    // Waits until all has been told that is expected, in any number of batches, and returns whether it was. Nothing
    // else may be told but directories to look at and attributes.
    testing::AssertionResult tells(const std::vector<std::string>& expected) {
        return awaits([&] { return relevant() == expected; });
    }
    testing::AssertionResult tellsInAnyOrder(const std::vector<std::string>& expected) {
        return awaits([&] { return std::ranges::is_permutation(relevant(), expected); });
    }

    // Waits until this one has been told, whatever else was, and forgets all that was told up to it.
    testing::AssertionResult tellsAmongOthers(const std::string& expected) {
        std::unique_lock lock(mutex);
        const auto isDone = [&] { return std::ranges::find(all, expected) != all.end(); };
        if (!arrived.wait_for(lock, std::chrono::seconds(10), isDone))
            return testing::AssertionFailure() << "told " << testing::PrintToString(all);
        all.erase(all.begin(), std::ranges::find(all, expected) + 1);
        return testing::AssertionSuccess();
    }

    TreeWatcher::Statistics statistics() {
        TreeWatcher::Statistics result;
        onQueue([&] { result = source.watchLoop().statistics(); });
        return result;
    }

    // Waits until so many directories are watched.
    bool watches(std::size_t count) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (statistics().watches != count && std::chrono::steady_clock::now() < end) std::this_thread::yield();
        return statistics().watches == count;
    }

    QueueShortOfMemory queue;
    LinuxEventStreamSource source;

private:
    testing::AssertionResult awaits(const std::function<bool()>& isDone) {
        std::unique_lock lock(mutex);
        if (!arrived.wait_for(lock, std::chrono::seconds(10), isDone))
            return testing::AssertionFailure() << "told " << testing::PrintToString(all);
        all.clear();
        return testing::AssertionSuccess();
    }

    std::vector<std::string> relevant() const {
        std::vector<std::string> result;
        for (const std::string& each : all) {
            if (!each.starts_with("look ") && !each.starts_with("attributes ")) result.push_back(each);
        }
        return result;
    }

    void collect(EventStreamBatch batch) {
        const std::lock_guard lock(mutex);
        for (std::string telling : told(batch)) {
            for (std::size_t at = 0; (at = telling.find(path(""))) != std::string::npos;)
                telling.erase(at, path("").size());
            all.push_back(std::move(telling));
        }
        arrived.notify_all();
    }

    TemporaryDirectory directory;
    std::unique_ptr<EventStream> stream;
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<std::string> all;
};
