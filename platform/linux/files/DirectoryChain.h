#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "platform/linux/FileIdentity.h"

// Where a walk through a tree stands: the directories from the top down to the present one. It works at any depth, with
// paths longer than the system takes, on a bounded number of descriptors: only the deepest few directories are kept
// open, and one further up is opened again through "..", provided that this is still the same directory.
// A failure is thrown as std::system_error and leaves the chain as it was.
class DirectoryChain {
public:
    // Opens the top, which is not followed if it is a link (ENOTDIR).
    explicit DirectoryChain(const char* topPath);

    // The present directory, open for reading.
    int get() const { return levels.back().descriptor.get(); }

    // Goes down to a directory of the present one, never through a link.
    void enter(const char* name);

    // Goes back up. ENOENT when the present directory has been moved elsewhere meanwhile.
    void leave();

    // The present directory's path, for messages.
    std::string path() const;

private:
    struct Level {
        std::string name{};
        Descriptor descriptor{};
        FileIdentity identity{}; // known once the descriptor has been closed
    };

    void closeDistantLevel();
    void reopen(Level& level, int child) const;

    std::vector<Level> levels{};
};
