#pragma once

#include <cerrno>
#include <system_error>

// Repeats a system call for as long as a signal interrupts it.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

// Hands on the result of a system call; a failed one is thrown. Inside the platform the error number alone travels so;
// the operation that knows the path and what was wanted turns it into a PlatformError.
template <class Result>
Result checked(Result result) {
    if (result < 0) throw std::system_error(errno, std::generic_category());
    return result;
}
