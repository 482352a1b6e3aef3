#include "platform/linux/watch/KnownFolders.h"

#include <vector>

namespace {

NameKey presentPlace(const FolderNode* folder) {
    return {folder->parent, folder->name};
}

} // namespace

bool KnownFolders::wasKnown(const FolderNode* folder) {
    return isKnown(folder, before, reportedKey,
                   [](const NameKey& place) { return place.folder->snapshot.find(place.name); });
}

bool KnownFolders::willBeKnown(const FolderNode* folder) {
    return isKnown(folder, after, presentPlace, [this](const NameKey& place) {
        const auto item = found.find(place);
        return item == found.end() ? place.folder->snapshot.find(place.name) : item->second;
    });
}

// Up to a folder of which it is remembered, and down again. Trees may be deeper than a stack.
template <class PlaceOf, class ItemAt>
bool KnownFolders::isKnown(const FolderNode* folder, Memory& memory, const PlaceOf& placeOf, const ItemAt& itemAt) {
    std::vector<std::pair<const FolderNode*, NameKey>> way;
    bool isKnown = true;
    for (const FolderNode* each = folder; each; each = way.back().second.folder) {
        if (const auto remembered = memory.find(each); remembered != memory.end()) {
            isKnown = remembered->second;
            break;
        }
        way.emplace_back(each, placeOf(each));
    }
    for (; !way.empty(); way.pop_back()) {
        const auto& [each, place] = way.back();
        const ItemIdentity item{each->identity.inode, ItemType::directory};
        isKnown = isKnown && (!place.folder || itemAt(place) == item);
        memory.emplace(each, isKnown);
    }
    return isKnown;
}
