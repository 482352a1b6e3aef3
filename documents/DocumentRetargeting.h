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

// Whether the file is another one, which was there before the document's own. A newer one may be what another program
// saved at the document's path; an older one had the path before, and its renaming is none of the document's business.
bool isOlderFile(const DocumentMetadata& found, const DocumentMetadata& stored);
