#include "tests/support/WorkspaceTest.h"

#include <filesystem>
#include <set>
#include <sstream>

#include "tests/support/Files.h"

namespace {

namespace fs = std::filesystem;

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

} // namespace

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
    std::string result;
    for (const std::string& text : texts) (result += result.empty() ? "" : separator) += text;
    return result;
}

WorkspaceTest::WorkspaceTest() {
    fs::create_directory(root);
}

std::string WorkspaceTest::path(std::string_view relativePath) const {
    return relativePath == "." ? root : root + '/' + std::string(relativePath);
}

std::string WorkspaceTest::relative(const std::string& path) const {
    if (path == root) return ".";
    if (path.starts_with(root + '/')) return path.substr(root.size() + 1);
    if (path.starts_with(daemon.directory.path() + '/')) return ".." + path.substr(daemon.directory.path().size());
    return path;
}

void WorkspaceTest::make(const std::string& words) const {
    makeTree(root, words);
}

std::string WorkspaceTest::tree() const {
    std::set<std::string> words;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        std::string word = relative(entry.path());
        if (entry.is_symlink()) {
            word += '>' + fs::read_symlink(entry).string();
        } else if (entry.is_directory()) {
            word += '/';
        }
        words.insert(word);
    }
    return joined({words.begin(), words.end()});
}

WorkspaceTest::Envelopes WorkspaceTest::exchange(EditorDocumentDaemonRequest request) {
    if (!request.rootPath) request.rootPath = root;
    for (auto* field : {&request.path, &request.destinationPath}) {
        const bool isRelative =
            *field && field->value().find_first_not_of(" \n") == 0 && !field->value().starts_with('/');
        if (isRelative) *field = path(field->value());
    }
    return daemon.exchange(std::move(request));
}

WorkspaceTest::Lines WorkspaceTest::send(EditorDocumentDaemonRequest request) {
    const Command command = request.command;
    const Envelopes envelopes = exchange(std::move(request));
    EXPECT_FALSE(envelopes.empty());
    if (!envelopes.empty()) {
        EXPECT_EQ(envelopes[0].kind, EditorDocumentEnvelopeKind::response) << "the response comes first";
        const bool isShared = envelopes[0].message.value_or("").starts_with("Failed to decode request: ");
        EXPECT_EQ(envelopes[0].command, isShared ? std::nullopt : std::optional(command));
    }
    return told(envelopes);
}

WorkspaceTest::Lines WorkspaceTest::told(const Envelopes& envelopes) const {
    Lines lines;
    for (std::size_t position = 0; position < envelopes.size(); ++position) {
        const auto& envelope = envelopes[position];
        const bool isResponse = envelope.kind == EditorDocumentEnvelopeKind::response;
        EXPECT_EQ(isResponse, position == 0 && envelope.success.has_value()) << "one response, before all events";
        std::string line = toldEnvelope(envelope);
        if (!envelope.workspaceMutation) {
            lines.push_back(std::move(line));
        } else if (isResponse) {
            lines.push_back(line + " response");
        } else if (position == 1 && !lines.empty() && lines[0] == line + " response" &&
                   envelopes[0].workspaceMutation == envelope.workspaceMutation) {
            lines[0] = std::move(line);
        } else {
            lines.push_back(line + " event");
        }
    }
    return lines;
}

std::string WorkspaceTest::toldEnvelope(const EditorDocumentDaemonEnvelope& envelope) const {
    if (envelope.success == false) {
        std::string message = envelope.message.value_or("");
        replaceAll(message, "Failed to decode request: ", "");
        replaceAll(message, root, ".");
        return "failure: " + message;
    }
    if (envelope.snapshot) return std::string(nameOf(envelope.event.value())) + ' ' + relative(envelope.snapshot->path);
    if (envelope.documentID) return std::string(nameOf(envelope.event.value())) + " document";
    EXPECT_TRUE(envelope.workspaceRootPath);
    if (envelope.workspaceMutation) return toldMutation(envelope);
    if (envelope.workspaceDirectory) return toldListing(*envelope.workspaceDirectory);
    if (!envelope.event) return "closed " + relative(envelope.workspaceRootPath.value_or(""));
    return std::string(nameOf(*envelope.event)) + ": " + envelope.message.value_or("");
}

std::string WorkspaceTest::toldListing(const WorkspaceBrowserDirectoryPayload& listing) const {
    std::string line = "listing " + relative(listing.directoryPath) + ':';
    std::set<std::string> nodeIDs;
    for (const auto& node : listing.nodes) {
        line += ' ' + node.name + (node.isDirectory ? "/" : "");
        EXPECT_EQ(node.path, listing.directoryPath + '/' + node.name);
        EXPECT_EQ(node.parentPath, listing.directoryPath);
        EXPECT_FALSE(node.isRoot);
        EXPECT_TRUE(nodeIDs.insert(node.nodeID).second) << "two nodes with the ID " << node.nodeID;
    }
    return line;
}

std::string WorkspaceTest::toldMutation(const EditorDocumentDaemonEnvelope& envelope) const {
    const WorkspaceBrowserMutationPayload& mutation = *envelope.workspaceMutation;
    EXPECT_EQ(mutation.rootPath, envelope.workspaceRootPath);
    EXPECT_EQ(mutation.origin, WorkspaceBrowserMutationOrigin::internalOperation);
    std::string line(nameOf(mutation.kind));
    if (mutation.isDirectory) line += *mutation.isDirectory ? " folder" : " file";
    if (mutation.sourcePath) line += ' ' + relative(*mutation.sourcePath);
    if (mutation.destinationPath) line += " > " + relative(*mutation.destinationPath);
    std::vector<std::string> affected;
    for (const auto& directory : mutation.affectedDirectoryPaths) affected.push_back(relative(directory));
    return line + " (" + joined(affected) + ')';
}

void WorkspaceTest::load(const std::string& directories) {
    EXPECT_EQ(send({.command = Command::openWorkspace}).size(), 1U);
    for (const std::string& directory : wordsOf(directories)) {
        EXPECT_EQ(send({.command = Command::loadWorkspaceChildren, .path = directory}).size(), 1U);
    }
}

std::string WorkspaceTest::nodeID(const std::string& itemPath) {
    const auto listing = exchange({.command = Command::loadWorkspaceChildren,
                                   .path = relative(std::filesystem::path(path(itemPath)).parent_path())});
    for (const auto& node : listing.at(0).workspaceDirectory.value().nodes) {
        if (node.path == path(itemPath)) return node.nodeID;
    }
    ADD_FAILURE() << itemPath << " is not listed";
    return "";
}

std::string WorkspaceTest::openDocument(const std::string& documentPath) {
    const auto response = daemon.open(path(documentPath));
    EXPECT_TRUE(response.snapshot) << response.message.value_or("");
    return response.snapshot.value_or(EditorDocumentSnapshotPayload{}).documentID;
}
