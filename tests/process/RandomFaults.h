#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/process/RandomChanges.h"

// What may go wrong around a session, or be done wrong by its client, until it is given up again. What the machine does
// not permit is left out, and told once.
class RandomFaults {
public:
    explicit RandomFaults(RandomChanges& randomChanges, WatchedSession& watchedSession);

    // To start the daemon with, so that rights bind it and limits on watches are its own.
    static std::vector<std::string> launcher();

    void beginOne();
    void endOne();
    void endAll();

    // Since the last question: listings that fail are given up.
    bool haveMadeListingsFail() { return std::exchange(listingsMayFail, false); }

private:
    using End = std::function<void()>;
    using Fault = End (RandomFaults::*)();

    // For a while.
    End largeWrites();
    End descriptors();
    End memory();
    End watches();
    End rights();
    End root();
    End coverByFullDisk();

    // At once.
    End overflow();
    End manyRequests();
    End halfRequest();
    End reopening();

    std::string malformedLine();
    void permit(const std::string& what, const std::string& refusal, std::vector<Fault> faults);

    RandomChanges& changes;
    WatchedSession& session;
    const pid_t process = session.client.process.processID();
    std::vector<Fault> permitted;
    std::vector<End> active;
    bool listingsMayFail = false;
};
