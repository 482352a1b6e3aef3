#pragma once

#include <sys/types.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "platform/linux/FileSystemKind.h"
#include "platform/linux/watch/WatchSystem.h"

// The kernel as it is, with one inotify instance.
class LinuxWatchSystem : public WatchSystem {
public:
    LinuxWatchSystem();

    // To be read by somebody else; not valid when the system gave no instance.
    int inotifyDescriptor() const { return inotify.get(); }

    WatchTime now() const override { return std::chrono::steady_clock::now(); }
    bool canWatch() const override { return static_cast<bool>(inotify); }

    OpenedFolder openFolder(const std::string& path, FollowLinks links, OpenFor purpose) override;
    std::optional<FileIdentity> directoryAt(const std::string& path) override;
    std::string realPath(const std::string& path) override;
    ItemIdentity itemAt(const std::string& path) override;
    AddedWatch watchFolder(const std::string& path, FollowLinks links) override;
    AddedWatch watchAncestor(const std::string& path) override;
    std::size_t longestPath() const override;
    void unwatch(int watch) override;
    std::vector<MountPoint> mountPoints() override;

private:
    friend class LinuxOpenFolder;

    OpenedFolder opened(Descriptor folder);
    AddedWatch addWatch(const std::string& path, std::uint32_t mask);
    AddedWatch addWatch(int folder, std::uint32_t mask);
    struct Traits {
        EventCoverage coverage{};
        EntryNumbers entryNumbers{};
    };
    Traits traitsOf(int folder, dev_t device);

    Descriptor inotify;
    std::unordered_map<dev_t, Traits> traitsByDevice{};
};
