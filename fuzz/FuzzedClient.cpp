#include "fuzz/FuzzedClient.h"

#include <set>

#include "fuzz/Require.h"
#include "workspace/PathComponents.h"

namespace {

bool isHidden(const std::string& name) {
    return name == ".DS_Store" || name == ".marblefern" || name == ".marblefernlogs" || name == ".logs";
}

std::string joined(const std::set<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += " “" + name + "”";
    return text;
}

} // namespace

void FuzzedClient::take(const EditorDocumentDaemonEnvelope& envelope) {
    using Command = EditorDocumentRequestCommand;
    using Event = EditorDocumentEventKind;
    if (envelope.snapshot) {
        std::int64_t& version = versionByDocumentID[envelope.snapshot->documentID];
        require(envelope.snapshot->version > version, "a version does not grow");
        version = envelope.snapshot->version;
    } else if (envelope.event == Event::deleted) {
        ++versionByDocumentID.at(envelope.documentID.value());
    } else if (envelope.command == Command::close && envelope.success == true) {
        versionByDocumentID.erase(envelope.documentID.value());
    }
    if (envelope.workspaceDirectory) takeListing(*envelope.workspaceDirectory);
    if (envelope.event == Event::workspaceRootUnavailable ||
        (envelope.command == Command::closeWorkspace && envelope.success == true))
        nodesByDirectoryByRoot.erase(envelope.workspaceRootPath.value());
}

// Folders that no listing leads to are forgotten.
void FuzzedClient::takeListing(const WorkspaceBrowserDirectoryPayload& listing) {
    auto& known = nodesByDirectoryByRoot[listing.rootPath];
    known[listing.directoryPath] = listing.nodes;
    std::set<std::string> reached{listing.rootPath};
    for (auto& [directoryPath, nodes] : known) { // parents come first
        if (!reached.contains(directoryPath)) continue;
        for (const auto& node : nodes) {
            if (node.isDirectory) reached.insert(node.path);
        }
    }
    std::erase_if(known, [&](const auto& entry) { return !reached.contains(entry.first); });
}

void FuzzedClient::requireTruth(const MemoryDisk& disk) const {
    for (const auto& [rootPath, known] : nodesByDirectoryByRoot) {
        std::set<std::string> nodeIDs;
        for (const auto& [directoryPath, nodes] : known) {
            std::set<std::string> shown;
            for (const auto& node : nodes) {
                require(nodeIDs.insert(node.nodeID).second, "two names have one ID: " + node.path);
                shown.insert(node.name);
            }
            std::set<std::string> present = disk.names(disk.resolved(directoryPath, FollowLinks::yes));
            std::erase_if(present, isHidden);
            require(shown == present, directoryPath + " shows" + joined(shown) + " and not" + joined(present));
        }
    }
}
