#include "platform/linux/watch/LinuxEventStreamSource.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "platform/linux/watch/WatchLoop.h"

namespace {

constexpr std::chrono::seconds awaitInterval{1};

bool isDirectory(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

class LinuxEventStream final : public EventStream {
public:
    LinuxEventStream(std::weak_ptr<WatchLoop> watchLoop, std::vector<std::string> roots, Queue& streamQueue,
                     std::function<void(EventStreamBatch)> deliverBatch)
        : loop(std::move(watchLoop)),
          rootPaths(std::move(roots)),
          queue(streamQueue),
          deliver(std::move(deliverBatch)) {}
    ~LinuxEventStream() override { stop(); }

    bool start() override {
        const auto running = loop.lock();
        isStarted = running && !running->isRunning() && running->start(rootPaths, queue, deliver);
        return isStarted;
    }

    void stop() override {
        const auto running = loop.lock();
        if (std::exchange(isStarted, false) && running) running->stop();
    }

private:
    std::weak_ptr<WatchLoop> loop;
    std::vector<std::string> rootPaths;
    Queue& queue;
    std::function<void(EventStreamBatch)> deliver;
    bool isStarted = false;
};

} // namespace

struct LinuxEventStreamSource::Awaiting {
    std::vector<std::string> paths{};
    Queue& queue;
    std::function<void()> appeared{};
};

LinuxEventStreamSource::LinuxEventStreamSource(std::unique_ptr<LinuxWatchSystem> system, std::size_t queuedByteLimit,
                                               DeliveryPolicy policy)
    : loop(std::make_shared<WatchLoop>(std::move(system), queuedByteLimit, policy)) {}

LinuxEventStreamSource::~LinuxEventStreamSource() = default;

std::unique_ptr<EventStream> LinuxEventStreamSource::makeEventStream(const std::vector<std::string>& rootPaths,
                                                                     std::chrono::nanoseconds, Queue& queue,
                                                                     std::function<void(EventStreamBatch)> deliver) {
    return std::make_unique<LinuxEventStream>(loop, rootPaths, queue, std::move(deliver));
}

void LinuxEventStreamSource::setInterest(EventStreamInterest interest) {
    loop->setInterest(interest);
}

void LinuxEventStreamSource::awaitDirectories(std::vector<std::string> paths, Queue& queue,
                                              std::function<void()> appeared) {
    awaiting.reset(); // whatever was awaited before is given up
    if (paths.empty()) return;
    awaiting = std::make_shared<Awaiting>(Awaiting{std::move(paths), queue, std::move(appeared)});
    awaitOnce(awaiting);
}

void LinuxEventStreamSource::awaitOnce(const std::shared_ptr<Awaiting>& awaiting) {
    awaiting->queue.asyncAfter(awaitInterval, [weak = std::weak_ptr(awaiting)] {
        const auto state = weak.lock();
        if (!state || !state->appeared) return;
        if (std::ranges::none_of(state->paths, isDirectory)) return awaitOnce(state);
        std::exchange(state->appeared, nullptr)();
    });
}
