#pragma once

#include <string>
#include <string_view>

// The text of a path, taken apart and put together without asking the disk. Paths are byte strings.

// Equal to the directory, or beginning with it and "/". Both in normal form; "/" contains every absolute path.
bool isAtOrWithin(std::string_view path, std::string_view directoryPath);

// An absolute path with runs of "/" collapsed, "." dropped, ".." taking the component before it away (without asking
// where links lead; at the root it vanishes), and no "/" at the end but for the root itself.
std::string standardizedPath(std::string_view absolutePath);

// What follows the last "/", a "/" at the end not counted.
std::string lastPathComponent(std::string_view path);

// The directory that contains the item. The root contains itself.
std::string parentPath(std::string_view path);

// One "/" stands between the two, also after the root.
std::string appendingPathComponent(std::string_view directoryPath, std::string_view name);

// A name in two parts. The extension is empty where the name has none; the dot belongs to neither.
struct NameParts {
    std::string stem{};
    std::string extension{};

    bool operator==(const NameParts&) const = default;
};

// The extension follows the last dot. A name that begins with "..", ends with ".", or whose only dot is its first
// character has none, nor has one whose last part holds a blank or a bidirectional control.
NameParts nameParts(std::string_view name);

// The name again, with something set between the stem and the extension.
std::string nameWithSuffix(const NameParts& parts, std::string_view suffix);
