#pragma once

#include "platform/linux/files/SaveTarget.h"

// Gives the file behind the descriptor what the target's old file has besides its bytes: owner and group where
// permitted, extended attributes and ACL where the file system knows them, and the mode. Fails rather than
// lose one of them to a failing disk, with std::system_error.
void keepMetadata(int descriptor, const SaveTarget& target);
