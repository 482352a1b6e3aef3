// Made from the schemas by scripts/generateWireTypes.js; "npm run generate" makes it again.

/** One line from the client. Unknown keys are ignored. */
export type EditorDocumentDaemonRequest = {
    requestID: string;
    command: EditorDocumentRequestCommand;
    rootPath?: FileNameText | null;
    path?: FileNameText | null;
    destinationPath?: FileNameText | null;
    name?: FileNameText | null;
    documentID?: string | null;
    text?: string | null;
    expectedVersion?: number | null;
};

/** A file name, or a text that may quote one. A byte that is not part of well-formed UTF-8 stands as the character U+10F800 + byte. */
export type FileNameText = string;

export type EditorDocumentRequestCommand = "open" | "save" | "close" | "openWorkspace" | "closeWorkspace" | "loadWorkspaceChildren" | "createWorkspaceFile" | "createWorkspaceFolder" | "renameWorkspaceItem" | "moveWorkspaceItem" | "copyWorkspaceItem" | "duplicateWorkspaceItem" | "trashWorkspaceItem" | "deleteWorkspaceItem";

/** One line to the client: the response to a request, or an event. */
export type EditorDocumentDaemonEnvelope =
    | SnapshotResponse
    | CloseResponse
    | WorkspaceDirectoryResponse
    | CloseWorkspaceResponse
    | WorkspaceMutationResponse
    | RefusedResponse
    | FailedResponse
    | UpdatedEvent
    | DeletedEvent
    | UnavailableEvent
    | WorkspaceChildrenUpdatedEvent
    | WorkspaceRootUnavailableEvent
    | WorkspaceMutationEvent;

export type SnapshotResponse = {
    kind: "response";
    requestID: string;
    command: "open" | "save";
    success: true;
    snapshot: EditorDocumentSnapshotPayload;
};

export type CloseResponse = {
    kind: "response";
    requestID: string;
    command: "close";
    success: true;
    documentID: string;
};

export type WorkspaceDirectoryResponse = {
    kind: "response";
    requestID: string;
    command: "openWorkspace" | "loadWorkspaceChildren";
    success: true;
    workspaceRootPath: FileNameText;
    workspaceDirectory: WorkspaceBrowserDirectoryPayload;
};

export type CloseWorkspaceResponse = {
    kind: "response";
    requestID: string;
    command: "closeWorkspace";
    success: true;
    workspaceRootPath: FileNameText;
};

export type WorkspaceMutationResponse = {
    kind: "response";
    requestID: string;
    command: "createWorkspaceFile" | "createWorkspaceFolder" | "renameWorkspaceItem" | "moveWorkspaceItem" | "copyWorkspaceItem" | "duplicateWorkspaceItem" | "trashWorkspaceItem" | "deleteWorkspaceItem";
    success: true;
    workspaceRootPath: FileNameText;
    workspaceMutation: WorkspaceBrowserMutationPayload;
};

export type RefusedResponse = {
    kind: "response";
    requestID: string;
    command: "open" | "save" | "close" | "openWorkspace" | "closeWorkspace" | "loadWorkspaceChildren" | "createWorkspaceFile" | "createWorkspaceFolder" | "renameWorkspaceItem" | "moveWorkspaceItem" | "copyWorkspaceItem" | "duplicateWorkspaceItem" | "trashWorkspaceItem" | "deleteWorkspaceItem";
    success: false;
    message: FileNameText;
};

export type FailedResponse = {
    kind: "response";
    success: false;
    message: FileNameText;
};

export type UpdatedEvent = {
    kind: "event";
    event: "updated";
    documentID: string;
    snapshot: EditorDocumentSnapshotPayload;
};

export type DeletedEvent = {
    kind: "event";
    event: "deleted";
    documentID: string;
};

export type UnavailableEvent = {
    kind: "event";
    event: "unavailable";
    documentID: string;
    message: FileNameText;
};

export type WorkspaceChildrenUpdatedEvent = {
    kind: "event";
    event: "workspaceChildrenUpdated";
    workspaceRootPath: FileNameText;
    workspaceDirectory: WorkspaceBrowserDirectoryPayload;
};

export type WorkspaceRootUnavailableEvent = {
    kind: "event";
    event: "workspaceRootUnavailable";
    workspaceRootPath: FileNameText;
    message?: FileNameText;
};

export type WorkspaceMutationEvent = {
    kind: "event";
    event: "workspaceMutation";
    workspaceRootPath: FileNameText;
    workspaceMutation: WorkspaceBrowserMutationPayload;
};

export type EditorDocumentSnapshotPayload = {
    documentID: string;
    path: FileNameText;
    version: number;
    text: string;
    encodingRawValue: number;
    newlineStyle: EditorDocumentNewlineStyle;
    modifiedAtTimeIntervalSince1970?: number;
};

export type EditorDocumentNewlineStyle = "lf" | "crlf" | "cr";

export type WorkspaceBrowserDirectoryPayload = {
    rootPath: FileNameText;
    directoryPath: FileNameText;
    nodes: WorkspaceBrowserNodePayload[];
};

export type WorkspaceBrowserNodePayload = {
    nodeID: FileNameText;
    path: FileNameText;
    parentPath?: FileNameText;
    name: FileNameText;
    isDirectory: boolean;
    isRoot: boolean;
};

export type WorkspaceBrowserMutationPayload = {
    rootPath: FileNameText;
    origin: WorkspaceBrowserMutationOrigin;
    kind: WorkspaceBrowserMutationKind;
    itemNodeID?: FileNameText;
    isDirectory?: boolean;
    sourcePath?: FileNameText;
    destinationPath?: FileNameText;
    affectedDirectoryPaths: FileNameText[];
};

export type WorkspaceBrowserMutationOrigin = "internalOperation" | "externalWatch";

export type WorkspaceBrowserMutationKind = "createdFile" | "createdFolder" | "renamed" | "moved" | "copied" | "duplicated" | "trashed" | "deleted";
