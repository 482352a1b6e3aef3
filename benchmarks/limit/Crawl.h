#pragma once

#include <dirent.h>
#include <sys/inotify.h>

#include <utility>
#include <vector>

#include "Limit.h"

// Goes through a tree depth first and keeps the inode and the name of everything in it, as compactly as is simple.
struct Crawl {
    int inotify = -1;                       // negative: nothing is watched
    std::vector<std::string> pathByWatch{}; // of the folders that are watched
    std::vector<std::uint64_t> inodes{};
    std::string names{};

    void watch(const std::string& path) {
        constexpr std::uint32_t mask = IN_ATTRIB | IN_MODIFY | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_DELETE_SELF |
                                       IN_MOVE_SELF | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR | IN_EXCL_UNLINK;
        const int number = ::inotify_add_watch(inotify, path.c_str(), mask);
        require(number >= 0, "inotify_add_watch");
        if (static_cast<std::size_t>(number) >= pathByWatch.size())
            pathByWatch.resize(static_cast<std::size_t>(number) + 1);
        pathByWatch[static_cast<std::size_t>(number)] = path;
    }

    void visit(const std::string& path, std::vector<std::string>& pending) {
        const int directory = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        require(directory >= 0, "open");
        if (inotify >= 0) watch(path);
        alignas(dirent64) std::array<char, 32 * 1024> buffer;
        for (ssize_t filled = 0; (filled = ::getdents64(directory, buffer.data(), buffer.size())) > 0;) {
            for (ssize_t position = 0; position < filled;) {
                const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + position);
                position += entry->d_reclen;
                const std::string_view name = entry->d_name;
                if (name == "." || name == "..") continue;
                inodes.push_back(entry->d_ino);
                (names += name) += '\0';
                if (entry->d_type == DT_DIR) ((pending.emplace_back(path)) += '/') += name;
            }
        }
        ::close(directory);
    }

    void all(const std::string& rootPath) {
        std::vector<std::string> pending{rootPath};
        while (!pending.empty()) {
            const std::string path = std::move(pending.back());
            pending.pop_back();
            visit(path, pending);
        }
    }
};
