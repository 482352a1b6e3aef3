#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

// What is taken from another process for as long as the object lives.

// The resource as setrlimit knows it.
class ProcessLimit {
public:
    ProcessLimit(pid_t limitedProcess, __rlimit_resource limitedResource, rlim_t limit)
        : process(limitedProcess), resource(limitedResource) {
        if (::prlimit(process, resource, nullptr, &before) != 0) throw std::runtime_error("cannot read a limit");
        const rlimit lowered{limit, before.rlim_max};
        if (::prlimit(process, resource, &lowered, nullptr) != 0) throw std::runtime_error("cannot set a limit");
    }
    ProcessLimit(const ProcessLimit&) = delete;
    ProcessLimit& operator=(const ProcessLimit&) = delete;
    ~ProcessLimit() { ::prlimit(process, resource, &before, nullptr); }

private:
    const pid_t process;
    const __rlimit_resource resource;
    rlimit before{};
};

// The address space that the process has.
inline rlim_t addressSpace(pid_t process) {
    std::ifstream statistics("/proc/" + std::to_string(process) + "/statm");
    rlim_t pages = 0;
    statistics >> pages;
    return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

// Those that are open stay so, whatever the limit is.
inline rlim_t firstFreeDescriptor(pid_t process) {
    const std::string descriptors = "/proc/" + std::to_string(process) + "/fd/";
    rlim_t number = 0;
    while (std::filesystem::is_symlink(std::filesystem::symlink_status(descriptors + std::to_string(number)))) ++number;
    return number;
}

// The process itself, so that the kernel drops what it has no more room for.
class StoppedProcess {
public:
    explicit StoppedProcess(pid_t stoppedProcess) : process(stoppedProcess) {
        ::kill(process, SIGSTOP);
        ::waitpid(process, nullptr, WUNTRACED);
    }
    StoppedProcess(const StoppedProcess&) = delete;
    StoppedProcess& operator=(const StoppedProcess&) = delete;
    ~StoppedProcess() { ::kill(process, SIGCONT); }

private:
    const pid_t process;
};
