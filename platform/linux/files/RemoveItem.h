#pragma once

#include <string>

#include "platform/PlatformError.h"

// Thrown by removeItem in place of a plain PlatformError when a part of the item is gone already.
struct IncompleteRemoval : PlatformError {
    explicit IncompleteRemoval(PlatformError error) : PlatformError(std::move(error)) {}
};

// Removes the item and all below it, however deep or wide. A link is removed, never followed. What somebody else
// removes below it meanwhile is no error. Stops at the first error; a mount point below is one (EBUSY) before anything
// on it is touched, since it could not go itself. When the folder that holds the item does not allow it, nothing is
// removed. Throws PlatformError (the item is whole) or IncompleteRemoval.
void removeItem(const std::string& path);

// Removes what the caller has just made itself, as far as that is possible: folders that do not permit writing are
// made writable first, and an error is passed over, because there is one already that is on its way to the user.
void removeOwnItem(const std::string& path) noexcept;
