#include "driver/Jobs.h"

#include <stdexcept>

namespace {

constexpr std::size_t mostBytes = 8'388'608; // of a document

std::vector<Job> quickJobs() {
    return {
        {"workspace", [](const Programs& programs) { return measureOpenWorkspace(programs, 50'000, 5'000, 5); }},
        {"list", [](const Programs& programs) { return measureListFolder(programs, 10'000, 15); }},
        {"list", [](const Programs& programs) { return measureListFolder(programs, 100'000, 5); }},
        {"open", [](const Programs& programs) { return measureOpenText(programs, mostBytes, 31); }},
        {"save", [](const Programs& programs) { return measureSaveText(programs, mostBytes, 21); }},
        {"event", [](const Programs& programs) { return measureSingleEvents(programs, 20'000, 2, 30); }},
        {"storm", [](const Programs& programs) { return measureManyFiles(programs, 20'000, 200, 3); }},
        {"rename", [](const Programs& programs) { return measureRenameFolder(programs, 5'000, 50'000, 11); }},
        {"start", [](const Programs& programs) { return measureFirstResponse(programs, 101); }},
        {"requests", [](const Programs& programs) { return measureSmallRequests(programs, 20'000, 5); }},
        {"documents", [](const Programs& programs) { return measureOpenDocuments(programs, 1'000, 100'000); }},
    };
}

std::vector<Job> fullJobs() {
    return {
        {"workspace", [](const Programs& programs) { return measureOpenWorkspace(programs, 500'000, 50'000, 5); }},
        {"list", [](const Programs& programs) { return measureListFolder(programs, 10'000, 51); }},
        {"list", [](const Programs& programs) { return measureListFolder(programs, 100'000, 11); }},
        {"open", [](const Programs& programs) { return measureOpenText(programs, mostBytes, 101); }},
        {"save", [](const Programs& programs) { return measureSaveText(programs, mostBytes, 51); }},
        {"event", [](const Programs& programs) { return measureSingleEvents(programs, 100'000, 5, 40); }},
        {"storm", [](const Programs& programs) { return measureManyFiles(programs, 20'000, 200, 5); }},
        {"rename", [](const Programs& programs) { return measureRenameFolder(programs, 5'000, 500'000, 21); }},
        {"start", [](const Programs& programs) { return measureFirstResponse(programs, 301); }},
        {"requests", [](const Programs& programs) { return measureSmallRequests(programs, 50'000, 9); }},
        {"documents", [](const Programs& programs) { return measureOpenDocuments(programs, 1'000, 100'000); }},
    };
}

std::vector<Job> growthJobs() {
    std::vector<Job> jobs;
    for (const std::size_t size : {10'000, 100'000, 500'000}) {
        jobs.push_back({"workspace",
                        [=](const Programs& programs) { return measureOpenWorkspace(programs, size, size / 10, 3); }});
        jobs.push_back({"list", [=](const Programs& programs) { return measureListFolder(programs, size, 3); }});
        jobs.push_back({"open", [=](const Programs& programs) { return measureOpenText(programs, size, 51); }});
        jobs.push_back({"save", [=](const Programs& programs) { return measureSaveText(programs, size, 51); }});
        jobs.push_back({"event", [=](const Programs& programs) { return measureSingleEvents(programs, size, 1, 20); }});
        jobs.push_back({"storm", [=](const Programs& programs) { return measureManyFiles(programs, size, 200, 1); }});
        jobs.push_back(
            {"rename", [=](const Programs& programs) { return measureRenameFolder(programs, 1'000, size, 5); }});
        jobs.push_back({"documents",
                        [=](const Programs& programs) { return measureOpenDocuments(programs, size / 100, 100'000); }});
    }
    return jobs;
}

} // namespace

std::vector<Job> jobsOfMode(std::string_view mode) {
    if (mode == "quick") return quickJobs();
    if (mode == "full") return fullJobs();
    if (mode == "growth") return growthJobs();
    throw std::runtime_error("there is no such mode");
}

std::string grouped(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3;) text.insert(place -= 3, 1, ',');
    return text;
}
