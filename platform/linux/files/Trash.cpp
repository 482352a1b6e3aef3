#include "platform/linux/files/Trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>

#include "platform/PlatformError.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/files/CPath.h"
#include "platform/linux/files/ItemPath.h"
#include "platform/linux/files/MoveByCopying.h"
#include "platform/linux/files/RemoveItem.h"
#include "platform/linux/files/RenameItem.h"
#include "platform/linux/files/SystemCall.h"
#include "platform/linux/files/TrashFolder.h"
#include "platform/linux/files/TrashName.h"

namespace {

using Mover = std::function<void(const std::string& sourcePath, const std::string& destinationPath)>;

// Links above the item are resolved, the item itself is not.
std::string resolvedPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> parent(::realpath(parentPath(path).c_str(), nullptr), &std::free);
    if (!parent) checked(-1);
    return joinedPath(parent.get(), lastName(path));
}

std::string localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts));
}

std::string information(const TrashFolder& trash, const std::string& path) {
    const std::string_view shown = std::string_view(path).substr(
        trash.topPath.empty() ? 0 : trash.topPath.size() + (trash.topPath.ends_with('/') ? 0 : 1));
    return "[Trash Info]\nPath=" + percentEncoded(shown) + "\nDeletionDate=" + localTime() + "\n";
}

// The information file, which reserves the item's name in the trash. Until the item has come it goes with the object.
class Reservation {
public:
    Reservation(std::string informationPath, const std::string& text) : path(std::move(informationPath)) {
        Descriptor file(checked(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)));
        try {
            writeText(file, text);
        } catch (...) {
            ::unlink(path.c_str());
            throw;
        }
    }
    Reservation(const Reservation&) = delete;
    Reservation& operator=(const Reservation&) = delete;
    ~Reservation() {
        if (!isKept) ::unlink(path.c_str());
    }

    void keep() { isKept = true; }

private:
    static void writeText(Descriptor& file, const std::string& text) {
        const ssize_t written = checked(::write(file.get(), text.data(), text.size()));
        if (written != static_cast<ssize_t>(text.size())) throw std::system_error(ENOSPC, std::generic_category());
        checked(file.close());
    }

    std::string path;
    bool isKept = false;
};

bool exists(const std::string& path) {
    struct stat attributes {};
    return ::lstat(path.c_str(), &attributes) == 0;
}

void moveReserved(Reservation& reservation, const std::string& path, const std::string& destinationPath,
                  const Mover& move) {
    try {
        move(path, destinationPath);
    } catch (const IncompleteRemoval&) {
        reservation.keep(); // the whole item is in the trash
        throw;
    }
    reservation.keep();
}

// Returns false when the name is taken, by an item, by an information file or by both.
bool putUnderName(const TrashFolder& trash, const std::string& name, const std::string& path, const Mover& move) {
    const std::string destinationPath = joinedPath(trash.path, "files/" + name);
    if (exists(destinationPath)) return false;
    try {
        Reservation reservation(joinedPath(trash.path, "info/" + name + ".trashinfo"), information(trash, path));
        moveReserved(reservation, path, destinationPath, move);
        return true;
    } catch (const std::system_error& error) {
        if (error.code().value() != EEXIST) throw;
        return false;
    }
}

void put(const TrashFolder& trash, const std::string& path, const Mover& move) {
    prepareTrash(trash);
    const std::string name = lastName(path);
    for (int attempt = 1; !putUnderName(trash, trashName(name, attempt), path, move);) ++attempt;
}

PlatformError entangled() {
    return PlatformError(std::string(posixErrorDomain), EINVAL, "It is in the Trash, or the Trash is in it.");
}

// Renames the item into the trash of its own volume. When there is none, the reason comes back.
std::optional<std::string> putIntoVolumeTrash(const std::string& path) {
    TrashFolder trash;
    try {
        trash = volumeTrash(parentPath(path));
        prepareTrash(trash);
    } catch (const PlatformError& error) {
        return error.localizedDescription;
    }
    if (areEntangled(trash, path)) throw entangled();
    put(trash, path, renameWithoutReplacing);
    return std::nullopt;
}

// Renames the item into the trash that belongs to it. When there is none, or a rename does not lead there, the reason
// comes back.
std::optional<std::string> putByRenaming(const std::optional<TrashFolder>& home, const std::string& path) {
    try {
        const std::string resolved = resolvedPath(path);
        if (!home || !isOnVolumeOf(*home, parentPath(resolved))) return putIntoVolumeTrash(resolved);
        put(*home, path, renameWithoutReplacing);
        return std::nullopt;
    } catch (const std::system_error& error) {
        if (error.code().value() != EXDEV) throw;
        return posixError(EXDEV, "rename the item").localizedDescription;
    }
}

void putIntoTrash(const std::string& path, const Environment& environment) {
    struct stat attributes {};
    checked(::lstat(path.c_str(), &attributes));
    const std::optional<TrashFolder> home = homeTrash(environment);
    if (home && areEntangled(*home, path)) throw entangled();
    const std::optional<std::string> reason = putByRenaming(home, path);
    if (!reason) return;
    if (!home) {
        throw PlatformError(std::string(posixErrorDomain), ENOENT,
                            *reason + " There is no home folder with a Trash either.");
    }
    try {
        put(*home, path, moveByCopying);
    } catch (const PlatformError& error) {
        throw PlatformError(
            error.domain, error.code,
            *reason + " Nor can it be copied to the Trash of the home folder. " + error.localizedDescription);
    }
}

} // namespace

void trashItem(const std::string& path, const Environment& environment) {
    const std::string action = "move “" + path + "” to the Trash";
    cPath(path, action);
    try {
        putIntoTrash(path, environment);
    } catch (const std::system_error& error) {
        throw posixError(error.code().value(), action);
    } catch (const PlatformError& error) {
        throw PlatformError(error.domain, error.code, "Cannot " + action + ". " + error.localizedDescription);
    }
}
