#include <cassert>
#include <new>

#include "daemon/EditorDocumentDaemon.h"
#include "documents/DocumentLoading.h"
#include "documents/DocumentRetargeting.h"
#include "platform/PlatformError.h"
#include "workspace/WorkspacePathRules.h"

// Open documents that follow their files.

void EditorDocumentDaemon::retargetManagedDocuments(const std::string& sourcePath, const std::string& destinationPath,
                                                    EmitUpdatedEvents emitUpdatedEvents) {
    assert(queue->isCurrent());
    const std::string source = normalizedPath(sourcePath, fileManager);
    const std::string destination = normalizedPath(destinationPath, fileManager);
    for (const std::string& documentID : documentIDsAtOrWithin(source, documentsByID)) {
        ManagedDocument& document = documentsByID.at(documentID);
        std::string newPath = destination + document.path.substr(source.size());
        if (emitUpdatedEvents == EmitUpdatedEvents::no) {
            moveDocument(document, std::move(newPath));
        } else if (followsOutsideRename(document, newPath)) {
            follow(document, newPath);
        }
    }
}

void EditorDocumentDaemon::markManagedDocumentsDeleted(const std::string& atOrWithin) {
    assert(queue->isCurrent());
    for (const std::string& documentID :
         documentIDsAtOrWithin(normalizedPath(atOrWithin, fileManager), documentsByID)) {
        ManagedDocument& document = documentsByID.at(documentID);
        if (document.metadata.isMissing) continue;
        ++document.version;
        document.metadata = {.isMissing = true};
    }
}

void EditorDocumentDaemon::moveDocument(ManagedDocument& document, std::string newPath) {
    DocumentMetadata metadata = metadataAfterMove(document.metadata, currentMetadata(newPath, fileManager));
    DocumentPlace place = currentPlace(newPath, fileManager);
    documentIDByPath.insert_or_assign(newPath, document.documentID);
    // Nothing fails from here on.
    if (newPath != document.path) forgetPath(document);
    document.path = std::move(newPath);
    document.metadata = std::move(metadata);
    document.place = std::move(place);
}

// The path may meanwhile name another open document.
void EditorDocumentDaemon::forgetPath(const ManagedDocument& document) {
    const auto entry = documentIDByPath.find(document.path);
    if (entry != documentIDByPath.end() && entry->second == document.documentID) documentIDByPath.erase(entry);
}

// The client learns a path together with the text at it. Where there is none to tell, daemon and client both stay with
// the path that they have: what is told next would else be about a file that the client does not know.
void EditorDocumentDaemon::follow(ManagedDocument& document, const std::string& newPath) {
    LoadedDocument loaded;
    try {
        loaded = loadDocument(newPath, fileManager, textCoding);
    } catch (const PlatformError&) {
        return;
    } catch (const std::bad_alloc&) {
        return;
    }
    tellLoaded(document, newPath, std::move(loaded));
}

// A program that saves by renaming the old file away leaves another at the old path, and there the document stays.
bool EditorDocumentDaemon::followsOutsideRename(const ManagedDocument& document, const std::string& newPath) const {
    if (document.metadata.isMissing || documentIDByPath.contains(newPath)) return false;
    if (fileManager.itemExists(document.path)) return false;
    try {
        const FileAttributes found = fileManager.attributesOfItem(newPath, FollowLinks::yes);
        return found.type == FileType::regular && !isOlderFile(documentMetadata(found), document.metadata);
    } catch (const PlatformError&) {
        return false;
    }
}
