#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"

class ProcessLines;

// The editor's end of the conversation: starts a daemon, sends requests, and hands over answers and events. It has no
// threads. Everything comes by calls to the functions given here, from within exchange(), wait() and ask(), in the
// order in which the daemon wrote it; they may send and ask, but not destroy the client.
//
// An event loop watches descriptor() for reading and calls exchange(). A program without one calls wait().
class EditorDocumentDaemonClient {
public:
    using Receive = std::function<void(const EditorDocumentDaemonEnvelope&)>;

    // A name without a slash is looked for in PATH. Throws a PlatformError when the program cannot be started.
    explicit EditorDocumentDaemonClient(const std::string& executable = "EditorDocumentDaemon",
                                        int errorDescriptor = 2);
    // Ends the daemon. What it was asked before may or may not be done; to be sure, wait for the answers.
    ~EditorDocumentDaemonClient();

    Receive onEvent{};
    // How the daemon ended, after every open request was answered with a failure. Nothing follows.
    std::function<void(const std::string& outcome)> onEnd{};
    // Every line as it goes out and comes in, for logs.
    std::function<void(std::string_view line)> onSentLine{};
    std::function<void(std::string_view line)> onReceivedLine{};

    // Every request is answered exactly once. It gets a requestID if it has none. Throws std::invalid_argument when it
    // holds text that is not UTF-8, and a PlatformError (EPIPE) once the daemon has ended. Never waits: what the pipe
    // does not take is kept, and a program that sends much at once looks at unsentByteCount() and lets wait() drain it.
    void send(EditorDocumentDaemonRequest request, Receive answer = {});
    std::size_t unsentByteCount() const;

    // Sends and waits for the answer, handing over what comes before it.
    EditorDocumentDaemonEnvelope ask(EditorDocumentDaemonRequest request);

    // Sends a line that need not be a request; it is answered like one. Throws std::invalid_argument for a line to
    // which the daemon says nothing: a blank one, one that is not UTF-8, and what is more than one line.
    void sendLine(std::string_view line, Receive answer);

    int descriptor() const;
    // Does what can be done without waiting.
    void exchange();
    // Waits until there was something to do. False when the daemon has ended, or when the time was over first.
    bool wait(std::optional<std::chrono::milliseconds> longest = {});

    bool hasEnded() const { return isOver; }

private:
    struct OpenRequest {
        std::string requestID{};
        Receive answer{};
    };

    void put(std::string_view line, OpenRequest request);
    void receive(const std::string& line);
    void receiveResponse(const EditorDocumentDaemonEnvelope& envelope);
    static void fail(const std::deque<OpenRequest>& requests, const std::string& message);
    void finish(const std::string& outcome);

    std::unique_ptr<ProcessLines> lines;
    std::deque<OpenRequest> openRequests{};
    std::uint64_t requestCount = 0;
    bool isOver = false;
};
