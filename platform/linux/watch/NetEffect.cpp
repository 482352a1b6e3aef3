#include "platform/linux/watch/NetEffect.h"

namespace {

NetEffect effectOfReplacement(const NameHistory& history) {
    const bool involvesFolder = history.was.isDirectory() || history.is.isDirectory();
    const bool isRename = history.origin == ItemOrigin::movedFromFree;
    if (involvesFolder) return {.isRemoved = true, .isRenamedHere = isRename, .isCreated = !isRename};
    // Whoever writes a new file and moves it over the old one saves; whoever moves a file that was there before means
    // the move.
    return {.isRenamedHere = isRename && !history.isFreshTemporary, .isModified = true};
}

} // namespace

NetEffect netEffect(const NameHistory& history) {
    const bool isRename = history.origin == ItemOrigin::movedFromFree;
    if (!history.is) return {.isRemoved = static_cast<bool>(history.was)};
    if (!history.was)
        return {.isRenamedHere = isRename, .isCreated = !isRename, .isModified = isRename && history.isNewSave};
    if (history.origin != ItemOrigin::sameName || history.was != history.is) return effectOfReplacement(history);
    return {.isModified = history.isWritten, .hasNewAttributes = history.hasNewAttributes && !history.isWritten};
}
