#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Environment.h"

// The home of the process's user ($HOME where it is absolute, else the user database) or, by name, of another user;
// absent where the user is unknown.
std::optional<std::string> homeDirectory(const Environment& environment, std::string_view userName = {});
