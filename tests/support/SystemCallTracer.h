#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// Runs an action in a child process, one system call at a time, to see which it makes and what becomes of the disk when
// one of them fails or is the last, or when somebody else comes in between. Only calls that concern files are seen and
// counted, from 1; those that serve memory, threads or signals differ from build to build and are passed over.

enum class FaultKind {
    fail,      // the call is not executed and fails with the error number
    kill,      // the process ends before the call is executed
    interlude, // the interlude runs in the calling process before the call is executed
};

struct SystemCallFault {
    std::size_t call{}; // counted from 1, among all calls or, with a name, among those of that name
    FaultKind kind{};
    int errorNumber{};
    std::function<void()> interlude{};
    std::string name{};
};

enum class TraceEnding { returned, threw, killed };

struct Trace {
    std::vector<std::string> calls{}; // their names, as far as the action came
    TraceEnding ending{};
    int errorNumber{};     // of the PlatformError that was thrown
    std::string message{}; // what the action returned, or the text of what it threw
    std::string finding{}; // what was found afterwards
};

// Whether this system and processor allow tracing.
bool canTraceSystemCalls();

// A child that crashes, or hangs for a minute, is thrown as std::runtime_error. Afterwards, in the child and with no
// more faults, the other function looks at what became of its memory and of the disk.
Trace traceSystemCalls(
    const std::function<std::string()>& action, const std::vector<SystemCallFault>& faults = {},
    const std::function<std::string()>& afterwards = [] { return std::string(); });
