#pragma once

#include <string>
#include <string_view>

// The hidden names under which a file or folder is put together beside the place where it will appear. Whoever meets
// such a name may pass over it: it is unfinished, or left by a process that died.

// A fresh name for the item that is to be called targetName: "." + the beginning of that name + ".edsave-" + 16 random
// hexadecimal digits. Throws when the system has no random bytes.
std::string temporaryName(std::string_view targetName);

// Whether the name (not a path) has the form that temporaryName gives.
bool isTemporarySaveName(std::string_view name);
