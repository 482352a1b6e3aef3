#include "tests/support/SystemCallTracer.h"

#include <elf.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"

namespace {

// Closing a descriptor that cannot exist marks begin and end of the action; it does nothing else.
constexpr long marker = -4242;

struct SystemCall {
    long number{};
    std::array<std::uint64_t, 6> arguments{};
};

const std::map<long, std::string>& fileCallNames() {
#define NAMED(call) std::pair<const long, std::string>(SYS_##call, #call)
    static const std::map<long, std::string> names = [] {
        std::map<long, std::string> result{
            NAMED(openat),     NAMED(close),      NAMED(read),        NAMED(pread64),      NAMED(write),
            NAMED(pwrite64),   NAMED(lseek),      NAMED(fstat),       NAMED(statx),        NAMED(statfs),
            NAMED(fstatfs),    NAMED(readlinkat), NAMED(faccessat),   NAMED(faccessat2),   NAMED(getdents64),
            NAMED(linkat),     NAMED(symlinkat),  NAMED(unlinkat),    NAMED(renameat),     NAMED(renameat2),
            NAMED(mkdirat),    NAMED(mknodat),    NAMED(fchmod),      NAMED(fchmodat),     NAMED(fchown),
            NAMED(fchownat),   NAMED(utimensat),  NAMED(ftruncate),   NAMED(fallocate),    NAMED(copy_file_range),
            NAMED(sendfile),   NAMED(fsync),      NAMED(fdatasync),   NAMED(syncfs),       NAMED(flock),
            NAMED(fcntl),      NAMED(ioctl),      NAMED(dup),         NAMED(getxattr),     NAMED(lgetxattr),
            NAMED(fgetxattr),  NAMED(setxattr),   NAMED(lsetxattr),   NAMED(fsetxattr),    NAMED(listxattr),
            NAMED(llistxattr), NAMED(flistxattr), NAMED(removexattr), NAMED(lremovexattr), NAMED(fremovexattr)};
#ifdef SYS_open
        // The older forms, which only some processors have.
        result.insert({NAMED(open), NAMED(stat), NAMED(lstat), NAMED(readlink), NAMED(access), NAMED(link),
                       NAMED(symlink), NAMED(unlink), NAMED(rename), NAMED(mkdir), NAMED(rmdir), NAMED(mknod),
                       NAMED(chmod), NAMED(chown), NAMED(lchown)});
#endif
        return result;
    }();
#undef NAMED
    return names;
}

// The name of a call that concerns files; empty for another. C libraries differ in how they ask for a file's status, so
// that one call goes by what is asked.
std::string fileCallName(const SystemCall& call) {
    if (call.number == SYS_newfstatat) {
        if (call.arguments[3] & AT_EMPTY_PATH) return "fstat";
        return call.arguments[3] & AT_SYMLINK_NOFOLLOW ? "lstat" : "stat";
    }
    const auto name = fileCallNames().find(call.number);
    return name == fileCallNames().end() ? std::string() : name->second;
}

bool isPipeCall(long number) {
#ifdef SYS_pipe
    if (number == SYS_pipe) return true;
#endif
    return number == SYS_pipe2;
}

#if defined(__x86_64__)

constexpr bool isKnownProcessor = true;

void skipCall(pid_t child) {
    ::ptrace(PTRACE_POKEUSER, child, offsetof(user_regs_struct, orig_rax), -1L);
}

void setResult(pid_t child, long result) {
    ::ptrace(PTRACE_POKEUSER, child, offsetof(user_regs_struct, rax), result);
}

#elif defined(__aarch64__)

constexpr bool isKnownProcessor = true;

void skipCall(pid_t child) {
    int none = -1;
    iovec data{&none, sizeof none};
    ::ptrace(PTRACE_SETREGSET, child, NT_ARM_SYSTEM_CALL, &data);
}

void setResult(pid_t child, long result) {
    user_regs_struct registers{};
    iovec data{&registers, sizeof registers};
    ::ptrace(PTRACE_GETREGSET, child, NT_PRSTATUS, &data);
    registers.regs[0] = static_cast<unsigned long long>(result);
    ::ptrace(PTRACE_SETREGSET, child, NT_PRSTATUS, &data);
}

#else

constexpr bool isKnownProcessor = false;

void skipCall(pid_t) {}
void setResult(pid_t, long) {}

#endif

void mark() {
    ::syscall(SYS_close, marker);
}

// What the child has to say: how it ended, the error number, a blank, the message.
std::string outcomeOf(const std::function<std::string()>& action) {
    try {
        mark();
        const std::string result = action();
        mark();
        return "r0 " + result;
    } catch (const PlatformError& error) {
        mark();
        return "t" + std::to_string(error.code) + " " + error.localizedDescription;
    } catch (const std::exception& error) {
        mark();
        return std::string("t0 ") + error.what();
    }
}

// The child must not run the parent's exit handlers nor a sanitizer's final checks, hence _exit.
[[noreturn]] void runChild(const std::function<std::string()>& action, const std::function<std::string()>& afterwards,
                           int outcome) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::alarm(60);
    ::kill(::getpid(), SIGSTOP);
    std::string text = outcomeOf(action);
    text += '\0' + afterwards();
    const bool isWritten = ::write(outcome, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ::_exit(isWritten ? 0 : 1);
}

// Follows one child from stop to stop.
class Tracer {
public:
    Tracer(pid_t process, const std::vector<SystemCallFault>& planned) : child(process), faults(planned) {}

    Trace run() {
        int status = waitForStop();
        ::ptrace(PTRACE_SETOPTIONS, child, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        int signal = 0;
        while (true) {
            ::ptrace(PTRACE_SYSCALL, child, 0, static_cast<long>(signal));
            status = waitForStop();
            if (!WIFSTOPPED(status)) break;
            const bool isSystemCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
            signal = isSystemCall ? 0 : WSTOPSIG(status);
            if (isSystemCall) atSystemCall();
        }
        if (!isKilled && !(WIFEXITED(status) && WEXITSTATUS(status) == 0))
            throw std::runtime_error("the traced process crashed or hung, wait status " + std::to_string(status));
        if (isKilled) trace.ending = TraceEnding::killed;
        return trace;
    }

private:
    int waitForStop() const {
        int status = 0;
        while (::waitpid(child, &status, __WALL) < 0)
            if (errno != EINTR) throw std::runtime_error(std::string("waitpid: ") + std::strerror(errno));
        return status;
    }

    void atSystemCall() {
        __ptrace_syscall_info info{};
        ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
            atEntry({static_cast<long>(info.entry.nr), std::to_array(info.entry.args)});
        else if (info.op == PTRACE_SYSCALL_INFO_EXIT)
            atExit();
    }

    void atEntry(const SystemCall& call) {
        latest = call;
        const int descriptor = static_cast<int>(call.arguments[0]);
        if (call.number == SYS_close && descriptor == marker) {
            isInside = !isInside;
            return;
        }
        const std::string name = fileCallName(call);
        if (!isInside || name.empty() || concernsPipe(name, descriptor)) return;
        trace.calls.push_back(name);
        const auto fault = std::ranges::find_if(faults, [&](const SystemCallFault& each) { return isDue(each); });
        if (fault != faults.end()) apply(*fault);
    }

    void atExit() {
        if (pendingError != 0) setResult(child, -std::exchange(pendingError, 0));
        if (!isPipeCall(latest.number)) return;
        // Both descriptors of a pipe fit in one word.
        const long word = ::ptrace(PTRACE_PEEKDATA, child, latest.arguments[0], 0);
        std::array<int, 2> ends{};
        std::memcpy(ends.data(), &word, sizeof ends);
        pipeEnds.insert(ends.begin(), ends.end());
    }

    // A pipe is no file; sanitizers probe memory with one, which must neither be counted nor fail.
    bool concernsPipe(const std::string& name, int descriptor) {
        if (name == "close") return pipeEnds.erase(descriptor) > 0;
        return (name == "write" || name == "read") && pipeEnds.contains(descriptor);
    }

    // Whether the fault is meant for the latest call.
    bool isDue(const SystemCallFault& fault) const {
        if (fault.name.empty()) return fault.call == trace.calls.size();
        return fault.name == trace.calls.back() &&
               static_cast<std::ptrdiff_t>(fault.call) == std::ranges::count(trace.calls, fault.name);
    }

    void apply(const SystemCallFault& fault) {
        switch (fault.kind) {
            case FaultKind::fail:
                skipCall(child);
                pendingError = fault.errorNumber;
                break;
            case FaultKind::kill:
                ::kill(child, SIGKILL);
                isKilled = true;
                break;
            case FaultKind::interlude:
                fault.interlude();
                break;
        }
    }

    pid_t child;
    const std::vector<SystemCallFault>& faults;
    Trace trace;
    bool isInside = false;
    bool isKilled = false;
    int pendingError = 0;
    SystemCall latest;
    std::set<int> pipeEnds;
};

std::string readToEnd(int descriptor) {
    std::string text;
    char buffer[4096];
    for (ssize_t count; (count = ::read(descriptor, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(count));
    return text;
}

} // namespace

bool canTraceSystemCalls() {
    if (!isKnownProcessor) return false;
    const pid_t child = ::fork();
    if (child == 0) ::_exit(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Trace traceSystemCalls(const std::function<std::string()>& action, const std::vector<SystemCallFault>& faults,
                       const std::function<std::string()>& afterwards) {
    int ends[2];
    if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
    const Descriptor outcome(ends[0]);
    Descriptor childEnd(ends[1]);
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) runChild(action, afterwards, childEnd.get());
    childEnd.close();
    Trace trace = Tracer(child, faults).run();
    if (trace.ending == TraceEnding::killed) return trace;
    const std::string text = readToEnd(outcome.get());
    if (text.empty()) throw std::runtime_error("the traced process ended without a result");
    trace.ending = text.at(0) == 't' ? TraceEnding::threw : TraceEnding::returned;
    trace.errorNumber = std::stoi(text.substr(1));
    const std::size_t message = text.find(' ') + 1, end = text.rfind('\0');
    trace.message = text.substr(message, end - message);
    trace.finding = text.substr(end + 1);
    return trace;
}
