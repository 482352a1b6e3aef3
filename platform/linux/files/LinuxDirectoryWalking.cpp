#include "platform/linux/files/LinuxDirectoryWalking.h"

#include <fcntl.h>

#include <algorithm>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/linux/DirectoryStream.h"
#include "platform/linux/FileSystemKind.h"
#include "platform/linux/MountPoints.h"
#include "platform/linux/TemporaryName.h"
#include "platform/linux/files/DirectoryChain.h"
#include "platform/linux/files/StatAttributes.h"

namespace {

FileIdentity identityOfOpen(int directory) {
    struct stat status {};
    fstat(directory, &status); // of an open directory, which cannot fail
    return identityOf(status);
}

class LinuxDirectoryWalk final : public DirectoryWalk {
public:
    explicit LinuxDirectoryWalk(std::string topPath) : chain(topPath.c_str()), mountPoints(chain->get()) {
        levels.push_back({.name = std::move(topPath), .identity = identityOfOpen(chain->get())});
    }

    void forEachEntry(const std::function<void(const WalkedEntry&)>& visit) override {
        if (!chain) return;
        const EntryNumbers numbers = entryNumbers();
        const bool hasMountPoints = mountPoints.anyIn(levels.back().identity);
        try {
            DirectoryStream entries(chain->get());
            while (const dirent64* entry = entries.next()) {
                if (isTemporarySaveName(entry->d_name)) continue;
                const bool isHidden = hasMountPoints && mountPoints.contains(levels.back().identity, entry->d_name);
                if (!isHidden && tellsEnough(*entry, numbers)) {
                    visit({entry->d_name, fileType(DTTOIF(entry->d_type)), entry->d_ino});
                } else if (const auto status = askedFor(entry->d_name)) {
                    visit({entry->d_name, fileType(status->st_mode), status->st_ino});
                }
            }
        } catch (const std::system_error&) {
            // The rest of the directory cannot be read.
        }
    }

    bool enter(const std::string& name) override {
        if (!chain) return false;
        try {
            chain->enter(name.c_str());
            const FileIdentity identity = identityOfOpen(chain->get());
            const auto isSame = [&](const Level& level) { return level.identity == identity; };
            levels.push_back({.name = name, .identity = identity});
            if (std::none_of(levels.begin(), levels.end() - 1, isSame)) return true;
            leave();
        } catch (const std::system_error&) {
        }
        return false;
    }

    void leave() override {
        levels.pop_back();
        try {
            if (chain) return chain->leave();
        } catch (const std::system_error&) {
        }
        goDownAgain();
    }

private:
    struct Level {
        std::string name{};
        FileIdentity identity{};
    };

    static bool tellsEnough(const dirent64& entry, EntryNumbers numbers) {
        if (entry.d_type == DT_UNKNOWN || numbers == EntryNumbers::doubtful) return false;
        return numbers == EntryNumbers::right || entry.d_type != DT_DIR;
    }

    std::optional<struct stat> askedFor(const char* name) const {
        struct stat status {};
        if (fstatat(chain->get(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
        return status;
    }

    EntryNumbers entryNumbers() {
        const dev_t device = levels.back().identity.device;
        const auto known = numbersByDevice.find(device);
        if (known != numbersByDevice.end()) return known->second;
        struct statfs status {};
        if (fstatfs(chain->get(), &status) != 0) return EntryNumbers::doubtful;
        return numbersByDevice[device] = fileSystemKind(status).entryNumbers;
    }

    // The directory that was left had been moved elsewhere meanwhile, so the way up from it led astray. Where its
    // former parent cannot be found again either, the walk is nowhere until it has gone further up.
    void goDownAgain() {
        chain.reset();
        try {
            DirectoryChain again(levels.front().name.c_str());
            for (std::size_t i = 1; i < levels.size(); ++i) again.enter(levels[i].name.c_str());
            if (identityOfOpen(again.get()) == levels.back().identity) chain = std::move(again);
        } catch (const std::system_error&) {
        }
    }

    std::optional<DirectoryChain> chain;
    MountPoints mountPoints;
    std::vector<Level> levels{};
    std::unordered_map<dev_t, EntryNumbers> numbersByDevice{};
};

} // namespace

std::unique_ptr<DirectoryWalk> LinuxDirectoryWalking::walk(const std::string& directoryPath, FollowLinks links) const {
    if (directoryPath.find('\0') != directoryPath.npos) return nullptr;
    try {
        return std::make_unique<LinuxDirectoryWalk>(links == FollowLinks::yes ? directoryPath + "/." : directoryPath);
    } catch (const std::system_error&) {
        return nullptr;
    }
}
