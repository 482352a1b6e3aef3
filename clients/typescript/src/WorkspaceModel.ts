import type { DaemonConnection, Model } from "./DaemonConnection.js";
import { RequestFailedError, RequestRefusedError } from "./Errors.js";
import { Listeners } from "./Listeners.js";
import type { FieldsOf } from "./Requests.js";
import type {
    EditorDocumentDaemonEnvelope,
    WorkspaceBrowserDirectoryPayload,
    WorkspaceBrowserMutationPayload,
} from "./WireTypes.js";
import { WorkspaceTree, type WorkspaceNode } from "./WorkspaceTree.js";

export type WorkspaceEvents = {
    /** The children of this folder are others now. */
    changed: WorkspaceNode;
    /** An item was created, renamed, moved, copied or removed, by the editor or by another program. */
    mutation: WorkspaceBrowserMutationPayload;
    /** The root is gone or cannot be read; the workspace is closed. */
    unavailable: string | undefined;
};

type MutationCommand =
    | "createWorkspaceFile"
    | "createWorkspaceFolder"
    | "renameWorkspaceItem"
    | "moveWorkspaceItem"
    | "copyWorkspaceItem"
    | "duplicateWorkspaceItem"
    | "trashWorkspaceItem"
    | "deleteWorkspaceItem";

/** An open workspace: its tree as far as it is expanded, always as the daemon told it last. */
export class WorkspaceModel extends Listeners<WorkspaceEvents> implements Model {
    private readonly tree: WorkspaceTree;
    private isRestoring = false;
    private isOpen = true;

    /** For the client, which has the first listing. */
    constructor(
        private readonly connection: DaemonConnection,
        listing: WorkspaceBrowserDirectoryPayload,
    ) {
        super();
        this.tree = new WorkspaceTree(listing.rootPath);
        this.tree.apply(listing);
        connection.add(this);
    }

    get rootPath(): string {
        return this.tree.rootPath;
    }

    get root(): WorkspaceNode {
        return this.tree.root;
    }

    /** False once the workspace was closed, or its root was lost. */
    get isAvailable(): boolean {
        return this.isOpen;
    }

    /** The item at a path, when the folders above it are expanded. */
    nodeAt(path: string): WorkspaceNode | undefined {
        return this.tree.nodeAt(path);
    }

    /** Loads the children of a folder, and those of the folders above it where they are missing. */
    async expand(folder: WorkspaceNode | string): Promise<readonly WorkspaceNode[]> {
        await this.ready();
        const path = typeof folder === "string" ? folder : folder.path;
        const parentPath = path.slice(0, path.lastIndexOf("/")) || "/";
        if (!this.tree.nodeAt(path) && isWithin(path, this.rootPath)) await this.expand(parentPath);
        const answer = await this.connection.send("loadWorkspaceChildren", { rootPath: this.rootPath, path });
        return this.tree.nodeAt(answer.workspaceDirectory.directoryPath)?.children ?? [];
    }

    createFile(folderPath: string, name: string): Promise<WorkspaceBrowserMutationPayload> {
        return this.mutate("createWorkspaceFile", { path: folderPath, name });
    }

    createFolder(folderPath: string, name: string): Promise<WorkspaceBrowserMutationPayload> {
        return this.mutate("createWorkspaceFolder", { path: folderPath, name });
    }

    /** Gives an item another name in its folder. */
    rename(path: string, name: string): Promise<WorkspaceBrowserMutationPayload> {
        const destinationPath = path.slice(0, path.lastIndexOf("/") + 1) + name;
        return this.mutate("renameWorkspaceItem", { path, destinationPath });
    }

    /** The destination is the item's new path, or a folder that is to hold it. */
    move(path: string, destinationPath: string): Promise<WorkspaceBrowserMutationPayload> {
        return this.mutate("moveWorkspaceItem", { path, destinationPath });
    }

    copy(path: string, destinationPath: string): Promise<WorkspaceBrowserMutationPayload> {
        return this.mutate("copyWorkspaceItem", { path, destinationPath });
    }

    duplicate(path: string): Promise<WorkspaceBrowserMutationPayload> {
        return this.mutate("duplicateWorkspaceItem", { path });
    }

    trash(path: string): Promise<WorkspaceBrowserMutationPayload> {
        return this.mutate("trashWorkspaceItem", { path });
    }

    delete(path: string): Promise<WorkspaceBrowserMutationPayload> {
        return this.mutate("deleteWorkspaceItem", { path });
    }

    async close(): Promise<void> {
        await this.connection.ready();
        this.leave();
        await this.connection.send("closeWorkspace", { rootPath: this.rootPath });
    }

    follow(envelope: EditorDocumentDaemonEnvelope): void {
        const isListing = envelope.kind === "event" && envelope.event === "workspaceChildrenUpdated";
        if (!isListing) this.tree.endOfListings();
        if (!("workspaceRootPath" in envelope) || envelope.workspaceRootPath !== this.rootPath) return;
        if ("workspaceDirectory" in envelope) {
            this.apply(envelope.workspaceDirectory);
        } else if (envelope.kind === "event" && envelope.event === "workspaceMutation") {
            this.emit("mutation", envelope.workspaceMutation);
        } else if (envelope.kind === "event") {
            this.becomeUnavailable(envelope.message);
        }
    }

    async restore(): Promise<void> {
        this.isRestoring = true;
        try {
            await this.connection.send("openWorkspace", { rootPath: this.rootPath });
            await this.restoreBelow(this.root);
        } catch (error) {
            if (!isAnswer(error)) throw error;
            this.becomeUnavailable(error.message);
        } finally {
            this.isRestoring = false;
        }
    }

    async idle(): Promise<void> {}

    private async restoreBelow(folder: WorkspaceNode): Promise<void> {
        for (const node of folder.children ?? []) {
            if (!node.children) continue;
            try {
                await this.connection.send("loadWorkspaceChildren", { rootPath: this.rootPath, path: node.path });
                await this.restoreBelow(node);
            } catch (error) {
                if (!isAnswer(error)) throw error;
                this.tree.unload(node.path);
            }
        }
    }

    private async mutate<Asked extends MutationCommand>(
        command: Asked,
        fields: Omit<FieldsOf[Asked], "rootPath">,
    ): Promise<WorkspaceBrowserMutationPayload> {
        await this.ready();
        const all = { rootPath: this.rootPath, ...fields } as unknown as FieldsOf[MutationCommand];
        return (await this.connection.send<MutationCommand>(command, all)).workspaceMutation;
    }

    // A request for a closed workspace would open it again in the daemon, and nobody would know.
    private async ready(): Promise<void> {
        await this.connection.ready();
        if (!this.isOpen) throw new Error("The workspace is closed.");
    }

    private apply(listing: WorkspaceBrowserDirectoryPayload): void {
        const folder = this.tree.apply(listing, this.isRestoring);
        if (folder) this.emit("changed", folder);
    }

    private becomeUnavailable(message: string | undefined): void {
        this.leave();
        this.emit("unavailable", message);
    }

    private leave(): void {
        this.isOpen = false;
        this.connection.remove(this);
    }
}

function isWithin(path: string, rootPath: string): boolean {
    return path !== rootPath && path.startsWith(rootPath === "/" ? "/" : `${rootPath}/`);
}

function isAnswer(error: unknown): error is Error {
    return error instanceof RequestRefusedError || error instanceof RequestFailedError;
}
