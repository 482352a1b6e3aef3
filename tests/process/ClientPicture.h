#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "shared/EditorDocumentDaemonEnvelope.h"

// What an editor knows that does nothing but follow the envelopes: the expanded folders of one workspace, and the open
// documents.
class ClientPicture {
public:
    struct Document {
        std::string path{};
        std::string text{};
        std::int64_t version{};
        bool isMissing = false;
        bool isUnavailable = false; // nobody knows more of it than that it may be as it was
    };
    struct Node {
        std::string nodeID{};
        bool isDirectory = false;
    };
    using Listing = std::map<std::string, Node>; // by name
    struct Folder {
        std::string nodeID{};
        Listing children{};
    };

    explicit ClientPicture(std::string workspaceRootPath) : rootPath(std::move(workspaceRootPath)) {}

    void take(const EditorDocumentDaemonEnvelope& envelope);

    // How the picture differs from the disk, in words; empty where they agree.
    std::string difference() const;

    std::map<std::string, Folder> folders{};
    std::map<std::string, Document> documents{};

private:
    void takeOwnMutation(const WorkspaceBrowserMutationPayload& mutation);
    void takeListing(const WorkspaceBrowserDirectoryPayload& listing);
    void forgetUnlisted();
    const Node* node(const std::string& path) const;

    std::string rootPath;
};
