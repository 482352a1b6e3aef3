#include "platform/LockedFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "tests/support/Files.h"
#include "tests/support/SystemCallTracer.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

const std::string oldBytes(9000, 'o');
const std::string newBytes(7000, 'n');

Trace traceRewrite(const std::string& path, const std::vector<SystemCallFault>& faults = {}) {
    return traceSystemCalls(
        [&] {
            LockedFile file(path);
            std::string contents = file.contents();
            file.rewrite(newBytes);
            return contents;
        },
        faults);
}

TEST(LockedFile, EveryCallThatFailsIsReportedAndTheOldContentsStay) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    for (const int error : {EIO, ENOSPC, ENOLCK, EINTR}) {
        for (std::size_t call = 1;; ++call) {
            const TemporaryDirectory directory;
            writeFile(directory.path("file"), oldBytes);
            const Trace trace = traceRewrite(directory.path("file"), {{call, FaultKind::fail, error, {}, {}}});
            if (trace.calls.size() < call) break;
            SCOPED_TRACE(std::to_string(call) + " " + trace.calls[call - 1] + ": " + std::strerror(error));
            const std::string name = trace.calls[call - 1];
            // What comes after the bytes are safe can no longer fail, and a status is never interrupted.
            const bool isAfterwards =
                std::ranges::count(trace.calls, "fsync") == 1 && name != "fsync" &&
                std::ranges::find(trace.calls, "fsync") - trace.calls.begin() < static_cast<std::ptrdiff_t>(call);
            const bool isSaved = isAfterwards || (error == EINTR && name != "fstat");
            EXPECT_EQ(trace.ending, isSaved ? TraceEnding::returned : TraceEnding::threw);
            EXPECT_EQ(trace.errorNumber, isSaved ? 0 : error);
            EXPECT_EQ(readFile(directory.path("file")), isSaved ? newBytes : oldBytes);
        }
    }
}

// A disk that fails for good cannot take the old contents back either; the first failure is told all the same.
TEST(LockedFile, AFailureThatStaysIsReportedOnce) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), oldBytes);
    const Trace trace = traceRewrite(directory.path("file"), {{1, FaultKind::fail, ENOSPC, {}, "pwrite64"},
                                                              {2, FaultKind::fail, EIO, {}, "pwrite64"}});
    EXPECT_EQ(trace.errorNumber, ENOSPC);
    EXPECT_EQ(trace.message, "Cannot write “" + directory.path("file") + "”: No space left on device.");
}

TEST(LockedFile, AProcessThatDiesLeavesTheOldTheNewOrNothing) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    int emptyCount = 0;
    for (std::size_t call = 1;; ++call) {
        const TemporaryDirectory directory;
        writeFile(directory.path("file"), oldBytes);
        const Trace trace = traceRewrite(directory.path("file"), {{call, FaultKind::kill, 0, {}, {}}});
        if (trace.ending != TraceEnding::killed) break;
        const std::string left = readFile(directory.path("file"));
        EXPECT_TRUE(left == oldBytes || left == newBytes || left.empty()) << left.size();
        emptyCount += left.empty() ? 1 : 0;
        EXPECT_EQ(LockedFile(directory.path("file")).contents(), left) << "the lock died with its holder";
    }
    EXPECT_EQ(emptyCount, 1) << "the window is between truncating and writing, and nothing else happens in it";
}

TEST(LockedFile, WhatIsNoFileIsRefused) {
    const TemporaryDirectory directory;
    std::filesystem::create_directory(directory.path("directory"));
    ASSERT_EQ(::mkfifo(directory.path("fifo").c_str(), 0600), 0);
    const std::pair<std::string, int> rows[] = {
        {"directory", EISDIR}, {"fifo", EOPNOTSUPP}, {"missing/file", ENOENT}, {std::string("a\0b", 3), ENOENT}};
    for (const auto& [name, code] : rows) {
        try {
            LockedFile file(directory.path(name));
            ADD_FAILURE() << name;
        } catch (const PlatformError& error) {
            EXPECT_EQ(error.code, code) << name;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(directory.path("a"))) << "a name is not cut off at a NUL";
}

TEST(LockedFile, ALinkThatLeadsNowhereGetsItsFile) {
    const TemporaryDirectory directory;
    std::filesystem::create_symlink("target", directory.path("link"));
    LockedFile(directory.path("link")).rewrite("x");
    EXPECT_EQ(readFile(directory.path("target")), "x");
}

// A signal handler ends the waiting call without the lock.
TEST(LockedFile, ASignalDoesNotEndTheWaiting) {
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), oldBytes);
    struct sigaction withoutRestart {
    }, before{};
    withoutRestart.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &withoutRestart, &before);
    const Descriptor holder(::open(directory.path("file").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(holder.get(), LOCK_EX), 0);
    std::thread waiting([&] { EXPECT_EQ(LockedFile(directory.path("file")).contents(), oldBytes); });
    for (int signal = 0; signal < 1000; ++signal) {
        ::pthread_kill(waiting.native_handle(), SIGUSR1);
        std::this_thread::yield();
    }
    ::flock(holder.get(), LOCK_UN);
    waiting.join();
    ::sigaction(SIGUSR1, &before, nullptr);
}

} // namespace
