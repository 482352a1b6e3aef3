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
        foldersByRoot.erase(envelope.workspaceRootPath.value());
}

// Folders that no listing leads to are forgotten, and so are those whose place another folder has taken.
void FuzzedClient::takeListing(const WorkspaceBrowserDirectoryPayload& listing) {
    FoldersByPath& known = foldersByRoot[listing.rootPath];
    Folder& listed = known[listing.directoryPath];
    listed.nodes = listing.nodes;
    std::map<std::string, std::string> shown{{listing.rootPath, ""}}; // node IDs by path
    for (auto each = known.begin(); each != known.end();) {
        auto& [path, folder] = *each;
        const auto place = shown.find(path);
        if (&folder == &listed && place != shown.end()) folder.nodeID = place->second;
        if (place == shown.end() || folder.nodeID != place->second) {
            each = known.erase(each);
            continue;
        }
        for (const auto& node : folder.nodes) {
            if (node.isDirectory) shown.emplace(node.path, node.nodeID);
        }
        ++each;
    }
}

void FuzzedClient::requireTruth(const MemoryDisk& disk) const {
    for (const auto& [rootPath, known] : foldersByRoot) {
        std::set<std::string> nodeIDs;
        for (const auto& [directoryPath, folder] : known) {
            std::set<std::string> shown;
            for (const auto& node : folder.nodes) {
                require(nodeIDs.insert(node.nodeID).second, "two names have one ID: " + node.path);
                shown.insert(node.name);
            }
            std::set<std::string> present = disk.names(disk.resolved(directoryPath, FollowLinks::yes));
            std::erase_if(present, isHidden);
            require(shown == present, directoryPath + " shows" + joined(shown) + " and not" + joined(present));
        }
    }
}
