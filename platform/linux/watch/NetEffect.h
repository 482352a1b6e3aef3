#pragma once

#include "platform/linux/watch/ItemIdentity.h"

// From where the item came that stands at a name when a window closes.
enum class ItemOrigin {
    sameName,     // nothing that happened took the item from its name
    newcomer,     // created here, or moved in from where nobody watches
    movedFromFree // moved from a name that is free now and where this very item was reported
};

// All that counts of what happened to one name in a window.
struct NameHistory {
    ItemIdentity was{}; // as last reported
    ItemIdentity is{};
    ItemOrigin origin{};
    bool isFreshTemporary = false; // the item was created a moment ago and nobody has it open as a document
    bool isNewSave = false;        // what was moved here had been saved just before, where it was
    bool isWritten = false;
    bool hasNewAttributes = false;
};

// What is to be told. A rename implies nothing for the former name, which has a history of its own.
struct NetEffect {
    bool isRemoved = false; // what was at the name; its departure under another name is not meant
    bool isRenamedHere = false;
    bool isCreated = false;
    bool isModified = false;
    bool hasNewAttributes = false;

    bool operator==(const NetEffect&) const = default;
};

NetEffect netEffect(const NameHistory& history);
