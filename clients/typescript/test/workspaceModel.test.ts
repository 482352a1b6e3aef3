import assert from "node:assert/strict";
import { mkdirSync, renameSync, rmSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import type { WorkspaceNode } from "../src/index.js";
import { crash, settle, startClient, temporaryFolder, test, until } from "./support.js";

function names(folder: WorkspaceNode | undefined): string {
    const name = (node: WorkspaceNode) => (node.isDirectory ? `${node.name}/` : node.name);
    return folder?.children?.map(name).join(" ") ?? "(not loaded)";
}

test("a workspace shows what its folders hold, and what the editor does to them", async (context) => {
    const home = temporaryFolder(context);
    const folder = temporaryFolder(context);
    mkdirSync(join(folder, "source/inner/deep"), { recursive: true });
    const client = await startClient(context, { environment: { ...process.env, HOME: home, XDG_DATA_HOME: "" } });
    const workspace = await client.openWorkspace(`${folder}//.`);
    const at = (path: string) => join(folder, path);
    assert.equal(workspace.rootPath, folder);
    assert.equal(await client.openWorkspace(folder), workspace);
    const inner = await workspace.expand(at("source/inner"));
    assert.deepEqual(inner, workspace.nodeAt(at("source/inner"))!.children);
    assert.equal(names(workspace.root), "source/");
    assert.equal(names(workspace.nodeAt(at("source"))), "inner/");
    const mutations: string[] = [];
    workspace.on("mutation", (mutation) => mutation.origin === "internalOperation" && mutations.push(mutation.kind));

    await workspace.createFile(folder, "b.txt");
    await workspace.createFolder(folder, "a");
    await workspace.rename(at("b.txt"), "c.txt");
    await workspace.duplicate(at("c.txt"));
    await workspace.move(at("c.txt"), at("source"));
    await workspace.copy(at("source"), at("a"));
    await workspace.move(at("source/inner"), folder);
    await until(() => names(workspace.root) === "a/ inner/ source/ c copy.txt", () => names(workspace.root));
    assert.equal(names(workspace.nodeAt(at("inner"))), "deep/", "a folder is moved with what is loaded of it");
    await workspace.trash(at("inner"));
    await workspace.delete(at("a"));
    await until(() => names(workspace.root) === "source/ c copy.txt", () => names(workspace.root));
    assert.equal(names(workspace.nodeAt(at("source"))), "c.txt");
    const made = ["createdFile", "createdFolder", "renamed", "duplicated", "moved", "copied", "moved", "trashed", "deleted"];
    assert.deepEqual(mutations, made);
    await assert.rejects(workspace.expand("/"), { name: "RequestFailedError" });

    await workspace.close();
    await assert.rejects(workspace.expand(folder), /closed/);
    assert.notEqual(await client.openWorkspace(folder), workspace);
});

test("a workspace is there again after a crash, with what was expanded", async (context) => {
    const folder = temporaryFolder(context);
    const at = (path: string) => join(folder, path);
    for (const path of ["a/x/deep", "b/y", "c/z"]) mkdirSync(at(path), { recursive: true });
    writeFileSync(at("a/kept"), "");
    const client = await startClient(context);
    const workspace = await client.openWorkspace(folder);
    for (const path of ["a/x", "b/y", "c"]) await workspace.expand(at(path));
    // Since then the item goes by an identifier that only this daemon knows.
    writeFileSync(at("a/new"), "");
    renameSync(at("a/new"), at("a/kept"));
    await settle(workspace);
    const [root, x, kept] = [workspace.root, workspace.nodeAt(at("a/x")), workspace.nodeAt(at("a/kept"))];
    client.on("crashed", () => {
        rmSync(at("b"), { recursive: true });
        writeFileSync(at("b"), "a file now");
        writeFileSync(at("a/x/new"), "");
        renameSync(at("c"), at("d"));
    });
    await crash(client);
    assert.equal(workspace.root, root);
    assert.equal(names(root), "a/ d/ b");
    assert.equal(workspace.nodeAt(at("a/x")), x);
    assert.equal(workspace.nodeAt(at("a/kept")), kept);
    assert.equal(names(x), "deep/ new");
    assert.equal(names(workspace.nodeAt(at("d"))), "z/");
    writeFileSync(at("a/x/newer"), "");
    await until(() => names(x) === "deep/ new newer", () => names(x));
});

for (const isCrash of [false, true]) {
    test(`a workspace whose root is lost ${isCrash ? "while there was no daemon " : ""}says so`, async (context) => {
        const folder = join(temporaryFolder(context), "root");
        mkdirSync(folder);
        const client = await startClient(context);
        const workspace = await client.openWorkspace(folder);
        let isLost = false;
        workspace.on("unavailable", () => (isLost = true));
        client.on("crashed", () => rmSync(folder, { recursive: true }));
        if (isCrash) await crash(client);
        else rmSync(folder, { recursive: true });
        await until(() => isLost, () => "the loss is not told");
        assert.ok(!workspace.isAvailable);
        mkdirSync(folder);
        writeFileSync(join(folder, "again"), "");
        assert.equal(names((await client.openWorkspace(folder)).root), "again");
    });
}
