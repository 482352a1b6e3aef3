import assert from "node:assert/strict";

import { WorkspaceTree, type WorkspaceNode } from "../src/WorkspaceTree.js";
import { test } from "./support.js";

// Listings as "folder: name=id name=id", folders with a slash behind the name.
function apply(tree: WorkspaceTree, text: string, sameNames = false): void {
    const [folder, items] = text.split(":") as [string, string];
    const nodes = items
        .split(" ")
        .filter((item) => item)
        .map((item) => {
            const [name, nodeID] = item.split("=") as [string, string];
            const isDirectory = name.endsWith("/");
            const bare = isDirectory ? name.slice(0, -1) : name;
            return { nodeID, path: `${folder}/${bare}`, parentPath: folder, name: bare, isDirectory, isRoot: false };
        });
    tree.apply({ rootPath: "/r", directoryPath: folder, nodes }, sameNames);
}

function paths(node: WorkspaceNode): string[] {
    return (node.children ?? []).flatMap((child) => [`${child.path}=${child.nodeID}`, ...paths(child)]);
}

const cases: { name: string; before: string[]; after: string[]; tree: string[] }[] = [
    {
        name: "a renamed folder takes its children along",
        before: ["/r: a/=1", "/r/a: x=2 d/=3", "/r/a/d: y=4"],
        after: ["/r: b/=1"],
        tree: ["/r/b=1", "/r/b/x=2", "/r/b/d=3", "/r/b/d/y=4"],
    },
    {
        name: "two folders change their names with each other",
        before: ["/r: a/=1 b/=2", "/r/a: x=3", "/r/b: y=4"],
        after: ["/r: a/=2 b/=1"],
        tree: ["/r/a=2", "/r/a/y=4", "/r/b=1", "/r/b/x=3"],
    },
    {
        name: "a moved folder that the listing of its old place misses first",
        before: ["/r: a/=1 b/=2", "/r/a: d/=3", "/r/b:", "/r/a/d: x=4"],
        after: ["/r/a:", "/r/b: d/=3", "/r/b/d: x=4"],
        tree: ["/r/a=1", "/r/b=2", "/r/b/d=3", "/r/b/d/x=4"],
    },
    {
        name: "a moved folder that the listing of its new place shows first",
        before: ["/r: a/=1 b/=2", "/r/a:", "/r/b: d/=3", "/r/b/d: x=4"],
        after: ["/r/a: d/=3", "/r/b:"],
        tree: ["/r/a=1", "/r/a/d=3", "/r/a/d/x=4", "/r/b=2"],
    },
    {
        name: "a folder that changes places with the one in it",
        before: ["/r: a/=1", "/r/a: b/=2", "/r/a/b: x=3"],
        after: ["/r: b/=2", "/r/b: x=3 a/=1", "/r/b/a:"],
        tree: ["/r/b=2", "/r/b/x=3", "/r/b/a=1"],
    },
    {
        name: "a file in the place of a folder",
        before: ["/r: a/=1", "/r/a: x=2"],
        after: ["/r: a=1"],
        tree: ["/r/a=1"],
    },
    {
        name: "a listing of a folder that is in none",
        before: ["/r: a/=1", "/r/a: x=2"],
        after: ["/r:", "/r/a: y=3"],
        tree: [],
    },
    {
        name: "a listing that would put a folder into itself",
        before: ["/r: a/=1", "/r/a: b/=2"],
        after: ["/r/a: b/=1"],
        tree: ["/r/a=1", "/r/a/b=1"],
    },
];

test("listings make the tree", () => {
    for (const { name, before, after, tree: expected } of cases) {
        const tree = new WorkspaceTree("/r");
        for (const listing of [...before, ...after]) apply(tree, listing);
        assert.deepEqual(paths(tree.root), expected, name);
    }
});

test("the same item stays the same object", () => {
    const tree = new WorkspaceTree("/r");
    for (const listing of ["/r: a/=1 b/=2", "/r/a: d/=3 x=4", "/r/a/d: y=5", "/r/b:"]) apply(tree, listing);
    const [d, y] = [tree.nodeAt("/r/a/d"), tree.nodeAt("/r/a/d/y")];
    for (const listing of ["/r/a: z=4", "/r/b: e/=3", "/r/b/e: y=5"]) apply(tree, listing);
    assert.equal(tree.nodeAt("/r/b/e"), d);
    assert.equal(tree.nodeAt("/r/b/e/y"), y);
    assert.equal(tree.nodeAt("/r/a/d"), undefined);
    const b = tree.nodeAt("/r/b")!;
    apply(tree, "/r: a/=1");
    tree.endOfListings();
    apply(tree, "/r: a/=1 b/=2");
    assert.notEqual(tree.nodeAt("/r/b"), b, "what was away is forgotten");
    assert.equal(tree.nodeAt("/r/b")!.children, undefined, "and has to be loaded again");
});

test("after a crash names stand for items", () => {
    const tree = new WorkspaceTree("/r");
    for (const listing of ["/r: a/=1 b/=2 c=3", "/r/a: x=4"]) apply(tree, listing);
    const nodes = ["a", "b", "c"].map((name) => tree.nodeAt(`/r/${name}`));
    apply(tree, "/r: a/=11 b/=12 c=13", true);
    assert.deepEqual(["a", "b", "c"].map((name) => tree.nodeAt(`/r/${name}`)), nodes);
    assert.deepEqual(paths(tree.root), ["/r/a=11", "/r/a/x=4", "/r/b=12", "/r/c=13"]);
    apply(tree, "/r: b/=11 a/=21", true);
    assert.equal(tree.nodeAt("/r/b"), nodes[0], "an item that is known goes before its name");
});
