#include "platform/linux/LinuxEnvironment.h"

#include <cstdlib>

std::optional<std::string> LinuxEnvironment::value(const std::string& name) const {
    const char* value = std::getenv(name.c_str());
    return value ? std::optional<std::string>(value) : std::nullopt;
}
