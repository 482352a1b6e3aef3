#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <thread>
#include <utility>

#include "tests/process/DaemonProcess.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryDirectory.h"

// Clients that do what no client should. The daemon needs no more memory than they sent, and ends with its input.

namespace {

constexpr std::size_t megabyte = 1 << 20;

// The most memory that the process ever had.
std::size_t mostMemoryOf(const DaemonProcess& daemon) {
    std::ifstream status("/proc/" + std::to_string(daemon.processID()) + "/status");
    for (std::string word; status >> word;) {
        if (std::size_t kilobytes = 0; word == "VmHWM:" && status >> kilobytes) return kilobytes * 1024;
    }
    throw std::runtime_error("no process");
}

bool hasEnded(const DaemonProcess& daemon) {
    const int process = static_cast<int>(::syscall(SYS_pidfd_open, daemon.processID(), 0));
    pollfd ended{.fd = process, .events = POLLIN, .revents = 0};
    const bool isReady = ::poll(&ended, 1, 60'000) == 1;
    ::close(process);
    return isReady;
}

TEST(HostileClient, ALineWithoutEndTakesNoMoreThanItsOwnSize) {
    DaemonProcess daemon;
    const std::string piece(megabyte, 'x');
    constexpr std::size_t count = 64;
    for (std::size_t sent = 0; sent < count; ++sent) daemon.send(piece);
    daemon.send("\n"); // and not the end of input, after which there would be no process to look at
    EXPECT_NE(daemon.readLine().value_or("").find("Failed to decode request: "), std::string::npos);
    // Of a buffer that doubles no more is touched than what is in it, and it moves by its pages.
    if (!IS_SANITIZED) {
        EXPECT_LT(mostMemoryOf(daemon), 3 * count * megabyte / 2);
    }
    daemon.closeInput();
    EXPECT_EQ(daemon.readLine(), std::nullopt);
    EXPECT_EQ(daemon.wait(), 0);
}

TEST(HostileClient, HalfALineAndThenTheEndIsAnsweredOnce) {
    const std::string line = R"( {"requestID":"1","command":"close","documentID":"é\n"}  )";
    for (std::size_t size = 0; size <= line.size(); size += 3) {
        DaemonProcess daemon;
        daemon.send(line.substr(0, size));
        daemon.closeInput();
        const bool isAnswered = daemon.readLine().has_value();
        // What ends in the middle of a character is no text, and what is blank is no line.
        const std::size_t inCharacter = line.find('\xA9');
        EXPECT_EQ(isAnswered, size > 1 && size != inCharacter) << size;
        EXPECT_EQ(daemon.readLine(), std::nullopt) << size;
        EXPECT_EQ(daemon.wait(), 0) << size;
    }
}

// Its requests stay in their pipe; after the end of input the answers that nobody takes are given up.
TEST(HostileClient, AReaderThatStopsReadingDoesNotKeepTheDaemonAlive) {
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), std::string(megabyte, 'x'));
    DaemonProcess daemon;
    for (int sent = 0; sent < 50; ++sent)
        daemon.sendLine(R"({"requestID":"1","command":"open","path":")" + directory.path("file") + "\"}");
    daemon.closeInput();
    ASSERT_TRUE(hasEnded(daemon));
    EXPECT_EQ(daemon.wait(), 0);
}

TEST(HostileClient, AReaderThatIsSlowGetsEverything) {
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), std::string(megabyte, 'x'));
    DaemonProcess daemon;
    constexpr int count = 30;
    for (int sent = 0; sent < count; ++sent)
        daemon.sendLine(R"({"requestID":"1","command":"open","path":")" + directory.path("file") + "\"}");
    daemon.closeInput();
    for (int answer = 0; answer < count; ++answer)
        ASSERT_EQ(daemon.readLine().value_or("").size() / 1000, (megabyte + 300) / 1000) << answer;
    EXPECT_EQ(daemon.readLine(), std::nullopt);
    EXPECT_EQ(daemon.wait(), 0);
}

// They wait in their pipe, and what they need in the daemon is the room of one, and of one answer.
TEST(HostileClient, RequestsFasterThanTheyCanBeServedAreServedInTheirOrder) {
    const TemporaryDirectory directory;
    writeFile(directory.path("file"), std::string(megabyte, 'x'));
    DaemonProcess daemon;
    constexpr int count = 6'000;
    std::thread sender([&] {
        std::string lines;
        for (int number = 0; number < count; ++number) {
            const std::string documentID(number % 100 == 0 ? megabyte : 1, 'x');
            lines += R"({"requestID":")" + std::to_string(number);
            lines += number % 100 == 50 ? R"(","command":"open","path":")" + directory.path("file")
                                        : R"(","command":"close","documentID":")" + documentID;
            lines += "\"}\n";
            if (lines.size() > megabyte) daemon.send(std::exchange(lines, {}));
        }
        daemon.send(lines);
    });
    for (int number = 0; number < count; ++number) {
        const std::string expected = R"({"kind":"response","requestID":")" + std::to_string(number) + "\",";
        ASSERT_TRUE(daemon.readLine().value_or("").starts_with(expected)) << number;
    }
    sender.join();
    if (!IS_SANITIZED) {
        EXPECT_LT(mostMemoryOf(daemon), 32 * megabyte);
    }
    daemon.closeInput();
    EXPECT_EQ(daemon.readLine(), std::nullopt);
    EXPECT_EQ(daemon.wait(), 0);
}

} // namespace
