#pragma once

#include <grp.h>
#include <unistd.h>

#include <stdexcept>

inline constexpr uid_t ordinaryUserID = 65534;

// Root passes every permission test, so tests of permissions give up that right. For a process that ends afterwards,
// such as the child of traceSystemCalls: there is no way back. Does nothing for a process that has no such right.
inline void becomeOrdinaryUser() {
    if (::geteuid() != 0) return;
    if (::setgroups(0, nullptr) != 0 || ::setegid(ordinaryUserID) != 0 || ::seteuid(ordinaryUserID) != 0)
        throw std::runtime_error("cannot become an ordinary user");
}
