#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "fuzz/MemoryDisk.h"
#include "shared/EditorDocumentDaemonEnvelope.h"

// What a client knows that does no more than follow the daemon's envelopes: the expanded folders of its workspaces, and
// the versions of its documents.
class FuzzedClient {
public:
    void take(const EditorDocumentDaemonEnvelope& envelope);

    // Aborts unless each expanded folder shows what is on the disk, and no two names have one ID.
    void requireTruth(const MemoryDisk& disk) const;

    std::map<std::string, std::int64_t> versionByDocumentID{};

    using Nodes = std::vector<WorkspaceBrowserNodePayload>;
    std::map<std::string, std::map<std::string, Nodes>> nodesByDirectoryByRoot{};

private:
    void takeListing(const WorkspaceBrowserDirectoryPayload& listing);
};
