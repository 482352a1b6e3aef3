#include <cassert>
#include <exception>
#include <new>
#include <utility>

#include "daemon/EditorDocumentDaemon.h"
#include "documents/DocumentLoading.h"
#include "documents/DocumentSaving.h"
#include "documents/DocumentSnapshot.h"
#include "platform/PlatformError.h"
#include "workspace/PathComponents.h"
#include "workspace/WorkspacePathRules.h"

void EditorDocumentDaemon::handleOpen(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const auto path = requestedPath(request.path, fileManager);
    if (!path) return respondFailure(request, "Missing file path.");

    ManagedDocument document{.path = *path, .version = 1};
    // An opening that found no memory may have left an ID behind, and no document.
    const auto openID = documentIDByPath.find(document.path);
    const auto open = openID == documentIDByPath.end() ? documentsByID.end() : documentsByID.find(openID->second);
    if (open != documentsByID.end()) {
        document.documentID = open->first;
        document.version = open->second.version + 1;
    }

    LoadedDocument loaded;
    try {
        loaded = loadDocument(document.path, fileManager, textCoding);
    } catch (const PlatformError& error) {
        return respondFailure(request, error.localizedDescription);
    }
    if (document.documentID.empty()) document.documentID = platform.makeUUID();
    document.format = loaded.format;
    document.metadata = loaded.metadata;
    document.place = currentPlace(document.path, fileManager);
    const auto answer = EncodedLine::of({
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = request.requestID,
        .command = request.command,
        .success = true,
        .snapshot = documentSnapshot(document, std::move(loaded.text)),
    });
    documentIDByPath.insert_or_assign(document.path, document.documentID);
    documentsByID[document.documentID] = std::move(document);
    refreshWatchRoots();
    emit(answer);
}

void EditorDocumentDaemon::handleSave(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const ManagedDocument* open = requestedDocument(request);
    if (!open) return respondFailure(request, "Unknown document.");
    if (!request.text) return respondFailure(request, "Missing document text.");
    if (request.expectedVersion != open->version) {
        return respondFailure(request, "The file changed on disk before this save completed.");
    }
    ManagedDocument document = *open;
    const auto bytes = encodedDocumentText(*request.text, document.format, textCoding);
    if (!bytes) return respondFailure(request, "Failed to encode the document for saving.");

    // What was written is remembered, not what is found afterwards: another program's text in between stays a change.
    // The answer is ready before the file is replaced, so that nothing can fail after that.
    PreparedSave save(document.path, *bytes, fileManager);
    document.metadata = save.metadata();
    ++document.version;
    const auto answer = EncodedLine::of({
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = request.requestID,
        .command = request.command,
        .success = true,
        .snapshot = documentSnapshot(document, std::move(*request.text)),
    });
    document.metadata = save.commit();
    ManagedDocument& saved = documentsByID.at(document.documentID) = std::move(document);
    emit(answer);
    recogniseSavedFile(saved.path);
    followSavedFile(saved);
    tellOtherDocuments(saved);
}

// Where there was no file, links may have come to lead elsewhere, and nothing tells of the new one but this save, which
// is done and answered whatever becomes of what is left.
void EditorDocumentDaemon::followSavedFile(ManagedDocument& document) {
    try {
        DocumentPlace place = currentPlace(document.path, fileManager);
        if (place == document.place) return;
        document.place = std::move(place);
        refreshWatchRoots();
    } catch (const std::bad_alloc&) {
        tellEverythingAnewSoon();
    }
}

// Of the same file, which is reached by a link, say. They learn of the text before they can save over it.
void EditorDocumentDaemon::tellOtherDocuments(const ManagedDocument& saved) {
    try {
        for (const auto& [documentID, document] : documentsByID) {
            const bool isSameFile = document.place.realPath == saved.place.realPath;
            if (isSameFile && documentID != saved.documentID) checkDocumentForChanges(documentID);
        }
    } catch (const std::exception&) {
        tellEverythingAnewSoon();
    }
}

void EditorDocumentDaemon::handleClose(EditorDocumentDaemonRequest request) {
    assert(queue->isCurrent());
    const ManagedDocument* open = requestedDocument(request);
    if (!open) return respondFailure(request, "Unknown document.");

    const ManagedDocument document = *open;
    documentsByID.erase(document.documentID);
    forgetPath(document);
    refreshWatchRoots();
    write({
        .kind = EditorDocumentEnvelopeKind::response,
        .requestID = request.requestID,
        .command = request.command,
        .success = true,
        .documentID = document.documentID,
    });
}

const ManagedDocument* EditorDocumentDaemon::requestedDocument(const EditorDocumentDaemonRequest& request) const {
    const auto documentID = presentField(request.documentID);
    const auto open = documentID ? documentsByID.find(*documentID) : documentsByID.end();
    return open == documentsByID.end() ? nullptr : &open->second;
}
