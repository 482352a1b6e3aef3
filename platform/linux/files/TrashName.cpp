#include "platform/linux/files/TrashName.h"

#include "platform/linux/files/NamePrefix.h"

namespace {

constexpr std::size_t nameLimit = 255 - std::string_view(".trashinfo").size();

// With its dot; empty for a hidden name such as ".profile", and for one so long that the stem would not fit any more.
std::string_view extension(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    const std::string_view found = name.substr(dot);
    return found.size() > nameLimit / 2 ? std::string_view() : found;
}

bool isPlain(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           std::string_view("-_.~/").find(c) != std::string_view::npos;
}

} // namespace

std::string trashName(std::string_view name, int attempt) {
    std::string ending;
    if (attempt > 1) ending += "." + std::to_string(attempt);
    const std::string_view nameExtension = extension(name);
    ending += nameExtension;
    const std::string_view stem = name.substr(0, name.size() - nameExtension.size());
    return std::string(namePrefix(stem, nameLimit - ending.size())) + ending;
}

std::string percentEncoded(std::string_view path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : path) {
        if (isPlain(c)) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return encoded;
}
