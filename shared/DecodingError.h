#pragma once

#include <exception>
#include <string>
#include <utility>

// Why a message could not be decoded, in one sentence for the person who debugs the other side.
struct DecodingError : std::exception {
    explicit DecodingError(std::string description) : localizedDescription(std::move(description)) {}

    const char* what() const noexcept override { return localizedDescription.c_str(); }

    std::string localizedDescription;
};
