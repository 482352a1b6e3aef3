#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzedClient.h"
#include "fuzz/MemoryDisk.h"
#include "tests/support/SteppedDaemon.h"

// A daemon in this process on a disk in memory, with a client that checks what it is told.
class FuzzedDaemon : SteppedDaemon {
public:
    FuzzedDaemon();

    // Gives the daemon a line as the request loop would, and checks what every answer must be.
    void sendLine(std::string_view line);
    void send(EditorDocumentDaemonRequest request);

    // The system tells of something; and time passes, until all that is pending has been done.
    void notify(const std::string& path, std::uint32_t flags, std::uint64_t fileNumber);
    void settle();

    // Another program's doing on the disk; the system tells of it or does not.
    void write(const std::string& path, const std::string& text, bool isTold);
    void makeDirectory(const std::string& path, bool isTold);
    void link(const std::string& path, const std::string& target, bool isTold);
    void remove(const std::string& path, bool isTold);
    void rename(const std::string& path, const std::string& newPath, bool isTold);

    // Makes a call to the disk fail, the count-th from now.
    void failLater(FileOperation operation, int count);

    // Tells of every folder that the client shows, once more, and compares what it shows then with the disk.
    void requireConvergence();

    FuzzedClient client{};

private:
    class Collector;

    void checkAnswers(const std::vector<EditorDocumentDaemonEnvelope>& answers,
                      const std::map<std::string, MemoryDisk::Item>& before, const std::optional<std::string>& text);
    void checkSaved(const EditorDocumentSnapshotPayload& snapshot) const;
    void takeOutput();
    std::optional<std::string> freePlace(const std::string& path) const;

    MemoryDisk disk{};
    MemoryFileManager memoryFileManager{disk};
    Collector* output = nullptr;
    bool hadFaults = false;
};
