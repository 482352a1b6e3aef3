#pragma once

#include <unordered_map>

#include "platform/linux/watch/FolderTree.h"

using ItemByName = std::unordered_map<NameKey, ItemIdentity, NameKeyHash>;

// Which folders they know who learn of the trees by what is told. What happens in a folder that nobody has heard of is
// not told: whoever hears of the folder looks into it.
class KnownFolders {
public:
    // The items as they have just been found, which are about to be told.
    explicit KnownFolders(const ItemByName& foundItems) : found(foundItems) {}

    bool wasKnown(const FolderNode* folder);    // by what was told before
    bool willBeKnown(const FolderNode* folder); // after what is found is told as well

private:
    using Memory = std::unordered_map<const FolderNode*, bool>;

    template <class PlaceOf, class ItemAt>
    static bool isKnown(const FolderNode* folder, Memory& memory, const PlaceOf& placeOf, const ItemAt& itemAt);

    const ItemByName& found;
    Memory before{};
    Memory after{};
};
