#pragma once

#include <string>
#include <string_view>

// Standard alphabet, padded, in one line.
void appendBase64(std::string& text, std::string_view bytes);
