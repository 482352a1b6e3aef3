#include "documents/DocumentRetargeting.h"

#include <algorithm>

#include "workspace/PathComponents.h"

std::vector<std::string> documentIDsAtOrWithin(const std::string& path,
                                               const std::map<std::string, ManagedDocument>& documentsByID) {
    std::vector<std::string> documentIDs;
    for (const auto& [documentID, document] : documentsByID) {
        if (isAtOrWithin(document.path, path)) documentIDs.push_back(documentID);
    }
    const auto depth = [&](const std::string& documentID) {
        const std::string& documentPath = documentsByID.at(documentID).path;
        return std::count(documentPath.begin(), documentPath.end(), '/');
    };
    std::stable_sort(documentIDs.begin(), documentIDs.end(),
                     [&](const auto& left, const auto& right) { return depth(left) > depth(right); });
    return documentIDs;
}

DocumentMetadata metadataAfterMove(const DocumentMetadata& stored, const DocumentMetadata& found) {
    // Another file system gives the same file another identity.
    const bool isSameFileSystem = stored.fileIdentity && found.fileIdentity &&
                                  stored.fileIdentity->fileSystemNumber == found.fileIdentity->fileSystemNumber;
    if (isSameFileSystem && stored.fileIdentity != found.fileIdentity) return stored;
    const bool isUnchanged = stored.isMissing == found.isMissing && stored.fileSize == found.fileSize &&
                             stored.modifiedAtTimeIntervalSince1970 == found.modifiedAtTimeIntervalSince1970;
    return isUnchanged ? found : stored;
}

bool isOlderFile(const DocumentMetadata& found, const DocumentMetadata& stored) {
    if (!found.fileIdentity || !stored.fileIdentity) return false;
    const auto& date = found.fileIdentity->creationDate;
    return date && date < stored.fileIdentity->creationDate;
}
