#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/files/LinuxFileManager.h"
#include "tests/support/CountingSeams.h"
#include "tests/support/SteppedDaemon.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/VariableEnvironment.h"

// A daemon in this process on a real temporary directory, which also holds its home. What it writes is collected as
// envelopes, and nothing happens beside the requests but what the test lets happen.
class DaemonHarness : public SteppedDaemon {
public:
    DaemonHarness();

    // How often anything was handed to the system.
    int writeCount() const;

    // Answers one line as it would arrive, and returns all envelopes that it caused.
    std::vector<EditorDocumentDaemonEnvelope> sendLine(const std::string& line);

    // The same for a request.
    std::vector<EditorDocumentDaemonEnvelope> exchange(EditorDocumentDaemonRequest request);

    // The one response to the request. Events that came with it are left in events.
    EditorDocumentDaemonEnvelope send(EditorDocumentDaemonRequest request);

    std::vector<EditorDocumentDaemonEnvelope> checkDocument(const std::string& documentID);

    EditorDocumentDaemonEnvelope open(const std::string& path);
    EditorDocumentDaemonEnvelope save(const std::string& documentID, const std::string& text,
                                      std::optional<std::int64_t> expectedVersion);
    EditorDocumentDaemonEnvelope close(const std::string& documentID);
    EditorDocumentDaemonEnvelope openWorkspace(const std::string& rootPath);
    EditorDocumentDaemonEnvelope loadChildren(const std::string& rootPath, const std::string& path);

    // Lets the index builds run that were scheduled, and returns what came of it.
    std::vector<EditorDocumentDaemonEnvelope> buildIndexes();

    // The system tells of changes, or time passes for the watch stream; returns what the daemon says to that.
    std::vector<EditorDocumentDaemonEnvelope> notify(EventStreamBatch batch);
    std::vector<EditorDocumentDaemonEnvelope> notifyAppeared();
    std::vector<EditorDocumentDaemonEnvelope> advance(std::chrono::nanoseconds time);

    // Lets the time pass on the indexing queue, with what falls due on it, and returns what that caused.
    std::vector<EditorDocumentDaemonEnvelope> advanceIndexing(std::chrono::milliseconds time = {});

    const TemporaryDirectory directory;
    // The whole environment of the daemon. HOME is below the directory.
    VariableEnvironment* environment = nullptr;
    std::vector<EditorDocumentDaemonEnvelope> events;
    CountingFileIdentification* fileIdentification = nullptr;
    CountingDirectoryWalking* directoryWalking = nullptr;

private:
    class CollectingOutput;

    std::vector<EditorDocumentDaemonEnvelope> takeOutput();

    std::unique_ptr<LinuxFileManager> linuxFileManager;
    CollectingOutput* output = nullptr;
};
