import { existsSync, readdirSync, readFileSync } from "node:fs";

import type { DocumentModel, EditorDocumentDaemonClient, WorkspaceModel, WorkspaceNode } from "../src/index.js";
import { RandomDisk, Random } from "./randomDisk.js";
import { crash, settle, startClient, temporaryFolder, test, until } from "./support.js";

// What is wrong with the models, by the disk.

function differencesOfTree(folder: WorkspaceNode, seenIDs = new Set<string>()): string[] {
    if (!folder.children) return [];
    const onDisk = new Set<string>();
    if (existsSync(folder.path)) {
        for (const entry of readdirSync(folder.path, { withFileTypes: true })) {
            onDisk.add(entry.isDirectory() ? `${entry.name}/` : entry.name);
        }
    }
    const differences: string[] = [];
    for (const node of folder.children) {
        const isThere = onDisk.delete(node.isDirectory ? `${node.name}/` : node.name);
        if (!isThere) differences.push(`${node.path} is not on disk`);
        if (seenIDs.has(node.nodeID)) differences.push(`${node.path} has the identifier of another`);
        seenIDs.add(node.nodeID);
        differences.push(...differencesOfTree(node, seenIDs));
    }
    for (const name of onDisk) differences.push(`${folder.path}/${name} is missing in the tree`);
    return differences;
}

function differenceOfDocument(document: DocumentModel): string[] {
    const text = existsSync(document.path) ? readFileSync(document.path, "utf8") : undefined;
    if (document.state === "deleted" ? text === undefined : document.text === text) return [];
    return [`${document.path} is ${document.state} with ${document.text}, on disk ${text}`];
}

class Session {
    private documents: DocumentModel[] = [];

    constructor(
        readonly client: EditorDocumentDaemonClient,
        readonly workspace: WorkspaceModel,
        private readonly disk: RandomDisk,
        private readonly random: Random,
    ) {
        const path = (documentID: string) => this.documents.find((document) => document.id === documentID)?.path;
        const heard = (text: string) => this.disk.log.push(`    < ${text.replaceAll(disk.rootPath, "")}`);
        client.on("updated", ({ documentID, snapshot }) => heard(`updated ${path(documentID)} -> ${snapshot.path}`));
        client.on("deleted", ({ documentID }) => heard(`deleted ${path(documentID)}`));
        client.on("unavailable", ({ documentID, message }) => heard(`unavailable ${path(documentID)} ${message}`));
        workspace.on("changed", (folder) => heard(`children of ${folder.path}`));
        workspace.on("mutation", ({ origin, kind, sourcePath, destinationPath }) =>
            heard(`${origin === "externalWatch" ? "" : "own "}${kind} ${sourcePath ?? ""} -> ${destinationPath ?? ""}`),
        );
    }

    async round(): Promise<void> {
        const most = Number(process.env["CONVERGENCE_CHANGES"] ?? 12);
        for (let count = this.random.below(most); count >= 0; --count) this.disk.change();
        const crashes = this.random.below(20) === 0;
        if (crashes) await crash(this.client);
        await settle(this.workspace);
        await until(
            () => this.differences().length === 0,
            () => [...this.differences(), "after", ...this.disk.log, crashes ? "and a crash" : ""].join("\n"),
        );
        this.disk.log.length = 0;
        await this.useEditor();
    }

    private differences(): string[] {
        return [...differencesOfTree(this.workspace.root), ...this.documents.flatMap(differenceOfDocument)];
    }

    // Everything is quiet: the editor looks at something else, and edits.
    private async useEditor(): Promise<void> {
        await this.workspace.expand(this.random.pick(this.disk.folders())!);
        const file = this.random.pick(this.disk.files());
        if (file !== undefined && this.random.below(3) === 0) {
            const document = await this.client.openDocument(file);
            if (!this.documents.includes(document)) this.documents.push(document);
        }
        const document = this.random.pick(this.documents);
        if (!document) return;
        if (this.random.below(4) === 0) {
            this.documents = this.documents.filter((other) => other !== document);
            return document.close();
        }
        if (!existsSync(document.path) && !existsSync(document.path.slice(0, document.path.lastIndexOf("/")))) return;
        this.disk.log.push(`save ${document.path.slice(this.disk.rootPath.length)}`);
        document.text += "edited\n";
        await document.save();
    }
}

test("after random changes the models are what is on disk", async (context) => {
    const seed = Number(process.env["CONVERGENCE_SEED"] ?? Math.floor(Math.random() * 2 ** 31));
    console.log(`CONVERGENCE_SEED=${seed}`);
    const random = new Random(seed);
    const disk = new RandomDisk(temporaryFolder(context), random);
    for (let count = 0; count < 40; ++count) disk.change();
    const client = await startClient(context, { crashesPerMinute: Infinity });
    const session = new Session(client, await client.openWorkspace(disk.rootPath), disk, random);
    const rounds = Number(process.env["CONVERGENCE_ROUNDS"] ?? 40);
    for (let round = 0; round < rounds; ++round) await session.round();
});
