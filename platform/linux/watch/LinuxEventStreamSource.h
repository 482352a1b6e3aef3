#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/EventStream.h"
#include "platform/linux/watch/InotifyReader.h"
#include "platform/linux/watch/LinuxWatchSystem.h"

class WatchLoop;

// The event stream on inotify. The watches belong to the source, not to the stream, so that a change of roots costs
// only the difference.
class LinuxEventStreamSource final : public EventStreamSource {
public:
    explicit LinuxEventStreamSource(std::unique_ptr<LinuxWatchSystem> system = std::make_unique<LinuxWatchSystem>(),
                                    std::size_t queuedByteLimit = InotifyReader::usualLimit,
                                    DeliveryPolicy policy = {});
    ~LinuxEventStreamSource() override;

    std::unique_ptr<EventStream> makeEventStream(const std::vector<std::string>& rootPaths,
                                                 std::chrono::nanoseconds latency, Queue& queue,
                                                 std::function<void(EventStreamBatch)> deliver) override;
    void setInterest(EventStreamInterest interest) override;
    void awaitDirectories(std::vector<std::string> paths, Queue& queue, std::function<void()> appeared) override;

    // For measurements. To be called on the queue.
    const WatchLoop& watchLoop() const { return *loop; }

private:
    struct Awaiting;
    static void awaitOnce(const std::shared_ptr<Awaiting>& awaiting);

    std::shared_ptr<WatchLoop> loop;
    std::shared_ptr<Awaiting> awaiting{};
};
