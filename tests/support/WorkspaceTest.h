#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/DaemonHarness.h"

std::vector<std::string> wordsOf(const std::string& text);
std::string joined(const std::vector<std::string>& texts, std::string_view separator = " ");

// A workspace root on a real disk, and what the daemon says of it in short lines: paths are relative to the root, which
// itself is ".". A tree is told in the words of makeTree.
class WorkspaceTest : public testing::Test {
protected:
    using Command = EditorDocumentRequestCommand;
    using Lines = std::vector<std::string>;
    using Envelopes = std::vector<EditorDocumentDaemonEnvelope>;

    WorkspaceTest();

    std::string path(std::string_view relativePath) const;
    std::string relative(const std::string& path) const;

    void make(const std::string& words) const;
    // The words of all that is on the disk, sorted.
    std::string tree() const;

    // Sends a request about the root, whose paths may be relative to it, and tells all that it caused:
    //     failure: The source item no longer exists.
    //     listing .: sub/ a.txt              (of a response or an event)
    //     renamed a.txt > b.txt (.)          (response and event, with the affected directories)
    //     renamed a.txt > b.txt (.) response, or event, if the other is missing
    // Whatever else has to be the same in all such envelopes is expected here.
    Lines send(EditorDocumentDaemonRequest request);
    Lines told(const Envelopes& envelopes) const;

    // Opens the root, then lists the directories named.
    void load(const std::string& directories = "");

    // Of an item as the daemon lists it now.
    std::string nodeID(const std::string& itemPath);

    // Opens a document and returns its ID.
    std::string openDocument(const std::string& documentPath);

    DaemonHarness daemon;
    const std::string root = daemon.directory.path("w");

private:
    Envelopes exchange(EditorDocumentDaemonRequest request);
    std::string toldListing(const WorkspaceBrowserDirectoryPayload& listing) const;
    std::string toldMutation(const EditorDocumentDaemonEnvelope& envelope) const;
    std::string toldEnvelope(const EditorDocumentDaemonEnvelope& envelope) const;
};
