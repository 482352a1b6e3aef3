#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "driver/Measurement.h"

// The jobs that an editor waits for. Each makes what it needs in a temporary folder and removes it.

struct Programs {
    std::string daemon{};
    std::string limitFolder{}; // of the limit programs

    std::vector<std::string> limit(std::string_view name) const { return {limitFolder + '/' + std::string(name)}; }
};

using Measurements = std::vector<Measurement>;

Measurements measureOpenWorkspace(const Programs& programs, std::size_t fileCount, std::size_t folderCount, int turns);
Measurements measureListFolder(const Programs& programs, std::size_t entryCount, int turns);
Measurements measureOpenText(const Programs& programs, std::size_t byteCount, int turns);
Measurements measureSaveText(const Programs& programs, std::size_t byteCount, int turns);
Measurements measureSingleEvents(const Programs& programs, std::size_t fileCount, int turns, int changes);
Measurements measureManyFiles(const Programs& programs, std::size_t fileCount, std::size_t folderCount, int turns);
Measurements measureRenameFolder(const Programs& programs, std::size_t fewDescendants, std::size_t manyDescendants,
                                 int turns);
Measurements measureFirstResponse(const Programs& programs, int turns);
Measurements measureSmallRequests(const Programs& programs, int requestCount, int turns);
Measurements measureOpenDocuments(const Programs& programs, std::size_t documentCount, std::size_t byteCount);

struct Job {
    std::string name{};
    std::function<Measurements(const Programs&)> measure{};
};

// The modes: quick takes less than two minutes, full less than ten; growth shows how the cost grows with the size.
std::vector<Job> jobsOfMode(std::string_view mode);

// "1,000,000"
std::string grouped(std::size_t number);

template <typename Step>
Seconds timed(Step step) {
    const auto begin = std::chrono::steady_clock::now();
    step();
    return std::chrono::steady_clock::now() - begin;
}

inline double milliseconds(Seconds time) {
    return 1000 * time.count();
}
