#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "shared/EditorDocumentDaemonEnvelope.h"

// One visible line of a tree.
struct TreeRow {
    int depth{};
    std::string name{};
    std::string path{};
    bool isDirectory = false;
    bool isExpanded = false;

    bool operator==(const TreeRow&) const = default;
};

// As people see it, to be made printable.
std::string treeLine(const TreeRow& row);

// The listings of one workspace as the daemon tells them.
class WorkspaceTree {
public:
    // Takes what an envelope says of the workspace, be it an answer or an event. The first listing makes the root.
    void apply(const EditorDocumentDaemonEnvelope& envelope);

    // The daemon keeps telling of a folder that was once listed; that it is closed matters here only.
    void collapse(const std::string& directoryPath);

    const std::string& rootPath() const { return root; } // empty while there is none
    std::vector<TreeRow> rows() const;
    bool isDirectory(const std::string& path) const;
    // Of a folder that was listed.
    std::vector<TreeRow> children(const std::string& directoryPath) const;

private:
    void replace(const WorkspaceBrowserDirectoryPayload& directory);
    void forgetUnlisted();
    void appendRows(std::vector<TreeRow>& result, const std::string& directoryPath, int depth) const;

    std::string root{};
    std::map<std::string, std::vector<WorkspaceBrowserNodePayload>> listings{};
    std::set<std::string> collapsedPaths{};
};
