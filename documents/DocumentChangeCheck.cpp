#include <cassert>

#include "daemon/EditorDocumentDaemon.h"
#include "documents/DocumentLoading.h"
#include "documents/DocumentSnapshot.h"
#include "platform/PlatformError.h"

void EditorDocumentDaemon::checkDocumentForChanges(const std::string& documentID) {
    assert(queue->isCurrent());
    const auto open = documentsByID.find(documentID);
    if (open == documentsByID.end()) return;

    const DocumentMetadata found = currentMetadata(open->second.path, fileManager);
    // A missing file stays missing, a present one has neither its time, its size nor its identity changed.
    if (found == open->second.metadata) return;
    if (found.isMissing) {
        markMissing(open->second);
    } else {
        reload(open->second);
    }
}

void EditorDocumentDaemon::markMissing(ManagedDocument& document) {
    const auto event = encodedLine({
        .kind = EditorDocumentEnvelopeKind::event,
        .event = EditorDocumentEventKind::deleted,
        .documentID = document.documentID,
    });
    ++document.version;
    document.metadata = {.isMissing = true};
    emit(event);
}

void EditorDocumentDaemon::reload(ManagedDocument& document) {
    LoadedDocument loaded;
    try {
        loaded = loadDocument(document.path, fileManager, textCoding);
    } catch (const PlatformError& error) {
        // The document stays as it was, so that the next check tries again.
        return write({
            .kind = EditorDocumentEnvelopeKind::event,
            .message = error.localizedDescription,
            .event = EditorDocumentEventKind::unavailable,
            .documentID = document.documentID,
        });
    }
    ManagedDocument reloaded = document;
    ++reloaded.version;
    reloaded.format = loaded.format;
    reloaded.metadata = loaded.metadata;
    const auto event = encodedLine({
        .kind = EditorDocumentEnvelopeKind::event,
        .event = EditorDocumentEventKind::updated,
        .documentID = reloaded.documentID,
        .snapshot = documentSnapshot(reloaded, std::move(loaded.text)),
    });
    document = std::move(reloaded);
    emit(event);
}
