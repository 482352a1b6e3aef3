#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

// What must hold for every input. A fuzzer knows a fault by the end of its process.
inline void require(bool holds, std::string_view complaint) {
    if (holds) return;
    std::fprintf(stderr, "%.*s\n", static_cast<int>(complaint.size()), complaint.data());
    std::abort();
}
