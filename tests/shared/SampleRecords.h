#pragma once

#include <ostream>

#include "shared/EditorDocumentDaemonEnvelope.h"
#include "shared/EditorDocumentDaemonRequest.h"
#include "shared/RecordCoding.h"

// Shows a record as its JSON where an expectation fails.
template <WireRecord Record>
void PrintTo(const Record& record, std::ostream* stream) {
    *stream << encodeRecord(record).value_or("(a record that cannot be encoded)");
}

// One record of each kind with every field filled, no two strings alike.
inline EditorDocumentDaemonRequest fullRequest() {
    return {.requestID = "r1",
            .command = EditorDocumentRequestCommand::deleteWorkspaceItem,
            .rootPath = "/root",
            .path = "/root/\xFF",
            .destinationPath = "/root/b",
            .name = "name \"quoted\"",
            .documentID = "d1",
            .text = "line\r\n\tline\u2028Ж🙂",
            .expectedVersion = -9223372036854775807 - 1};
}

inline EditorDocumentSnapshotPayload fullSnapshot() {
    return {.documentID = "d2",
            .path = "/s\xC0",
            .version = 3,
            .text = "t",
            .encodingRawValue = 18446744073709551615u,
            .newlineStyle = EditorDocumentNewlineStyle::crlf,
            .modifiedAtTimeIntervalSince1970 = 1700000000.123456};
}

inline WorkspaceBrowserNodePayload fullNode() {
    return {.nodeID = "path:/n\xFE",
            .path = "/n\xFE",
            .parentPath = "/p",
            .name = "n\xFE",
            .isDirectory = true,
            .isRoot = true};
}

inline WorkspaceBrowserDirectoryPayload fullDirectory() {
    return {.rootPath = "/w",
            .directoryPath = "/w/d",
            .nodes = {fullNode(), WorkspaceBrowserNodePayload{.name = "second"}}};
}

inline WorkspaceBrowserMutationPayload fullMutation() {
    return {.rootPath = "/m",
            .origin = WorkspaceBrowserMutationOrigin::externalWatch,
            .kind = WorkspaceBrowserMutationKind::deleted,
            .itemNodeID = "data:AA==",
            .isDirectory = false,
            .sourcePath = "/from\x80",
            .destinationPath = "/to",
            .affectedDirectoryPaths = {"/a\x81", "/b"}};
}

inline EditorDocumentDaemonEnvelope fullEnvelope() {
    return {.kind = EditorDocumentEnvelopeKind::event,
            .requestID = "r2",
            .command = EditorDocumentRequestCommand::save,
            .success = false,
            .message = "Cannot read “\xFF”",
            .event = EditorDocumentEventKind::workspaceMutation,
            .documentID = "d3",
            .snapshot = fullSnapshot(),
            .workspaceRootPath = "/workspace",
            .workspaceDirectory = fullDirectory(),
            .workspaceMutation = fullMutation()};
}
