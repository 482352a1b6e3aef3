#pragma once

#include <sys/vfs.h>

// What the several file systems of Linux can be trusted with when items are told apart.

// Whether the number beside a name in a directory is the item's own, as long as no mount hides the item.
enum class EntryNumbers { right, rightButForDirectories, doubtful };

// Whether a change of the item's data can change its birth time.
enum class BirthTimes { lasting, changing };

struct FileSystemKind {
    bool hasLastingHandles{};
    EntryNumbers entryNumbers = EntryNumbers::doubtful;
    BirthTimes birthTimes = BirthTimes::lasting;
};

// By the type that statfs tells. On a kind that is not listed a handle may change while the item lives.
inline FileSystemKind fileSystemKind(const struct statfs& status) {
    switch (static_cast<unsigned long>(status.f_type)) {
        case 0x0000EF53: // ext2, ext3, ext4
        case 0x58465342: // xfs
        case 0x01021994: // tmpfs
        case 0xF2F52010: // f2fs
            return {.hasLastingHandles = true, .entryNumbers = EntryNumbers::right};
        case 0x9123683E: // btrfs; the root of a subvolume has another number inside than outside
            return {.hasLastingHandles = true, .entryNumbers = EntryNumbers::rightButForDirectories};
        case 0x794C7630: // overlayfs; the first write to a file of a lower layer makes it anew in the upper one
            return {.hasLastingHandles = true, .birthTimes = BirthTimes::changing};
        default:
            return {};
    }
}
