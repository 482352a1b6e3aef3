#include "tests/process/RandomFaults.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

#include "shared/RecordCoding.h"
#include "tests/support/Files.h"
#include "tests/support/MountedDisk.h"
#include "tests/support/ProcessLimits.h"

namespace {

namespace fs = std::filesystem;

using Command = EditorDocumentRequestCommand;

bool succeeds(const std::string& command) {
    return std::system((command + " 2> /dev/null").c_str()) == 0;
}

// Of whatever is there, wherever it was moved or copied to.
void giveBackRights(const std::string& path) {
    constexpr auto folder = fs::perms::owner_all, file = fs::perms::owner_read | fs::perms::owner_write;
    std::error_code ignored;
    const auto giveBack = [&](const std::string& item) {
        const fs::file_status status = fs::symlink_status(item, ignored);
        const fs::perms rights = fs::is_directory(status) ? folder : file;
        if (fs::exists(status) && !fs::is_symlink(status) && (status.permissions() & rights) != rights)
            fs::permissions(item, rights, fs::perm_options::add, ignored);
    };
    giveBack(path);
    // Each before it is entered.
    for (fs::recursive_directory_iterator each(path, ignored), end; each != end; each.increment(ignored))
        giveBack(each->path());
}

} // namespace

RandomFaults::RandomFaults(RandomChanges& randomChanges, WatchedSession& watchedSession)
    : changes(randomChanges), session(watchedSession) {
    permit("files, roots and requests", "",
           {&RandomFaults::largeWrites, &RandomFaults::root, &RandomFaults::overflow, &RandomFaults::manyRequests,
            &RandomFaults::manyRequests, &RandomFaults::halfRequest, &RandomFaults::reopening});
    permit("memory and descriptors", IS_SANITIZED ? "a sanitizer needs more of both" : "",
           {&RandomFaults::memory, &RandomFaults::descriptors});
    permit("rights and watches", launcher().empty() ? "no namespace can be made" : "",
           {&RandomFaults::rights, &RandomFaults::rights, &RandomFaults::watches});
    permit("mounts", MountedDisk(session.directory.path("disk")).reason,
           {&RandomFaults::coverByFullDisk, &RandomFaults::coverByFullDisk});
}

std::vector<std::string> RandomFaults::launcher() {
    const std::vector<std::string> words{"unshare", "-Ur", "setpriv", "--bounding-set=-dac_override,-dac_read_search"};
    static const bool isPermitted = succeeds(words[0] + ' ' + words[1] + ' ' + words[2] + ' ' + words[3] + " true");
    return isPermitted ? words : std::vector<std::string>{};
}

void RandomFaults::permit(const std::string& what, const std::string& refusal, std::vector<Fault> faults) {
    if (refusal.empty()) return void(permitted.insert(permitted.end(), faults.begin(), faults.end()));
    std::cout << what << " are left out: " << refusal << '\n';
}

void RandomFaults::beginOne() {
    const Fault fault = permitted[changes.below(permitted.size())];
    if (End end = (this->*fault)()) active.push_back(std::move(end));
}

// In reverse order, so that each finds things as it left them.
void RandomFaults::endOne() {
    if (active.empty()) return;
    changes.note("the latest fault ends");
    active.back()();
    active.pop_back();
}

void RandomFaults::endAll() {
    while (!active.empty()) endOne();
}

RandomFaults::End RandomFaults::largeWrites() {
    const std::size_t size = changes.below(20);
    changes.note("no file beyond " + std::to_string(size) + " bytes");
    return [limit = std::make_shared<ProcessLimit>(process, RLIMIT_FSIZE, size)]() mutable { limit.reset(); };
}

RandomFaults::End RandomFaults::descriptors() {
    listingsMayFail = true;
    const std::size_t spare = changes.below(5);
    changes.note(std::to_string(spare) + " descriptors");
    const rlim_t number = firstFreeDescriptor(process) + spare;
    return [limit = std::make_shared<ProcessLimit>(process, RLIMIT_NOFILE, number)]() mutable { limit.reset(); };
}

RandomFaults::End RandomFaults::memory() {
    listingsMayFail = true;
    const std::size_t size = changes.below(1 << 20);
    changes.note("no more memory than " + std::to_string(size) + " bytes");
    const rlim_t space = addressSpace(process) + size;
    return [limit = std::make_shared<ProcessLimit>(process, RLIMIT_AS, space)]() mutable { limit.reset(); };
}

RandomFaults::End RandomFaults::watches() {
    const auto limitTo = [this](std::size_t count) {
        changes.note(std::to_string(count) + " watches");
        succeeds("nsenter -U -t " + std::to_string(process) + " sh -c 'echo " + std::to_string(count) +
                 " > /proc/sys/user/max_inotify_watches'");
    };
    limitTo(changes.below(8));
    return [limitTo] { limitTo(1'000'000); };
}

RandomFaults::End RandomFaults::rights() {
    listingsMayFail = true;
    const std::string path = changes.below(4) == 0 ? changes.item() : changes.folder();
    const auto left = static_cast<fs::perms>(changes.below(8) << 6);
    changes.note("rights " + std::to_string(static_cast<int>(left) >> 6) + " for " + path);
    std::error_code ignored;
    if (!fs::is_symlink(fs::symlink_status(path, ignored))) fs::permissions(path, left, ignored);
    return [this] {
        for (const char* place : {"w", "outside0", "outside1", "vanished"})
            giveBackRights(session.directory.path(place));
    };
}

// A document that is saved meanwhile makes a new root.
RandomFaults::End RandomFaults::root() {
    changes.note("no root");
    std::error_code error;
    fs::rename(session.root, session.directory.path("vanished"), error);
    if (error) return {};
    return [this] {
        std::error_code ignored;
        fs::remove_all(session.root, ignored);
        fs::rename(session.directory.path("vanished"), session.root);
    };
}

RandomFaults::End RandomFaults::coverByFullDisk() {
    const std::string path = changes.folder();
    std::error_code error;
    if (!fs::is_directory(path, error)) return {};
    changes.note("a full disk at " + path);
    auto disk = std::make_shared<MountedDisk>(path, "size=64k");
    std::ofstream(path + "/filler") << std::string(100'000, 'x');
    return [disk]() mutable { disk.reset(); };
}

RandomFaults::End RandomFaults::overflow() {
    const std::string path = changes.folder() + "/burst";
    changes.note("more events than the kernel keeps " + path);
    const StoppedProcess stopped(process);
    for (int number = 0; number < 9'000; ++number) {
        const std::string file = path + std::to_string(number % 100);
        std::ofstream(file).close();
        ::unlink(file.c_str());
    }
    for (int count = 0; count < 5; ++count) changes.makeOneOutside();
    return {};
}

// Nobody reads the answers before all requests are sent; together they fit a pipe.
RandomFaults::End RandomFaults::manyRequests() {
    const std::size_t count = 1 + changes.below(100);
    changes.note(std::to_string(count) + " requests at once");
    for (std::size_t sent = 0; sent < count; ++sent) {
        if (changes.below(4) == 0)
            session.client.process.sendLine(malformedLine());
        else if (changes.below(4) == 0)
            session.client.send(changes.request());
        else
            session.client.send(
                {.command = Command::loadWorkspaceChildren, .rootPath = session.root, .path = session.root});
        if (changes.below(8) == 0) changes.makeOneOutside();
    }
    for (std::size_t answered = 0; answered < count; ++answered) session.answer();
    return {};
}

// Each is answered.
std::string RandomFaults::malformedLine() {
    static const std::string lines[] = {"{", "[]", R"({"command":"x"})", "\x01", R"({"requestID":1,"command":"open"})"};
    // What is not UTF-8 is not, and neither is a blank line.
    session.client.process.sendLine(changes.below(2) == 0 ? "\xFF" : " ");
    return lines[changes.below(std::size(lines))];
}

RandomFaults::End RandomFaults::halfRequest() {
    EditorDocumentDaemonRequest request = changes.request();
    request.requestID = "half";
    const std::string line = encodeRecord(request).value() + '\n';
    const std::size_t half = changes.below(line.size());
    session.client.process.send(line.substr(0, half));
    for (int count = 0; count < 5; ++count) changes.makeOneOutside();
    session.client.process.send(line.substr(half));
    session.answer();
    return {};
}

RandomFaults::End RandomFaults::reopening() {
    changes.note("the workspace is closed");
    session.closeWorkspace();
    return {};
}
