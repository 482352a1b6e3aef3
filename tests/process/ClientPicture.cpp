#include "tests/process/ClientPicture.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>

#include "platform/linux/TemporaryName.h"
#include "tests/support/WorkspaceTest.h"
#include "workspace/PathComponents.h"

namespace {

namespace fs = std::filesystem;

std::string wordsOnDisk(const std::string& path) {
    std::set<std::string> words;
    std::error_code error;
    for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
        // What a copy had made when it failed, and what failed it forbids to remove, no listing shows.
        const std::string name = entry->path().filename();
        if (isTemporarySaveName(name)) continue;
        const bool isDirectory = entry->symlink_status().type() == fs::file_type::directory;
        words.insert(name + (isDirectory ? "/" : ""));
    }
    return joined({words.begin(), words.end()});
}

std::string words(const ClientPicture::Listing& listing) {
    std::set<std::string> words;
    for (const auto& [name, node] : listing) words.insert(name + (node.isDirectory ? "/" : ""));
    return joined({words.begin(), words.end()});
}

std::string stateOnDisk(const std::string& path) {
    std::error_code error;
    const auto status = fs::status(path, error);
    if (!fs::exists(status)) return "missing";
    if (!fs::is_regular_file(status)) return "unavailable";
    std::ifstream file(path, std::ios::binary);
    return '"' + std::string(std::istreambuf_iterator<char>(file), {}) + '"';
}

void lose(ClientPicture::Document& document) {
    ++document.version;
    document.isMissing = true;
    document.isUnavailable = false;
}

} // namespace

void ClientPicture::take(const EditorDocumentDaemonEnvelope& envelope) {
    using Event = EditorDocumentEventKind;
    const bool isResponse = envelope.kind == EditorDocumentEnvelopeKind::response;
    if (isResponse && envelope.workspaceMutation) takeOwnMutation(*envelope.workspaceMutation);
    if (envelope.workspaceDirectory) takeListing(*envelope.workspaceDirectory);
    if (envelope.event == Event::workspaceRootUnavailable) folders.clear();
    if (envelope.snapshot) {
        const auto& snapshot = *envelope.snapshot;
        documents[snapshot.documentID] = {.path = snapshot.path, .text = snapshot.text, .version = snapshot.version};
    } else if (envelope.event == Event::unavailable) {
        documents.at(envelope.documentID.value()).isUnavailable = true;
    } else if (envelope.event == Event::deleted) {
        lose(documents.at(envelope.documentID.value()));
    }
}

// Of its own mutations the client is told nothing more about its documents.
void ClientPicture::takeOwnMutation(const WorkspaceBrowserMutationPayload& mutation) {
    using Kind = WorkspaceBrowserMutationKind;
    for (auto& [documentID, document] : documents) {
        if (!mutation.sourcePath || !isAtOrWithin(document.path, *mutation.sourcePath)) continue;
        if (mutation.kind == Kind::renamed || mutation.kind == Kind::moved) {
            document.path.replace(0, mutation.sourcePath->size(), mutation.destinationPath.value());
        } else if (mutation.kind == Kind::trashed || mutation.kind == Kind::deleted) {
            if (!document.isMissing) lose(document);
        }
    }
}

void ClientPicture::takeListing(const WorkspaceBrowserDirectoryPayload& listing) {
    const Node* const listed = node(listing.directoryPath);
    Folder& folder = folders[listing.directoryPath] = {.nodeID = listed ? listed->nodeID : ""};
    for (const auto& child : listing.nodes) folder.children[child.name] = {child.nodeID, child.isDirectory};
    forgetUnlisted();
}

// A folder that is in no listing is forgotten, and so is one whose name another folder has now. Those above come first.
void ClientPicture::forgetUnlisted() {
    std::erase_if(folders, [&](const auto& entry) {
        if (entry.first == rootPath) return false;
        const Node* const listed = node(entry.first);
        return !listed || !listed->isDirectory || listed->nodeID != entry.second.nodeID;
    });
}

const ClientPicture::Node* ClientPicture::node(const std::string& path) const {
    const auto parent = folders.find(parentPath(path));
    if (parent == folders.end()) return nullptr;
    const auto child = parent->second.children.find(lastPathComponent(path));
    return child == parent->second.children.end() ? nullptr : &child->second;
}

std::string ClientPicture::difference() const {
    std::string text;
    for (const auto& [path, folder] : folders) {
        const std::string found = wordsOnDisk(path);
        if (found != words(folder.children)) text += path + ": " + found + ", not " + words(folder.children) + '\n';
    }
    for (const auto& [documentID, document] : documents) {
        const std::string found = stateOnDisk(document.path);
        const std::string known = document.isMissing ? "missing" : '"' + document.text + '"';
        const bool agrees = found == known || (document.isUnavailable && found == "unavailable");
        if (!agrees) text += document.path + " is " + found + ", not " + known + '\n';
    }
    return text;
}
