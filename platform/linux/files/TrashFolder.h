#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Environment.h"

// The rules by which an item finds its trash folder. What goes wrong without a reason that the user should read is
// thrown as std::system_error.

// A trash folder, which need not exist yet.
struct TrashFolder {
    std::string path{};
    std::string topPath{}; // the volume's top for a trash of that volume, empty for the home trash

    bool operator==(const TrashFolder&) const = default;
};

// The home trash; absent without a home.
std::optional<TrashFolder> homeTrash(const Environment& environment);

// Whether the trash would lie on the volume on which the directory is, so that an item can be renamed into it. A folder
// that does not exist yet lies where the nearest existing one above it lies.
bool isOnVolumeOf(const TrashFolder& trash, const std::string& directoryPath);

// Where the volume on which the directory (a path without links) is may have the user's trash, the better place first.
std::vector<TrashFolder> volumeTrashPlaces(const std::string& directoryPath);

// The trash of the volume on which the directory (a path without links) is, made for this user if need be.
// Throws PlatformError with the reason when there is none that can be trusted or made.
TrashFolder volumeTrash(const std::string& directoryPath);

// Makes the folders of the trash, for the user's eyes only. Throws PlatformError.
void prepareTrash(const TrashFolder& trash);

// Whether the item is in the trash, or the trash in the item.
bool areEntangled(const TrashFolder& trash, const std::string& itemPath);
