#include "driver/TemporaryTree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/linux/TemporaryFolder.h"

namespace {

void checked(int result, const std::string& path) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), path);
}

} // namespace

TemporaryTree::TemporaryTree() : rootPath(makeTemporaryFolder("daemon-benchmark-")) {}

TemporaryTree::~TemporaryTree() {
    std::error_code ignored;
    std::filesystem::remove_all(rootPath, ignored);
}

std::vector<std::string> TemporaryTree::makeFolders(const std::string& name, std::size_t fileCount,
                                                    std::size_t folderCount) const {
    std::vector<std::string> folders{rootPath + '/' + name};
    makeFolder(folders[0]);
    for (std::size_t number = 1; number < folderCount; ++number) {
        folders.push_back(folders[(number - 1) / 10] + "/folder" + std::to_string(number));
        makeFolder(folders.back());
    }
    // Folder by folder, as a project comes about, so that neighbours lie beside each other on the disk.
    for (std::size_t folder = 0; folder < folderCount; ++folder) {
        for (std::size_t number = folder; number < fileCount; number += folderCount) {
            makeFile(folders[folder] + "/file" + std::to_string(number) + ".txt");
        }
    }
    return folders;
}

std::string TemporaryTree::makeFlatFolder(const std::string& name, std::size_t entryCount) const {
    const std::string folder = rootPath + '/' + name;
    makeFolder(folder);
    for (std::size_t number = 0; number < entryCount; ++number) {
        const std::string path = folder + (number % 3 == 0 ? "/Report " : "/source") + std::to_string(number);
        number % 50 == 49 ? makeFolder(path) : makeFile(path + (number % 2 == 0 ? ".txt" : ".cpp"));
    }
    return folder;
}

void makeFile(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    checked(file, path);
    ::close(file);
}

void makeFolder(const std::string& path) {
    checked(::mkdir(path.c_str(), 0755), path);
}
