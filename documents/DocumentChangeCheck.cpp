#include <cassert>
#include <new>

#include "daemon/EditorDocumentDaemon.h"
#include "documents/DocumentSnapshot.h"
#include "platform/PlatformError.h"
#include "workspace/PathComponents.h"

namespace {

bool isInAnotherDirectory(const ManagedDocument& document, const FileManager& fileManager) {
    const auto realDirectoryPath = fileManager.realPath(parentPath(document.path));
    return realDirectoryPath && *realDirectoryPath != document.place.realDirectoryPath;
}

} // namespace

void EditorDocumentDaemon::checkDocumentForChanges(const std::string& documentID) {
    assert(queue->isCurrent());
    const auto open = documentsByID.find(documentID);
    if (open == documentsByID.end()) return;

    const DocumentMetadata found = currentMetadata(open->second.path, fileManager);
    // Links may lead elsewhere by now, and be it to the same file. One that leads nowhere may lead there again, unless
    // the directory is another one now.
    if (!found.isMissing || isInAnotherDirectory(open->second, fileManager))
        open->second.place = currentPlace(open->second.path, fileManager);
    // A missing file stays missing, a present one has neither its time, its size nor its identity changed.
    if (found == open->second.metadata) return;
    if (found.isMissing) {
        markMissing(open->second);
    } else {
        reload(open->second);
    }
}

void EditorDocumentDaemon::markMissing(ManagedDocument& document) {
    const auto event = EncodedLine::of({
        .kind = EditorDocumentEnvelopeKind::event,
        .event = EditorDocumentEventKind::deleted,
        .documentID = document.documentID,
    });
    ++document.version;
    document.metadata = {.isMissing = true};
    emit(event);
}

void EditorDocumentDaemon::reload(ManagedDocument& document) {
    // The document stays as it was where it cannot be read, so that the next check tries again.
    const auto tellUnavailable = [&](std::string message) {
        write({
            .kind = EditorDocumentEnvelopeKind::event,
            .message = std::move(message),
            .event = EditorDocumentEventKind::unavailable,
            .documentID = document.documentID,
        });
    };
    try {
        tellLoaded(document, document.path, loadDocument(document.path, fileManager, textCoding));
    } catch (const PlatformError& error) {
        tellUnavailable(error.localizedDescription);
    } catch (const std::bad_alloc&) {
        tellUnavailable("The file needs more memory than there is.");
    }
}

void EditorDocumentDaemon::tellLoaded(ManagedDocument& document, const std::string& path, LoadedDocument loaded) {
    ManagedDocument told = document;
    told.path = path;
    told.place = currentPlace(path, fileManager);
    ++told.version;
    told.format = loaded.format;
    told.metadata = loaded.metadata;
    const auto event = EncodedLine::of({
        .kind = EditorDocumentEnvelopeKind::event,
        .event = EditorDocumentEventKind::updated,
        .documentID = told.documentID,
        .snapshot = documentSnapshot(told, std::move(loaded.text)),
    });
    if (told.path != document.path) {
        documentIDByPath.insert_or_assign(told.path, told.documentID);
        forgetPath(document);
    }
    document = std::move(told);
    emit(event);
}
