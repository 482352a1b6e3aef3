#pragma once

#include <string>
#include <vector>

#include "tests/process/ClientPicture.h"
#include "tests/process/DaemonClient.h"
#include "tests/support/TemporaryDirectory.h"

// A client that has opened a workspace, and the shell in which other programs change it.
class WatchedSession {
public:
    using Lines = std::vector<std::string>;

    // The words make the tree: "a/" is a folder, "a/b" a file whose text is its path.
    explicit WatchedSession(const std::string& words, const std::vector<std::string>& launcher = {});

    std::string path(const std::string& relativePath) const { return root + '/' + relativePath; }
    // In the root.
    void shell(const std::string& command) const;

    void load(const std::string& directory);
    // All that the client shows, from the top: what could not be listed for a while is told of only after that.
    void expandAgain();
    // Events name the document by the ID that it gets here: "document-1" for the first one.
    std::string open(const std::string& document);
    void close(const std::string& documentID);
    void closeWorkspace();
    EditorDocumentDaemonEnvelope ask(EditorDocumentDaemonRequest request);
    // The next response.
    EditorDocumentDaemonEnvelope answer();

    // The next so many events, in short lines.
    Lines events(std::size_t count);
    // All events up to those of a file that is made and deleted again, by when everything is told that happened before.
    Lines eventsUntilQuiet();
    // Reads on until the client knows what is on the disk; what differs when time is up. A workspace that was lost on
    // the way is opened again.
    std::string differenceInTheEnd();

    TemporaryDirectory directory;
    const std::string root = directory.path("w");
    DaemonClient client;
    ClientPicture picture{root};

private:
    EditorDocumentDaemonEnvelope next();
    void awaitInListing(const std::string& sentinel, bool isThere);
    std::string toldShort(const EditorDocumentDaemonEnvelope& event) const;

    std::vector<std::string> documentIDs;
    int sentinelCount = 0;
};
