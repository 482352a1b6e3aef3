#pragma once

#include <fcntl.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "platform/linux/Descriptor.h"

// A file system of its own, in memory, at a new directory, for as long as the object lives. Needs the right to mount:
// a test that finds `reason` filled skips itself with it.
class MountedDisk {
public:
    explicit MountedDisk(std::string mountPath, const std::string& options = "size=1m") : path(std::move(mountPath)) {
        std::filesystem::create_directories(path);
        if (::mount("tmpfs", path.c_str(), "tmpfs", 0, options.c_str()) != 0)
            reason = std::string("cannot mount: ") + std::strerror(errno);
        else
            top = Descriptor(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    MountedDisk(const MountedDisk&) = delete;
    MountedDisk& operator=(const MountedDisk&) = delete;
    ~MountedDisk() {
        if (reason.empty()) ::umount2(("/proc/self/fd/" + std::to_string(top.get())).c_str(), MNT_DETACH);
    }

    const std::string path;
    std::string reason{};

private:
    Descriptor top; // wherever the directories above it have been moved
};
