#pragma once

#include <string>

#include "documents/ManagedDocument.h"
#include "shared/EditorDocumentSnapshotPayload.h"

// What the client is told of a document and its text.
EditorDocumentSnapshotPayload documentSnapshot(const ManagedDocument& document, std::string text);
