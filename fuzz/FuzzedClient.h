#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "fuzz/MemoryDisk.h"
#include "shared/EditorDocumentDaemonEnvelope.h"

// What a client knows that does no more than follow the daemon's envelopes: the expanded folders of its workspaces, and
// the versions of its documents.
class FuzzedClient {
public:
    void take(const EditorDocumentDaemonEnvelope& envelope);

    // Aborts unless each expanded folder shows what is on the disk, and no two names have one ID.
    void requireTruth(const MemoryDisk& disk) const;

    struct Folder {
        std::string nodeID{}; // by which its parent shows it; of a root none
        std::vector<WorkspaceBrowserNodePayload> nodes{};
    };
    using FoldersByPath = std::map<std::string, Folder>; // parents come first

    std::map<std::string, std::int64_t> versionByDocumentID{};
    std::map<std::string, FoldersByPath> foldersByRoot{};

private:
    void takeListing(const WorkspaceBrowserDirectoryPayload& listing);
};
