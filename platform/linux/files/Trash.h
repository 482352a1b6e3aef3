#pragma once

#include <string>

#include "platform/Environment.h"

// Moves the item itself, links not followed, to a trash folder as desktop file browsers keep it (freedesktop.org): on
// the home folder's volume the home trash ($XDG_DATA_HOME/Trash, else ~/.local/share/Trash), on any other the trash of
// that volume (.Trash/UID where the administrator provides it, else .Trash-UID). Where the volume has none that can be
// used, the item is copied into the home trash and then removed. Nothing is ever removed for good instead.
// Throws PlatformError: EINVAL for an item in a trash folder or around it, else with the reason why no trash works. All
// is then as before, but for empty trash folders and for what the message says about a source that is partly gone.
void trashItem(const std::string& path, const Environment& environment);
