#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

// The one error that operations throw. The client only ever sees the description.
struct PlatformError : std::exception {
    PlatformError(std::string errorDomain, std::int64_t errorCode, std::string description)
        : domain(std::move(errorDomain)), code(errorCode), localizedDescription(std::move(description)) {}

    const char* what() const noexcept override { return localizedDescription.c_str(); }

    std::string domain;
    std::int64_t code;
    // A file name inside it stands byte for byte as on disk; it is made fit for the wire where it is written.
    std::string localizedDescription;
};

inline constexpr std::string_view posixErrorDomain = "POSIX";

// Turns an errno value into an error: "Cannot <action> “<path>”: <the system's text>." An empty path is left out.
PlatformError posixError(int errorNumber, std::string_view action, std::string_view path = {});
