#pragma once

#include <cstddef>
#include <string>
#include <vector>

// A folder of its own for one job, removed with all that is in it.
class TemporaryTree {
public:
    TemporaryTree();
    TemporaryTree(const TemporaryTree&) = delete;
    TemporaryTree& operator=(const TemporaryTree&) = delete;
    ~TemporaryTree();

    const std::string& path() const { return rootPath; }

    // Fills a new folder of the tree with folders, ten below each, and with empty files, spread evenly over them.
    // Returns the paths of the folders.
    std::vector<std::string> makeFolders(const std::string& name, std::size_t fileCount, std::size_t folderCount) const;
    // A new folder that holds so many empty files, and one folder for every fifty of them.
    std::string makeFlatFolder(const std::string& name, std::size_t entryCount) const;

private:
    std::string rootPath;
};

void makeFile(const std::string& path);
void makeFolder(const std::string& path);
