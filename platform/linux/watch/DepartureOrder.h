#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/watch/FolderTree.h"

// An item that leaves the name under which it was reported: it is gone, or renamed to the target.
struct Departure {
    NameKey source{};
    std::optional<NameKey> target{};
    ItemIdentity item{};
    std::uint64_t order{};              // in which it was first noticed
    std::optional<NameKey> recreated{}; // the former target, if the rename must be told as removal and creation

    bool operator==(const Departure&) const = default;
};

// Brings departures into an order in which they can be followed one by one, by somebody who knows only what was
// reported: what leaves a folder goes before the folder is removed, and nothing arrives where something old still is,
// or in a folder that has yet to arrive. Otherwise they stay in the order in which they were noticed. Where there is no
// such order, as with folders that change places, a rename becomes a removal.
std::vector<Departure> orderedDepartures(std::vector<Departure> departures);
