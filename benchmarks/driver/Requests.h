#pragma once

#include <string>
#include <string_view>

// The lines that the driver sends. The paths that it makes need no escapes.

inline std::string closeRequest() {
    return R"({"requestID":"1","command":"close","documentID":"none"})"
           "\n";
}

inline std::string openRequest(const std::string& path) {
    return R"({"requestID":"1","command":"open","path":")" + path + "\"}\n";
}

inline std::string openWorkspaceRequest(const std::string& path) {
    return R"({"requestID":"1","command":"openWorkspace","rootPath":")" + path + "\"}\n";
}

inline std::string listRequest(const std::string& path) {
    return R"({"requestID":"1","command":"loadWorkspaceChildren","rootPath":")" + path + R"(","path":")" + path +
           "\"}\n";
}

// The value of a key that is a string without escapes.
inline std::string_view stringValue(std::string_view line, std::string_view key) {
    const std::string opening = '"' + std::string(key) + "\":\"";
    const std::size_t begin = line.find(opening);
    if (begin == std::string_view::npos) return {};
    line.remove_prefix(begin + opening.size());
    return line.substr(0, line.find('"'));
}
