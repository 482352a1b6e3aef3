#pragma once

#include <string>
#include <string_view>

// Standard alphabet, padded, in one line.
std::string base64(std::string_view bytes);
