#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "platform/Environment.h"

// An environment of nothing but the variables that the test sets.
class VariableEnvironment final : public Environment {
public:
    using Variables = std::map<std::string, std::string>;

    explicit VariableEnvironment(Variables given = {}) : variables(std::move(given)) {}

    std::optional<std::string> value(const std::string& name) const override {
        const auto variable = variables.find(name);
        return variable == variables.end() ? std::nullopt : std::optional(variable->second);
    }

    Variables variables;
};
