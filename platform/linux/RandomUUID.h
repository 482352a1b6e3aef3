#pragma once

#include <string>

// A random UUID (version 4) in upper-case hexadecimal, grouped 8-4-4-4-12.
std::string makeRandomUUID();
