import type { DaemonConnection, Model } from "./DaemonConnection.js";
import { RequestFailedError, RequestRefusedError, SaveConflictError } from "./Errors.js";
import { Listeners } from "./Listeners.js";
import type {
    EditorDocumentDaemonEnvelope,
    EditorDocumentNewlineStyle,
    EditorDocumentSnapshotPayload,
    WorkspaceBrowserMutationPayload,
} from "./WireTypes.js";

const changedOnDisk = "The file changed on disk before this save completed.";
const fileIsMissing = "The file could not be found.";

export type DocumentState = "present" | "deleted" | "unavailable";

export type DocumentEvents = {
    /** The text was replaced by what is on disk now; nobody had changed it here. */
    replaced: undefined;
    /** The file has another content and the text was changed here as well. Both are kept until somebody decides. */
    conflict: string;
    /** The file is at another path now. */
    moved: { from: string; to: string };
    /** The file is gone. The text is kept, and saving makes the file again. */
    deleted: undefined;
    /** The file changed but cannot be read as a document. The text is kept. */
    unavailable: string;
    /** The text is on disk. */
    saved: undefined;
};

/** An open document: the text as the user has it, and what is known of the file. */
export class DocumentModel extends Listeners<DocumentEvents> implements Model {
    private documentID: string | undefined; // none while no daemon has the document
    private version = 0;
    private currentPath: string;
    private currentText: string;
    private baseText: string; // what the text is based on: the content of the file when both were last the same
    private diskText: string | undefined; // in a conflict
    private currentState: DocumentState = "present";
    private format!: Pick<EditorDocumentSnapshotPayload, "encodingRawValue" | "newlineStyle">;
    private lastTurn: Promise<void> = Promise.resolve();
    private isClosed = false;

    /** For the client, which has the first snapshot. */
    constructor(
        private readonly connection: DaemonConnection,
        snapshot: EditorDocumentSnapshotPayload,
    ) {
        super();
        this.currentPath = snapshot.path;
        this.currentText = snapshot.text;
        this.baseText = snapshot.text;
        this.adopt(snapshot);
        connection.add(this);
    }

    get id(): string | undefined {
        return this.documentID;
    }

    get path(): string {
        return this.currentPath;
    }

    get text(): string {
        return this.currentText;
    }

    /** What the user types. */
    set text(text: string) {
        this.currentText = text;
    }

    get state(): DocumentState {
        return this.currentState;
    }

    /** Whether the text is anywhere but on disk. */
    get isDirty(): boolean {
        return this.currentText !== this.baseText || this.currentState === "deleted";
    }

    /** The text on disk, when it and the text here were both changed. */
    get conflict(): string | undefined {
        return this.diskText;
    }

    /** The number of the file's encoding. */
    get encodingRawValue(): number {
        return this.format.encodingRawValue;
    }

    /** What saving writes at the end of a line. */
    get newlineStyle(): EditorDocumentNewlineStyle {
        return this.format.newlineStyle;
    }

    /** Ends a conflict in favour of the text here; saving then overwrites what is on disk. */
    keepText(): void {
        if (this.diskText !== undefined) this.baseText = this.diskText;
        this.diskText = undefined;
    }

    /** Ends a conflict in favour of the text on disk. */
    takeDiskText(): void {
        if (this.diskText !== undefined) this.currentText = this.diskText;
        this.keepText();
    }

    /**
     * Writes the text as it is when its turn comes; saves of one document go one after the other. Fails with a
     * SaveConflictError while there is a conflict.
     */
    save(): Promise<void> {
        const save = this.lastTurn.then(() => this.saveNow());
        this.lastTurn = save.catch(() => {});
        return save;
    }

    /** Forgets the document. Text that was not saved is lost. */
    async close(): Promise<void> {
        await this.idle();
        await this.connection.ready();
        this.isClosed = true;
        this.connection.remove(this);
        if (this.documentID !== undefined) await this.connection.send("close", { documentID: this.documentID });
        this.documentID = undefined;
    }

    follow(envelope: EditorDocumentDaemonEnvelope): void {
        if (this.documentID === undefined && this.isToldOf(envelope)) this.lookForFile();
        if (envelope.kind === "response") {
            // The event that repeats it comes after the next request may have been sent.
            if ("workspaceMutation" in envelope) this.followMutation(envelope.workspaceMutation);
        } else if ("documentID" in envelope && envelope.documentID === this.documentID) {
            if (envelope.event === "updated") this.adopt(envelope.snapshot);
            if (envelope.event === "deleted") this.becomeDeleted();
            if (envelope.event === "unavailable") this.becomeUnavailable(envelope.message);
        }
    }

    async restore(): Promise<void> {
        this.documentID = undefined;
        await this.open();
    }

    async idle(): Promise<void> {
        for (let turn; turn !== this.lastTurn; ) await (turn = this.lastTurn);
    }

    /** Whether this is the document that the daemon gives now. For the client. */
    isThatOf(snapshot: EditorDocumentSnapshotPayload): boolean {
        return this.documentID === snapshot.documentID || (!this.documentID && this.currentPath === snapshot.path);
    }

    /** What is on disk now. For the client. */
    adopt(snapshot: EditorDocumentSnapshotPayload): void {
        this.take(snapshot);
        const isUnchangedHere = this.currentText === this.baseText;
        if (snapshot.text === this.currentText) {
            this.baseText = snapshot.text;
        } else if (isUnchangedHere) {
            this.baseText = this.currentText = snapshot.text;
            this.emit("replaced", undefined);
        } else if (snapshot.text !== this.baseText) {
            this.diskText = snapshot.text;
            this.emit("conflict", snapshot.text);
        }
    }

    // The daemon says nothing of documents that it moved or removed itself.
    private followMutation(mutation: WorkspaceBrowserMutationPayload): void {
        const { kind, sourcePath, destinationPath } = mutation;
        if (sourcePath === undefined || !this.isAtOrWithin(sourcePath)) return;
        if ((kind === "renamed" || kind === "moved") && destinationPath !== undefined) {
            this.moveTo(destinationPath + this.currentPath.slice(sourcePath.length));
        } else if (kind === "trashed" || kind === "deleted") {
            this.becomeDeleted();
        }
    }

    // A document that a new daemon could not open is not followed by it, but workspaces tell what is at its path.
    private isToldOf(envelope: EditorDocumentDaemonEnvelope): boolean {
        if ("workspaceDirectory" in envelope) {
            return envelope.workspaceDirectory.nodes.some((node) => node.path === this.currentPath);
        }
        const path = "workspaceMutation" in envelope ? envelope.workspaceMutation.destinationPath : undefined;
        return path !== undefined && this.isAtOrWithin(path);
    }

    private lookForFile(): void {
        const look = async () => {
            if (this.documentID === undefined && !this.isClosed) await this.open();
        };
        this.lastTurn = this.lastTurn.then(look).catch(() => {});
    }

    private isAtOrWithin(path: string): boolean {
        return this.currentPath === path || this.currentPath.startsWith(path === "/" ? path : `${path}/`);
    }

    private async saveNow(): Promise<void> {
        await this.connection.ready();
        if (this.isClosed) throw new Error("The document is closed.");
        if (this.documentID === undefined) await this.openAgain();
        this.refuseConflict();
        if (await this.sendText()) return;
        // The daemon has another version. It said so by an event, or else it is asked.
        if (this.diskText === undefined && this.isDirty) await this.open();
        this.refuseConflict();
        if (this.isDirty && !(await this.sendText())) throw new RequestRefusedError("save", changedOnDisk);
    }

    private async sendText(): Promise<boolean> {
        if (this.documentID === undefined) throw new RequestRefusedError("save", "The document cannot be opened.");
        const fields = { documentID: this.documentID, text: this.currentText, expectedVersion: this.version };
        try {
            await this.connection.send("save", fields, (answer) => this.becomeSaved(answer.snapshot));
            return true;
        } catch (error) {
            if (error instanceof RequestRefusedError && error.message === changedOnDisk) return false;
            throw error;
        }
    }

    private refuseConflict(): void {
        if (this.diskText !== undefined) throw new SaveConflictError(this.currentPath);
    }

    // Another daemon could not open the file. Should it still be missing, an empty one has to come first.
    private async openAgain(): Promise<void> {
        await this.open();
        if (this.documentID !== undefined) return;
        if (this.currentState !== "deleted") return;
        const slash = this.currentPath.lastIndexOf("/");
        const rootPath = this.currentPath.slice(0, slash) || "/";
        const made = await this.connection.send("createWorkspaceFile", { rootPath, name: this.currentPath.slice(slash + 1) });
        const madePath = made.workspaceMutation.destinationPath;
        if (madePath !== undefined && madePath !== this.currentPath) {
            await this.connection.send("deleteWorkspaceItem", { rootPath, path: madePath });
        }
        this.baseText = "";
        await this.open();
    }

    private async open(): Promise<void> {
        try {
            await this.connection.send("open", { path: this.currentPath }, (answer) => this.adopt(answer.snapshot));
        } catch (error) {
            if (!(error instanceof RequestRefusedError || error instanceof RequestFailedError)) throw error;
            if (error.message === fileIsMissing) this.becomeDeleted();
            else this.becomeUnavailable(error.message);
        }
    }

    private becomeSaved(snapshot: EditorDocumentSnapshotPayload): void {
        this.take(snapshot);
        this.baseText = snapshot.text;
        this.emit("saved", undefined);
    }

    private take(snapshot: EditorDocumentSnapshotPayload): void {
        this.documentID = snapshot.documentID;
        this.version = snapshot.version;
        this.format = { encodingRawValue: snapshot.encodingRawValue, newlineStyle: snapshot.newlineStyle };
        this.currentState = "present";
        this.diskText = undefined;
        this.moveTo(snapshot.path);
    }

    private moveTo(path: string): void {
        const from = this.currentPath;
        if (from === path) return;
        this.currentPath = path;
        this.emit("moved", { from, to: path });
    }

    private becomeDeleted(): void {
        if (this.currentState === "deleted") return;
        ++this.version;
        this.currentState = "deleted";
        this.diskText = undefined;
        this.emit("deleted", undefined);
    }

    private becomeUnavailable(message: string): void {
        this.currentState = "unavailable";
        this.emit("unavailable", message);
    }
}
