#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>

inline void writeFile(const std::string& path, std::string_view bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.flush()) << path;
}

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

// Makes below the folder what the words name: "a/" is a folder, "a/b" a file whose text is its path, "a>b" a link to b,
// "a|" a FIFO and "a=" a socket. Folders on the way to an item are made, so that "a/." is one more folder.
inline void makeTree(const std::string& folder, const std::string& words) {
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
        const auto arrow = word.find('>');
        const std::string path = folder + '/' + word.substr(0, arrow), bare = path.substr(0, path.size() - 1);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        if (arrow != std::string::npos)
            std::filesystem::create_symlink(word.substr(arrow + 1), path);
        else if (word.ends_with('|') || word.ends_with('='))
            ASSERT_EQ(::mknod(bare.c_str(), (word.ends_with('|') ? S_IFIFO : S_IFSOCK) | 0600, 0), 0) << path;
        else if (!word.ends_with('/') && !word.ends_with("/."))
            writeFile(path, word);
    }
}
