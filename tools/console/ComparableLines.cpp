#include "tools/console/ComparableLines.h"

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/FileNameText.h"
#include "shared/JSONString.h"
#include "shared/RecordCoding.h"

namespace {

std::string asInJSON(const std::string& path) {
    std::string text;
    appendEscaped(text, textFromFileName(path));
    return text;
}

} // namespace

std::string ComparableLines::comparable(std::string_view envelopeLine) {
    EditorDocumentDaemonEnvelope envelope;
    try {
        envelope = decodeRecord<EditorDocumentDaemonEnvelope>(envelopeLine);
    } catch (const DecodingError&) {
        return std::string(envelopeLine);
    }
    if (envelope.snapshot) {
        envelope.snapshot->documentID = newDocumentName(envelope.snapshot->documentID, envelope.snapshot->path);
        if (envelope.snapshot->modifiedAtTimeIntervalSince1970) envelope.snapshot->modifiedAtTimeIntervalSince1970 = 0;
    }
    if (envelope.documentID) envelope.documentID = documentName(*envelope.documentID);
    if (envelope.workspaceDirectory) {
        for (auto& node : envelope.workspaceDirectory->nodes) node.nodeID = nodeName(node.nodeID, node.path);
    }
    if (auto& mutation = envelope.workspaceMutation; mutation && mutation->itemNodeID) {
        const auto path = mutation->sourcePath ? mutation->sourcePath : mutation->destinationPath;
        mutation->itemNodeID = nodeName(*mutation->itemNodeID, path.value_or(""));
    }
    return encodeRecord(envelope).value_or(std::string(envelopeLine));
}

std::string ComparableLines::documentName(const std::string& documentID) const {
    const auto found = namesByDocumentID.find(documentID);
    return found == namesByDocumentID.end() ? documentID : found->second;
}

std::string ComparableLines::documentID(const std::string& documentName) const {
    const auto found = documentIDsByName.find(documentName);
    return found == documentIDsByName.end() ? documentName : found->second;
}

std::string ComparableLines::nodeName(const std::string& nodeID, const std::string& path) {
    return namesByNodeID.try_emplace(nodeID, "item " + path).first->second;
}

std::string ComparableLines::newDocumentName(const std::string& documentID, const std::string& path) {
    if (const auto known = namesByDocumentID.find(documentID); known != namesByDocumentID.end()) return known->second;
    std::string name = "document " + textFromFileName(path);
    while (documentIDsByName.contains(name)) name += "'";
    documentIDsByName[name] = documentID;
    return namesByDocumentID[documentID] = name;
}

std::string withFolder(std::string line, const std::string& from, const std::string& to) {
    const std::string before = asInJSON(from), after = asInJSON(to);
    for (std::size_t at = line.find(before); at != line.npos; at = line.find(before, at + after.size())) {
        const char next = at + before.size() < line.size() ? line[at + before.size()] : '"';
        if (next == '/' || next == '"') line.replace(at, before.size(), after);
    }
    return line;
}
