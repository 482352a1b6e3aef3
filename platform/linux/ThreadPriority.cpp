#include "platform/linux/ThreadPriority.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

void lowerThreadPriority() {
    // On Linux niceness belongs to the thread. A quarter of a contended core remains at this value.
    constexpr int niceness = 5;
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), niceness);
}

void keepTimeExactly() {
    constexpr unsigned long nanoseconds = 1; // zero would stand for the usual value
    ::prctl(PR_SET_TIMERSLACK, nanoseconds, 0UL, 0UL, 0UL);
}
