#include "platform/linux/files/LinuxFileIdentification.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>

#include "platform/linux/Descriptor.h"
#include "platform/linux/DirectoryStream.h"
#include "platform/linux/TemporaryName.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/StatAttributes.h"
#include "platform/linux/files/SystemCall.h"

namespace {

FileIdentifier identifier(std::string key) {
    return FileIdentifierBytes{std::move(key)};
}

// The entries of one open directory.
class EntryIdentification {
public:
    EntryIdentification(const FileKeys& fileKeys, int openDirectory) : keys(fileKeys), directory(openDirectory) {
        checked(fstat(directory, &status));
        traits = keys.directoryTraits(status, directory);
        if (const auto own = keys.handles().handle(directory, "")) mountID = own->mountID;
    }

    // Absent when the entry has vanished.
    std::optional<IdentifiedEntry> identified(const dirent64& entry) const {
        if (mayTrustNumber(entry)) {
            const auto handle = keys.handles().handle(directory, entry.d_name);
            if (handle && handle->mountID == mountID) {
                return IdentifiedEntry{.name = entry.d_name,
                                       .type = fileType(DTTOIF(entry.d_type)),
                                       .fileSystemNumber = status.st_dev,
                                       .fileNumber = entry.d_ino,
                                       .identifier = identifier(FileKeys::handleKey(status.st_dev, *handle))};
            }
        }
        return askedFor(entry);
    }

private:
    bool mayTrustNumber(const dirent64& entry) const {
        if (traits.keyMethod != DeviceTraits::KeyMethod::handle || entry.d_type == DT_UNKNOWN) return false;
        if (traits.entryNumbers == EntryNumbers::rightButForDirectories) return entry.d_type != DT_DIR;
        return traits.entryNumbers == EntryNumbers::right;
    }

    std::optional<IdentifiedEntry> askedFor(const dirent64& entry) const {
        IdentifiedEntry identified{.name = entry.d_name};
        auto item = keys.item(directory, entry.d_name);
        if (!item) {
            // A directory may be read whose items may not be looked at.
            if (errno == ENOENT) return std::nullopt;
            if (entry.d_type != DT_UNKNOWN) identified.type = fileType(DTTOIF(entry.d_type));
            return identified;
        }
        identified.type = fileType(item->status.st_mode);
        identified.fileSystemNumber = item->status.st_dev;
        identified.fileNumber = item->status.st_ino;
        if (item->key) identified.identifier = identifier(std::move(*item->key));
        return identified;
    }

    const FileKeys& keys;
    const int directory;
    struct stat status {};
    DeviceTraits traits{};
    std::optional<int> mountID{}; // an entry with another one is hidden by a mount
};

} // namespace

std::optional<FileIdentifier> LinuxFileIdentification::fileResourceIdentifier(const std::string& path) const {
    if (path.find('\0') != path.npos) return std::nullopt;
    auto item = keys.item(AT_FDCWD, path.c_str());
    if (!item || !item->key) return std::nullopt;
    return identifier(std::move(*item->key));
}

void LinuxFileIdentification::forEachIdentifiedEntry(const std::string& directoryPath,
                                                     const std::function<void(const IdentifiedEntry&)>& visit) const {
    constexpr auto action = "list";
    const Descriptor directory(::open(cPath(directoryPath, action), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!directory) throw posixError(errno, action, directoryPath);
    try {
        const EntryIdentification identification(keys, directory.get());
        DirectoryStream entries(directory.get());
        while (const dirent64* entry = entries.next()) {
            if (isTemporarySaveName(entry->d_name)) continue;
            if (const auto identified = identification.identified(*entry)) visit(*identified);
        }
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), action, directoryPath);
    }
}
