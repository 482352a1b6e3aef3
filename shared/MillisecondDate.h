#pragma once

#include <chrono>
#include <ratio>

// A moment as files keep it: milliseconds since 1970-01-01 00:00:00 UTC, whole or with a fraction. It is held as the
// very number that stands in the file, so that every date, however far from today, comes back exactly as it was. A time
// of std::chrono::system_clock converts by itself and is rounded then, in our days to a quarter of a microsecond.
using MillisecondDate = std::chrono::sys_time<std::chrono::duration<double, std::milli>>;
