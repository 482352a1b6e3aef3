#pragma once

#include "platform/PlatformError.h"

// What is refused in the daemon's own name when a request of the workspace is looked at.
PlatformError workspaceDirectoryUnavailableError(); // 2001
PlatformError missingWorkspaceRootPathError();      // 2100
PlatformError workspaceRootUnavailableError();      // 2101
PlatformError missingItemPathError();               // 2102
PlatformError missingDestinationPathError();        // 2103
PlatformError pathOutsideWorkspaceRootError();      // 2200
