#include "workspace/WorkspaceErrors.h"

#include "shared/ErrorDomain.h"

PlatformError workspaceDirectoryUnavailableError() {
    return {std::string(daemonErrorDomain), 2001, "The requested directory is unavailable."};
}

PlatformError missingWorkspaceRootPathError() {
    return {std::string(daemonErrorDomain), 2100, "Missing workspace root path."};
}

PlatformError workspaceRootUnavailableError() {
    return {std::string(daemonErrorDomain), 2101, "The selected project root is unavailable."};
}

PlatformError missingItemPathError() {
    return {std::string(daemonErrorDomain), 2102, "Missing item path."};
}

PlatformError missingDestinationPathError() {
    return {std::string(daemonErrorDomain), 2103, "Missing destination path."};
}

PlatformError pathOutsideWorkspaceRootError() {
    return {std::string(daemonErrorDomain), 2200, "The selected path is outside the active project root."};
}
