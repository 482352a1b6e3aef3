#include "workspace/PathComponents.h"

#include <algorithm>
#include <array>

namespace {

// What a person cannot see in an extension, or what turns the reading direction around.
constexpr std::array<std::string_view, 13> charactersOutsideExtensions = {
    " ",      "\u061C", "\u200E", "\u200F", "\u202A", "\u202B", "\u202C",
    "\u202D", "\u202E", "\u2066", "\u2067", "\u2068", "\u2069",
};

bool canBeExtension(std::string_view text) {
    if (text.empty()) return false;
    return std::none_of(charactersOutsideExtensions.begin(), charactersOutsideExtensions.end(),
                        [&](std::string_view character) { return text.find(character) != std::string_view::npos; });
}

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path;
}

// Most paths are. A component that begins with a dot may be one of the two that are not to stay.
bool isPlainlyStandardized(std::string_view path) {
    if (!path.starts_with('/')) return false;
    for (std::size_t slash = 0; slash != path.npos; slash = path.find('/', slash + 1)) {
        if (slash + 1 == path.size()) return path == "/";
        if (path[slash + 1] == '/' || path[slash + 1] == '.') return false;
    }
    return true;
}

} // namespace

bool isAtOrWithin(std::string_view path, std::string_view directoryPath) {
    if (directoryPath == "/") return path.starts_with('/');
    return path.starts_with(directoryPath) &&
           (path.size() == directoryPath.size() || path[directoryPath.size()] == '/');
}

std::string standardizedPath(std::string_view absolutePath) {
    if (isPlainlyStandardized(absolutePath)) return std::string(absolutePath);
    std::string result;
    result.reserve(absolutePath.size());
    while (!absolutePath.empty()) {
        const std::size_t slash = std::min(absolutePath.find('/'), absolutePath.size());
        const std::string_view component = absolutePath.substr(0, slash);
        absolutePath.remove_prefix(std::min(slash + 1, absolutePath.size()));
        if (component.empty() || component == ".") continue;
        if (component == "..") {
            result.resize(result.empty() ? 0 : result.rfind('/'));
        } else {
            (result += '/') += component;
        }
    }
    return result.empty() ? "/" : result;
}

std::string lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/") return "/";
    return std::string(path.substr(path.rfind('/') + 1));
}

std::string parentPath(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return "";
    return std::string(withoutTrailingSlashes(path.substr(0, slash + 1)));
}

std::string appendingPathComponent(std::string_view directoryPath, std::string_view name) {
    std::string path;
    path.reserve(directoryPath.size() + 1 + name.size());
    path += directoryPath;
    if (!path.ends_with('/')) path += '/';
    path += name;
    return path;
}

NameParts nameParts(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    const bool hasExtension =
        dot != std::string_view::npos && dot > 0 && !name.starts_with("..") && canBeExtension(name.substr(dot + 1));
    if (!hasExtension) return {.stem = std::string(name)};
    return {.stem = std::string(name.substr(0, dot)), .extension = std::string(name.substr(dot + 1))};
}

std::string nameWithSuffix(const NameParts& parts, std::string_view suffix) {
    std::string name = parts.stem;
    name += suffix;
    if (!parts.extension.empty()) (name += '.') += parts.extension;
    return name;
}
