#pragma once

#include <optional>
#include <string>

// The process's environment variables. May be called on any queue.
class Environment {
public:
    virtual ~Environment() = default;

    virtual std::optional<std::string> value(const std::string& name) const = 0;
};
