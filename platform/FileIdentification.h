#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/FileIdentifier.h"
#include "platform/FileManager.h"

// An entry of a directory together with what identifies the item. Valid during the call that hands it over.
struct IdentifiedEntry {
    std::string_view name{};
    std::optional<FileType> type{};                  // of the item itself, links not followed
    std::optional<std::uint64_t> fileSystemNumber{}; // these two as attributesOfItem tells them; both or none
    std::optional<std::uint64_t> fileNumber{};
    std::optional<FileIdentifier> identifier{};
};

// The seam to the identity of items. Links are never followed but for the directory that is listed. An object remembers
// what it has learnt of the file systems it met, and belongs to one queue.
class FileIdentification {
public:
    virtual ~FileIdentification() = default;

    // An identifier that no other item has, before or after, and that the item keeps when it is renamed or moved within
    // its file system. Absent when the item is gone or its file system has nothing of the kind.
    virtual std::optional<FileIdentifier> fileResourceIdentifier(const std::string& path) const = 0;

    // Hands over all entries but "." and "..", in the order the file system gives them, and passes over unfinished
    // temporaries of this program and what vanishes meanwhile. Throws a PlatformError when the directory cannot be
    // read.
    virtual void forEachIdentifiedEntry(const std::string& directoryPath,
                                        const std::function<void(const IdentifiedEntry&)>& visit) const = 0;
};
