#include "tools/console/EnvelopeSummary.h"

#include "workspace/PathComponents.h"

namespace {

std::string shortPath(const std::string& path, const std::string& rootPath) {
    if (path == rootPath || rootPath.empty() || rootPath == "/" || !isAtOrWithin(path, rootPath)) return path;
    return path.substr(rootPath.size() + 1);
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string summaryOf(const EditorDocumentSnapshotPayload& snapshot, const std::string& rootPath) {
    return shortPath(snapshot.path, rootPath) + ", version " + std::to_string(snapshot.version) + ", " +
           counted(snapshot.text.size(), "byte") + ", " + std::string(nameOf(snapshot.newlineStyle)) + ", encoding " +
           std::to_string(snapshot.encodingRawValue);
}

std::string summaryOf(const WorkspaceBrowserMutationPayload& mutation, const std::string& rootPath) {
    std::string text(nameOf(mutation.kind));
    if (mutation.sourcePath) text += " " + shortPath(*mutation.sourcePath, rootPath);
    if (mutation.sourcePath && mutation.destinationPath) text += " ->";
    if (mutation.destinationPath) text += " " + shortPath(*mutation.destinationPath, rootPath);
    return text + (mutation.origin == WorkspaceBrowserMutationOrigin::externalWatch ? ", by another program" : "");
}

std::string summaryOf(const WorkspaceBrowserDirectoryPayload& directory, const std::string& rootPath) {
    return shortPath(directory.directoryPath, rootPath) + ": " + counted(directory.nodes.size(), "item");
}

} // namespace

std::string summaryOf(const EditorDocumentDaemonEnvelope& envelope, const std::string& rootPath) {
    std::string text;
    const auto add = [&](const std::string& more) { text += (text.empty() ? "" : " ") + more; };
    if (envelope.event) add(std::string(nameOf(*envelope.event)));
    if (envelope.command) add(std::string(nameOf(*envelope.command)));
    if (envelope.success == false) add("failed:");
    if (envelope.message) add(*envelope.message);
    if (envelope.snapshot) {
        add(summaryOf(*envelope.snapshot, rootPath));
    } else if (envelope.documentID) {
        add(*envelope.documentID);
    }
    if (envelope.workspaceDirectory) add(summaryOf(*envelope.workspaceDirectory, rootPath));
    if (envelope.workspaceMutation) add(summaryOf(*envelope.workspaceMutation, rootPath));
    return text;
}
