#pragma once

#include <map>
#include <string>
#include <vector>

#include "documents/ManagedDocument.h"

// The IDs of the open documents at or within a path, the deepest path first.
std::vector<std::string> documentIDsAtOrWithin(const std::string& path,
                                               const std::map<std::string, ManagedDocument>& documentsByID);

// What is to be stored of a document that moved along with its file: where the file has changed meanwhile, the old
// knowledge stays, so that the next check tells of the change.
DocumentMetadata metadataAfterMove(const DocumentMetadata& stored, const DocumentMetadata& found);
