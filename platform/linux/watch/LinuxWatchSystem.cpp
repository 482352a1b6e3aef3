#include "platform/linux/watch/LinuxWatchSystem.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "platform/linux/DirectoryStream.h"

namespace {

constexpr std::uint32_t folderMask = IN_ATTRIB | IN_MODIFY | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_DELETE_SELF |
                                     IN_MOVE_SELF | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR | IN_EXCL_UNLINK;
constexpr int listingFlags = O_RDONLY | O_NONBLOCK | O_DIRECTORY | O_CLOEXEC;

// Added to what may be there: an ancestor of one root can be part of another one's tree.
constexpr std::uint32_t ancestorMask = IN_MOVE_SELF | IN_DELETE_SELF | IN_ONLYDIR | IN_MASK_ADD;

// Time stamps come from a coarse clock, and a second change within its tick leaves the same stamp.
constexpr std::int64_t settlingTime = 2'000'000'000;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec;
}

// Of both dates, as a program can set the one and some file systems do not change the other.
std::int64_t stampOf(const struct stat& attributes) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(nanoseconds(attributes.st_ctim)) +
                                     3 * static_cast<std::uint64_t>(nanoseconds(attributes.st_mtim)));
}

ItemType itemType(mode_t mode) {
    if (S_ISDIR(mode)) return ItemType::directory;
    return S_ISLNK(mode) ? ItemType::symbolicLink : ItemType::file;
}

ItemIdentity itemIn(int folder, const char* name) {
    struct stat status {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return {};
    return {status.st_ino, itemType(status.st_mode)};
}

// What the kernel refuses in one piece is opened step by step.
Descriptor openStepwise(std::string_view path, int flags) {
    Descriptor folder(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    while (folder && !path.empty()) {
        path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
        const std::string name(path.substr(0, path.find('/')));
        path.remove_prefix(name.size());
        if (name.empty()) break;
        const int stepFlags = path.empty() ? flags : O_PATH | O_DIRECTORY | O_CLOEXEC;
        folder = Descriptor(::openat(folder.get(), name.c_str(), stepFlags));
    }
    return folder;
}

Descriptor openDirectory(const std::string& path, int flags) {
    Descriptor folder(::open(path.c_str(), flags));
    if (!folder && errno == ENAMETOOLONG) return openStepwise(path, flags);
    return folder;
}

} // namespace

class LinuxOpenFolder final : public OpenFolder {
public:
    LinuxOpenFolder(LinuxWatchSystem& watchSystem, Descriptor openDescriptor, const FolderStatus& folderStatus,
                    EntryNumbers trustInNumbers)
        : system(watchSystem),
          descriptor(std::move(openDescriptor)),
          knownStatus(folderStatus),
          entryNumbers(trustInNumbers) {}

    FolderStatus status() const override { return knownStatus; }

    ItemIdentity item(const std::string& name) const override { return itemIn(descriptor.get(), name.c_str()); }

    std::optional<FileStamp> fileStamp(const std::string& name) const override {
        struct stat status {};
        if (::fstatat(descriptor.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
        if (S_ISDIR(status.st_mode)) return std::nullopt;
        return FileStamp{status.st_ino, static_cast<std::uint64_t>(status.st_size), nanoseconds(status.st_mtim)};
    }

    bool forEachEntry(const std::function<void(std::string_view, ItemIdentity)>& visit) const override {
        try {
            DirectoryStream entries(descriptor.get());
            while (const dirent64* entry = entries.next()) {
                ItemIdentity item{entry->d_ino, entryType(entry->d_type)};
                if (!item || !isNumberRight(item)) item = itemIn(descriptor.get(), entry->d_name);
                if (item) visit(entry->d_name, item);
            }
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }

    OpenedFolder openFolder(const std::string& name) const override {
        return system.opened(Descriptor(::openat(descriptor.get(), name.c_str(), listingFlags | O_NOFOLLOW)));
    }

    AddedWatch watch() const override { return system.addWatch(descriptor.get(), folderMask); }

private:
    // None where the file system does not tell.
    static ItemType entryType(unsigned char type) {
        switch (type) {
            case DT_DIR:
                return ItemType::directory;
            case DT_LNK:
                return ItemType::symbolicLink;
            case DT_UNKNOWN:
                return ItemType::none;
            default:
                return ItemType::file;
        }
    }

    bool isNumberRight(ItemIdentity item) const {
        return entryNumbers == EntryNumbers::right ||
               (entryNumbers == EntryNumbers::rightButForDirectories && !item.isDirectory());
    }

    LinuxWatchSystem& system;
    Descriptor descriptor;
    FolderStatus knownStatus;
    EntryNumbers entryNumbers;
};

namespace {

EventCoverage coverageOfType(long type) {
    switch (static_cast<unsigned long>(type) & 0xFFFFFFFF) {
        case PROC_SUPER_MAGIC:
        case SYSFS_MAGIC:
        case CGROUP_SUPER_MAGIC:
        case CGROUP2_SUPER_MAGIC:
        case DEVPTS_SUPER_MAGIC:
        case DEBUGFS_MAGIC:
        case TRACEFS_MAGIC:
        case 0x65735543: // the control files of FUSE
            return EventCoverage::pointless;
        case NFS_SUPER_MAGIC:
        case SMB_SUPER_MAGIC:
        case CIFS_SUPER_MAGIC:
        case SMB2_SUPER_MAGIC:
        case V9FS_MAGIC:
        case FUSE_SUPER_MAGIC:
        case CEPH_SUPER_MAGIC:
        case AFS_SUPER_MAGIC:
            return EventCoverage::ownChangesOnly;
        default:
            return EventCoverage::complete;
    }
}

} // namespace

LinuxWatchSystem::LinuxWatchSystem() : inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

OpenedFolder LinuxWatchSystem::openFolder(const std::string& path, FollowLinks links, OpenFor purpose) {
    const int flags = purpose == OpenFor::looking ? O_PATH | O_DIRECTORY | O_CLOEXEC : listingFlags;
    return opened(openDirectory(path, links == FollowLinks::yes ? flags : flags | O_NOFOLLOW));
}

OpenedFolder LinuxWatchSystem::opened(Descriptor descriptor) {
    struct stat attributes {};
    if (!descriptor || ::fstat(descriptor.get(), &attributes) != 0) return {.error = errno};
    struct statx extended {};
    ::statx(descriptor.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &extended);
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    FolderStatus status{.identity = identityOf(attributes),
                        .mountNumber = extended.stx_mask & STATX_MNT_ID ? extended.stx_mnt_id : 0,
                        .stamp = stampOf(attributes)};
    const auto isSettled = [&](const timespec& date) {
        return std::abs(nanoseconds(now) - nanoseconds(date)) > settlingTime; // one to come was set by somebody
    };
    status.isSettled = isSettled(attributes.st_mtim) && isSettled(attributes.st_ctim);
    const Traits traits = traitsOf(descriptor.get(), attributes.st_dev);
    status.coverage = traits.coverage;
    return {.folder = std::make_unique<LinuxOpenFolder>(*this, std::move(descriptor), status, traits.entryNumbers)};
}

std::optional<FileIdentity> LinuxWatchSystem::directoryAt(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        if (errno != ENAMETOOLONG) return std::nullopt;
        const Descriptor folder = openStepwise(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (!folder || ::fstat(folder.get(), &status) != 0) return std::nullopt;
    }
    if (!S_ISDIR(status.st_mode)) return std::nullopt;
    return identityOf(status);
}

std::string LinuxWatchSystem::realPath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

ItemIdentity LinuxWatchSystem::itemAt(const std::string& path) {
    return itemIn(AT_FDCWD, path.c_str());
}

AddedWatch LinuxWatchSystem::watchFolder(const std::string& path, FollowLinks links) {
    return addWatch(path, links == FollowLinks::yes ? folderMask : folderMask | IN_DONT_FOLLOW);
}

AddedWatch LinuxWatchSystem::watchAncestor(const std::string& path) {
    return addWatch(path, ancestorMask);
}

std::size_t LinuxWatchSystem::longestPath() const {
    return PATH_MAX;
}

void LinuxWatchSystem::unwatch(int watch) {
    ::inotify_rm_watch(inotify.get(), watch);
}

std::vector<MountPoint> LinuxWatchSystem::mountPoints() {
    // Device numbers are used again by the next file system that is mounted.
    traitsByDevice.clear();
    std::ifstream table("/proc/self/mountinfo", std::ios::binary);
    return ::mountPoints(std::string(std::istreambuf_iterator<char>(table), {}));
}

AddedWatch LinuxWatchSystem::addWatch(const std::string& path, std::uint32_t mask) {
    if (!inotify) return {.error = EMFILE};
    const int watch = ::inotify_add_watch(inotify.get(), path.c_str(), mask);
    if (watch < 0 && errno == ENAMETOOLONG) {
        const Descriptor folder = openStepwise(path, O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (folder) return addWatch(folder.get(), mask & ~std::uint32_t{IN_DONT_FOLLOW});
    }
    return {.watch = watch, .error = watch < 0 ? errno : 0};
}

AddedWatch LinuxWatchSystem::addWatch(int folder, std::uint32_t mask) {
    const std::string path = "/proc/self/fd/" + std::to_string(folder);
    const int watch = ::inotify_add_watch(inotify.get(), path.c_str(), mask);
    return {.watch = watch, .error = watch < 0 ? errno : 0};
}

LinuxWatchSystem::Traits LinuxWatchSystem::traitsOf(int folder, dev_t device) {
    const auto [traits, isNew] = traitsByDevice.try_emplace(device);
    struct statfs status {};
    if (isNew && ::fstatfs(folder, &status) == 0)
        traits->second = {coverageOfType(status.f_type), fileSystemKind(status).entryNumbers};
    return traits->second;
}
