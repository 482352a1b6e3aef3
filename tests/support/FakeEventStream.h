#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Clock.h"
#include "platform/EventStream.h"

class HandMovedClock final : public Clock {
public:
    std::chrono::nanoseconds uptime() const override { return now; }

    std::chrono::nanoseconds now = std::chrono::hours(7);
};

// A source whose notifications come from the test. It keeps a record of what was asked of it.
class FakeEventStreamSource final : public EventStreamSource {
public:
    std::unique_ptr<EventStream> makeEventStream(const std::vector<std::string>& rootPaths,
                                                 std::chrono::nanoseconds streamLatency, Queue& queue,
                                                 std::function<void(EventStreamBatch)> deliver) override {
        if (!makesStreams) return nullptr;
        roots = rootPaths;
        latency = streamLatency;
        deliveryQueue = &queue;
        return std::make_unique<FakeEventStream>(*this, std::move(deliver));
    }
    void setInterest(EventStreamInterest newInterest) override {
        log.push_back("interest");
        interest = std::move(newInterest);
    }
    void awaitDirectories(std::vector<std::string> paths, Queue& queue, std::function<void()> appeared) override {
        awaitedPaths = std::move(paths);
        deliveryQueue = &queue;
        tellAppeared = std::move(appeared);
    }

    bool isRunning() const { return static_cast<bool>(receive); }
    void send(EventStreamBatch batch) {
        deliveryQueue.load()->sync([&] {
            if (receive) receive(std::move(batch));
        });
    }
    void sendAppeared() {
        deliveryQueue.load()->sync([&] {
            awaitedPaths.clear();
            std::exchange(tellAppeared, nullptr)();
        });
    }

    bool makesStreams = true;
    bool startsStreams = true;
    std::vector<std::string> roots; // of the stream that was made last
    std::chrono::nanoseconds latency{};
    EventStreamInterest interest;
    std::vector<std::string> awaitedPaths;
    std::vector<std::string> log; // "start", "stop" and "interest", in their order

private:
    class FakeEventStream final : public EventStream {
    public:
        FakeEventStream(FakeEventStreamSource& streamSource, std::function<void(EventStreamBatch)> deliver)
            : source(streamSource), callback(std::move(deliver)) {}
        ~FakeEventStream() override { stop(); }

        bool start() override {
            if (!source.startsStreams) return false;
            source.log.push_back("start");
            source.receive = callback;
            isStarted = true;
            return true;
        }
        void stop() override {
            if (!std::exchange(isStarted, false)) return;
            source.log.push_back("stop");
            source.receive = nullptr;
        }

    private:
        FakeEventStreamSource& source;
        const std::function<void(EventStreamBatch)> callback;
        bool isStarted = false;
    };

    std::atomic<Queue*> deliveryQueue = nullptr; // a test may send from a thread of its own
    std::function<void(EventStreamBatch)> receive;
    std::function<void()> tellAppeared;
};
