import type { WorkspaceBrowserDirectoryPayload, WorkspaceBrowserNodePayload } from "./WireTypes.js";

/** An item of a workspace. The same item stays the same object, wherever it is renamed or moved to. */
export interface WorkspaceNode {
    readonly nodeID: string;
    readonly path: string;
    readonly name: string;
    readonly isDirectory: boolean;
    readonly parent: WorkspaceNode | undefined;
    /** In their order; absent while the folder is not loaded. */
    readonly children: readonly WorkspaceNode[] | undefined;
}

class TreeNode implements WorkspaceNode {
    parent: TreeNode | undefined;
    children: TreeNode[] | undefined;

    constructor(
        public nodeID: string,
        public name: string,
        public isDirectory: boolean,
    ) {}

    get path(): string {
        if (!this.parent) return this.name;
        const parentPath = this.parent.path;
        return parentPath === "/" ? `/${this.name}` : `${parentPath}/${this.name}`;
    }

    isAtOrWithin(node: TreeNode): boolean {
        for (let place: TreeNode | undefined = this; place; place = place.parent) {
            if (place === node) return true;
        }
        return false;
    }
}

/** The loaded part of a workspace's tree, as its listings make it. */
export class WorkspaceTree {
    private readonly rootNode: TreeNode;
    private readonly nodesByID = new Map<string, TreeNode>();
    // What was in a listing and is in none now; the next listings may show it at its new place.
    private readonly detachedByID = new Map<string, TreeNode>();

    constructor(readonly rootPath: string) {
        this.rootNode = new TreeNode("", rootPath, true);
    }

    get root(): WorkspaceNode {
        return this.rootNode;
    }

    nodeAt(path: string): WorkspaceNode | undefined {
        return this.find(path);
    }

    /**
     * Replaces the children of the folder, and returns it; absent when the folder is in no listing. With `sameNames`,
     * a name whose item is unknown keeps the node that it had: another daemon may give it another identifier.
     */
    apply(listing: WorkspaceBrowserDirectoryPayload, sameNames = false): WorkspaceNode | undefined {
        const folder = this.find(listing.directoryPath);
        if (!folder) return undefined;
        const before = folder.children ?? [];
        const listedIDs = new Set(listing.nodes.map((item) => item.nodeID));
        const unlisted = sameNames ? before.filter((node) => !listedIDs.has(node.nodeID)) : [];
        const nodesByName = new Map(unlisted.map((node) => [node.name, node]));
        const children = listing.nodes.map((item) => this.place(item, folder, nodesByName.get(item.name)));
        const staying = new Set(children);
        for (const node of before) {
            if (!staying.has(node) && node.parent === folder) this.detach(node);
        }
        folder.children = children;
        return folder;
    }

    /** No listing that is to come belongs together with those that have come. */
    endOfListings(): void {
        this.detachedByID.clear();
    }

    /** Forgets what is in a folder that can no longer be loaded. */
    unload(path: string): void {
        const folder = this.find(path);
        if (folder) this.dropChildren(folder);
    }

    private find(path: string): TreeNode | undefined {
        if (path === this.rootPath) return this.rootNode;
        const prefix = this.rootPath === "/" ? "/" : `${this.rootPath}/`;
        if (!path.startsWith(prefix)) return undefined;
        let node: TreeNode | undefined = this.rootNode;
        for (const name of path.slice(prefix.length).split("/")) {
            node = node?.children?.find((child) => child.name === name);
        }
        return node;
    }

    private place(item: WorkspaceBrowserNodePayload, folder: TreeNode, namesake: TreeNode | undefined): TreeNode {
        const node = this.known(item, folder) ?? this.unknown(item, namesake);
        if (node.parent && node.parent !== folder) {
            node.parent.children = node.parent.children?.filter((child) => child !== node);
        }
        if (!item.isDirectory) this.dropChildren(node);
        node.name = item.name;
        node.isDirectory = item.isDirectory;
        node.parent = folder;
        this.detachedByID.delete(item.nodeID);
        this.nodesByID.set(item.nodeID, node);
        return node;
    }

    private known(item: WorkspaceBrowserNodePayload, folder: TreeNode): TreeNode | undefined {
        const node = this.nodesByID.get(item.nodeID) ?? this.detachedByID.get(item.nodeID);
        // Listings that come one after the other may for a moment put a folder into itself.
        return node && !folder.isAtOrWithin(node) ? node : undefined;
    }

    // The item is new, or it is the one that had the name before and that now goes by another identifier.
    private unknown(item: WorkspaceBrowserNodePayload, namesake: TreeNode | undefined): TreeNode {
        if (!namesake) return new TreeNode(item.nodeID, item.name, item.isDirectory);
        this.nodesByID.delete(namesake.nodeID);
        namesake.nodeID = item.nodeID;
        return namesake;
    }

    private detach(node: TreeNode): void {
        this.dropChildren(node);
        node.parent = undefined;
        if (this.nodesByID.get(node.nodeID) !== node) return;
        this.nodesByID.delete(node.nodeID);
        this.detachedByID.set(node.nodeID, node);
    }

    private dropChildren(node: TreeNode): void {
        for (const child of node.children ?? []) this.detach(child);
        node.children = undefined;
    }
}
