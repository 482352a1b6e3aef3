#include "platform/LockedFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <thread>

#include "platform/linux/Descriptor.h"
#include "tests/support/ErrorOf.h"
#include "tests/support/Files.h"
#include "tests/support/SystemCallTracer.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

const std::string oldBytes(9000, 'o');

// A disk that fails for good cannot take the old contents back either; the first failure is told all the same.
TEST(LockedFile, AFailureThatStaysIsReportedOnce) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), oldBytes);
    const Trace trace = traceSystemCalls(
        [&] {
            LockedFile(directory.path("file")).rewrite("new");
            return std::string();
        },
        {{1, FaultKind::fail, ENOSPC, {}, "pwrite64"}, {2, FaultKind::fail, EIO, {}, "pwrite64"}});
    EXPECT_EQ(trace.errorNumber, ENOSPC);
    EXPECT_EQ(trace.message, "Cannot write “" + directory.path("file") + "”: No space left on device.");
}

// A limit on the size of files stops a write half-way, as a full disk does.
TEST(LockedFile, AWriteThatStopsHalfWayIsTakenBack) {
    if (!canTraceSystemCalls()) GTEST_SKIP() << "this system allows no tracing";
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), oldBytes);
    const Trace trace = traceSystemCalls([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{.rlim_cur = oldBytes.size() + 100, .rlim_max = RLIM_INFINITY};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        LockedFile(directory.path("file")).rewrite(std::string(20'000, 'n'));
        return std::string();
    });
    EXPECT_EQ(trace.errorNumber, EFBIG) << trace.message;
    EXPECT_EQ(readFile(directory.path("file")), oldBytes);
}

TEST(LockedFile, WhatIsNoFileIsRefused) {
    const TemporaryDirectory directory;
    makeTree(directory.path(), "directory/ fifo|");
    const std::pair<std::string, int> rows[] = {
        {"directory", EISDIR}, {"fifo", EOPNOTSUPP}, {"missing/file", ENOENT}, {std::string("a\0b", 3), ENOENT}};
    for (const auto& [name, code] : rows) {
        EXPECT_EQ(errorOf([&, path = directory.path(name)] { LockedFile file(path); }).code, code) << name;
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
