#pragma once

#include "platform/Environment.h"

// The variables that the process was started with; nothing in this program changes them.
class LinuxEnvironment final : public Environment {
public:
    std::optional<std::string> value(const std::string& name) const override;
};
