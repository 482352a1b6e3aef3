#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "platform/linux/TemporaryName.h"
#include "tests/support/DirectorySnapshot.h"

// A whole directory, by relative path, in what two runs of one operation have in common: type, mode, owner, extended
// attributes, bytes, where links lead, and of files and links whether their time is the old one of the beginning.
// Temporaries are only counted.
struct World {
    std::map<std::string, std::string> entries{};
    std::set<std::string> temporaries{};
};

inline constexpr std::time_t oldTime = 1'000'000'000;

// The text with what differs from run to run left out: the directory's own path, and the date in the trash.
inline std::string withoutPlaceAndDate(std::string text, const std::string& directoryPath) {
    for (std::size_t at; (at = text.find(directoryPath)) != std::string::npos;)
        text.replace(at, directoryPath.size(), "@");
    if (const std::size_t date = text.find("DeletionDate="); date != std::string::npos) text.resize(date);
    return text;
}

inline std::string describeForever(const std::filesystem::path& path, const std::string& directoryPath) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return "vanished";
    std::string text =
        std::to_string(status.st_mode) + " " + std::to_string(status.st_uid) + " " + extendedAttributes(path);
    if (!S_ISDIR(status.st_mode)) text += status.st_mtim.tv_sec == oldTime ? "old " : "new ";
    if (S_ISLNK(status.st_mode)) text += std::filesystem::read_symlink(path).string();
    if (!S_ISREG(status.st_mode)) return text;
    std::ifstream file(path, std::ios::binary);
    return text + withoutPlaceAndDate({std::istreambuf_iterator<char>(file), {}}, directoryPath);
}

inline World worldAt(const std::string& directoryPath) {
    World world;
    for (auto entry = std::filesystem::recursive_directory_iterator(directoryPath);
         entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        const std::string path = entry->path().lexically_relative(directoryPath).string();
        if (isTemporarySaveName(entry->path().filename().string())) {
            world.temporaries.insert(path);
            entry.disable_recursion_pending();
        } else {
            world.entries[path] = describeForever(entry->path(), directoryPath);
        }
    }
    return world;
}

// Whether all of the one is in the other, unchanged.
inline bool isWithin(const World& world, const World& other) {
    return std::includes(other.entries.begin(), other.entries.end(), world.entries.begin(), world.entries.end());
}

inline std::string differenceOf(const World& world, const World& other) {
    std::string text;
    for (const auto& [path, description] : world.entries) {
        const auto found = other.entries.find(path);
        if (found == other.entries.end())
            text += " +" + path;
        else if (found->second != description)
            text += " ~" + path;
    }
    for (const auto& [path, description] : other.entries) {
        if (!world.entries.contains(path)) text += " -" + path;
    }
    return text;
}
