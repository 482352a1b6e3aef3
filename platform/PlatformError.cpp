#include "platform/PlatformError.h"

#include <system_error>

PlatformError posixError(int errorNumber, std::string_view action, std::string_view path) {
    std::string description = "Cannot ";
    description += action;
    if (!path.empty()) {
        description += " “";
        description += path;
        description += "”";
    }
    description += ": " + std::generic_category().message(errorNumber) + ".";
    return PlatformError(std::string(posixErrorDomain), errorNumber, std::move(description));
}
