import { DaemonConnection, type ConnectionEvents, type ConnectionOptions } from "./DaemonConnection.js";
import { DocumentModel } from "./DocumentModel.js";
import type { AnswerTo, Command, FieldsOf } from "./Requests.js";
import { WorkspaceModel } from "./WorkspaceModel.js";

/** A daemon of one's own: requests, events, workspaces and documents. */
export class EditorDocumentDaemonClient {
    private constructor(private readonly connection: DaemonConnection) {}

    /** Fails when the executable cannot be started. */
    static async start(options: ConnectionOptions = {}): Promise<EditorDocumentDaemonClient> {
        const connection = new DaemonConnection(options);
        await connection.start();
        return new EditorDocumentDaemonClient(connection);
    }

    /** Listens to the daemon's events and to what becomes of the daemon. Returns the function that ends it. */
    on<Name extends keyof ConnectionEvents>(name: Name, listener: (value: ConnectionEvents[Name]) => void): () => void {
        return this.connection.on(name, listener);
    }

    /** Any command. Fails with a RequestRefusedError, a RequestFailedError or a DaemonEndedError. */
    async request<Asked extends Command>(command: Asked, fields: FieldsOf[Asked]): Promise<AnswerTo<Asked>> {
        await this.connection.ready();
        return this.connection.send(command, fields);
    }

    /** Opens a folder as a workspace. A root that is open already gives the same model. */
    async openWorkspace(rootPath: string): Promise<WorkspaceModel> {
        await this.connection.ready();
        let model: WorkspaceModel | undefined;
        await this.connection.send("openWorkspace", { rootPath }, ({ workspaceRootPath, workspaceDirectory }) => {
            const open = this.connection.modelsOf(WorkspaceModel).find((one) => one.rootPath === workspaceRootPath);
            model = open ?? new WorkspaceModel(this.connection, workspaceDirectory);
        });
        return model!;
    }

    /** Opens a file. A document that is open already gives the same model. */
    async openDocument(path: string): Promise<DocumentModel> {
        await this.connection.ready();
        let model: DocumentModel | undefined;
        await this.connection.send("open", { path }, ({ snapshot }) => {
            const open = this.connection.modelsOf(DocumentModel).find((one) => one.isThatOf(snapshot));
            open?.adopt(snapshot);
            model = open ?? new DocumentModel(this.connection, snapshot);
        });
        return model!;
    }

    /** The process of the daemon; absent while there is none. */
    get processID(): number | undefined {
        return this.connection.processID;
    }

    /** Stops reading: no answer and no event comes until reading goes on, and the daemon waits once the pipe is full. */
    pauseReading(): void {
        this.connection.pauseReading();
    }

    resumeReading(): void {
        this.connection.resumeReading();
    }

    /** How many bytes of the daemon's output are held here. */
    get bufferedByteCount(): number {
        return this.connection.bufferedByteCount;
    }

    /** Waits until all requests so far are in the pipe. Who sends many large texts awaits this before each. */
    drained(): Promise<void> {
        return this.connection.drained();
    }

    /** Lets the daemon answer what it was asked, and ends it. */
    close(): Promise<void> {
        return this.connection.close();
    }
}
