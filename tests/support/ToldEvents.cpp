#include "tests/support/ToldEvents.h"

#include <gtest/gtest.h>

namespace {

std::string relative(const std::string& path, const std::string& rootPath) {
    if (path == rootPath) return ".";
    return path.starts_with(rootPath + '/') ? path.substr(rootPath.size() + 1) : path;
}

std::string toldMutation(const WorkspaceBrowserMutationPayload& mutation, const std::string& rootPath) {
    std::string text(nameOf(mutation.kind));
    if (mutation.origin == WorkspaceBrowserMutationOrigin::internalOperation) text = "internally " + text;
    if (mutation.sourcePath) text += ' ' + relative(*mutation.sourcePath, rootPath);
    if (mutation.sourcePath && mutation.destinationPath) text += " >";
    if (mutation.destinationPath) text += ' ' + relative(*mutation.destinationPath, rootPath);
    return text;
}

std::string toldListing(const WorkspaceBrowserDirectoryPayload& listing, const std::string& rootPath) {
    std::string text = "children " + relative(listing.directoryPath, rootPath) + ':';
    for (const auto& node : listing.nodes) text += ' ' + node.name + (node.isDirectory ? "/" : "");
    return text;
}

std::string toldDocumentOrRoot(const EditorDocumentDaemonEnvelope& event, const std::string& rootPath) {
    std::string text(nameOf(event.event.value()));
    if (event.workspaceRootPath) text += ' ' + relative(*event.workspaceRootPath, rootPath);
    if (event.documentID) text += ' ' + *event.documentID;
    if (event.snapshot) {
        text += " v" + std::to_string(event.snapshot->version) + ' ' + relative(event.snapshot->path, rootPath);
    }
    if (event.message) text += ": " + *event.message;
    return text;
}

} // namespace

std::string toldEvent(const EditorDocumentDaemonEnvelope& event, const std::string& rootPath) {
    EXPECT_EQ(event.kind, EditorDocumentEnvelopeKind::event);
    EXPECT_TRUE(event.event);
    if (!event.workspaceMutation && !event.workspaceDirectory) return toldDocumentOrRoot(event, rootPath);
    const std::string& toldRootPath = event.workspaceRootPath.value();
    const std::string prefix = toldRootPath == rootPath ? "" : relative(toldRootPath, rootPath) + ": ";
    if (event.workspaceMutation) {
        EXPECT_EQ(event.workspaceMutation->rootPath, toldRootPath);
        return prefix + toldMutation(*event.workspaceMutation, rootPath);
    }
    EXPECT_EQ(event.workspaceDirectory->rootPath, toldRootPath);
    return prefix + toldListing(*event.workspaceDirectory, rootPath);
}
