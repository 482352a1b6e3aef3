import type {
    EditorDocumentDaemonEnvelope,
    EditorDocumentDaemonRequest,
    EditorDocumentRequestCommand,
} from "./WireTypes.js";

export type Command = EditorDocumentRequestCommand;

type Fields<Needed extends keyof EditorDocumentDaemonRequest, Possible extends keyof EditorDocumentDaemonRequest = never> = {
    [Name in Needed]: NonNullable<EditorDocumentDaemonRequest[Name]>;
} & {
    [Name in Possible]?: NonNullable<EditorDocumentDaemonRequest[Name]>;
};

type ItemAndDestination = Fields<"rootPath" | "path" | "destinationPath">;

/** Which fields a command reads. */
export type FieldsOf = {
    open: Fields<"path">;
    save: Fields<"documentID" | "text" | "expectedVersion">;
    close: Fields<"documentID">;
    openWorkspace: Fields<"rootPath">;
    closeWorkspace: Fields<"rootPath">;
    loadWorkspaceChildren: Fields<"rootPath" | "path">;
    createWorkspaceFile: Fields<"rootPath", "path" | "name">;
    createWorkspaceFolder: Fields<"rootPath", "path" | "name">;
    renameWorkspaceItem: ItemAndDestination;
    moveWorkspaceItem: ItemAndDestination;
    copyWorkspaceItem: ItemAndDestination;
    duplicateWorkspaceItem: Fields<"rootPath" | "path", "destinationPath">;
    trashWorkspaceItem: Fields<"rootPath" | "path">;
    deleteWorkspaceItem: Fields<"rootPath" | "path">;
};

export type Response = Extract<EditorDocumentDaemonEnvelope, { kind: "response" }>;
export type Event = Extract<EditorDocumentDaemonEnvelope, { kind: "event" }>;
type Success = Extract<Response, { success: true }>;

type AnswerAmong<Candidate extends Success, Asked extends Command> = Candidate extends Success
    ? Asked extends Candidate["command"]
        ? Candidate
        : never
    : never;

/** The response of a command that succeeded. */
export type AnswerTo<Asked extends Command> = AnswerAmong<Success, Asked>;
