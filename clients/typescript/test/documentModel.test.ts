import assert from "node:assert/strict";
import { existsSync, mkdirSync, readFileSync, renameSync, rmSync, unlinkSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import type { TestContext } from "node:test";

import { SaveConflictError, type DocumentModel, type EditorDocumentDaemonClient } from "../src/index.js";
import { crash, replaceFile, settle, startClient, temporaryFolder, test, until } from "./support.js";

interface Opened {
    client: EditorDocumentDaemonClient;
    folder: string;
    path: string;
    document: DocumentModel;
    heard: string[];
    disk(): string;
}

async function openDocument(context: TestContext): Promise<Opened> {
    const folder = temporaryFolder(context);
    const path = join(folder, "a.txt");
    writeFileSync(path, "one");
    const client = await startClient(context);
    const document = await client.openDocument(path);
    const heard: string[] = [];
    for (const name of ["replaced", "conflict", "moved", "deleted", "unavailable", "saved"] as const) {
        document.on(name, () => heard.push(name));
    }
    return { client, folder, path, document, heard, disk: () => readFileSync(document.path, "utf8") };
}

// Waits for the last thing heard.
async function hears(opened: Opened, name: string): Promise<void> {
    await until(() => opened.heard.at(-1) === name, () => `waiting for ${name}: ${opened.heard}`);
}

const withCrash = [
    ["while it happens", async (_: Opened, change: () => void) => change()],
    [
        "while there was no daemon",
        async ({ client }: Opened, change: () => void) => {
            const stop = client.on("crashed", () => {
                change();
                stop();
            });
            await crash(client);
        },
    ],
] as const;

for (const [when, happens] of withCrash) {
    test(`a document follows its file ${when}`, async (context) => {
        const opened = await openDocument(context);
        const { document, path } = opened;
        await happens(opened, () => replaceFile(path, "two"));
        await hears(opened, "replaced");
        assert.equal(document.text, "two");
        assert.ok(!document.isDirty);
        document.text = "three";
        assert.ok(document.isDirty);
        await document.save();
        assert.equal(opened.disk(), "three");
        assert.ok(!document.isDirty);
        assert.deepEqual(opened.heard, ["replaced", "saved"]);
    });

    test(`a conflict ${when} keeps both texts until somebody decides`, async (context) => {
        for (const decides of ["keepText", "takeDiskText"] as const) {
            const opened = await openDocument(context);
            const { document, path } = opened;
            document.text = "mine";
            await happens(opened, () => replaceFile(path, "theirs"));
            await hears(opened, "conflict");
            await assert.rejects(document.save(), SaveConflictError);
            assert.deepEqual([document.text, document.conflict, opened.disk()], ["mine", "theirs", "theirs"]);
            document[decides]();
            assert.equal(document.isDirty, decides === "keepText");
            await document.save();
            assert.equal(opened.disk(), decides === "keepText" ? "mine" : "theirs");
        }
    });

    test(`the same change here and on disk ${when} is no conflict`, async (context) => {
        const opened = await openDocument(context);
        const { document, path } = opened;
        document.text = "both";
        await happens(opened, () => replaceFile(path, "both"));
        await until(() => !document.isDirty, () => `${opened.heard}`);
        await document.save();
        assert.equal(document.conflict, undefined);
    });

    test(`a file that was deleted ${when} is made again by saving`, async (context) => {
        const opened = await openDocument(context);
        const { document, path } = opened;
        await happens(opened, () => unlinkSync(path));
        await hears(opened, "deleted");
        assert.deepEqual([document.state, document.isDirty, document.text], ["deleted", true, "one"]);
        await document.save();
        assert.equal(opened.disk(), "one");
        replaceFile(path, "followed again");
        await hears(opened, "replaced");
        assert.deepEqual([document.state, document.text], ["present", "followed again"]);
    });

    test(`a file that cannot be read ${when} keeps its text here`, async (context) => {
        const opened = await openDocument(context);
        const { document, path } = opened;
        await happens(opened, () => replaceFile(path, "binary\0data"));
        await hears(opened, "unavailable");
        assert.deepEqual([document.state, document.text], ["unavailable", "one"]);
        replaceFile(path, "two");
        // The daemon watches what it has opened. What it could not open the editor opens again.
        if (when !== "while it happens") assert.equal(await opened.client.openDocument(path), document);
        await hears(opened, "replaced");
        assert.deepEqual([document.state, document.text], ["present", "two"]);
    });

    test(`a file that went ${when} may come back`, async (context) => {
        const opened = await openDocument(context);
        const { client, document, path, folder } = opened;
        await client.openWorkspace(folder);
        await happens(opened, () => renameSync(folder, `${folder}.away`));
        await hears(opened, "deleted");
        renameSync(`${folder}.away`, folder);
        const workspace = await client.openWorkspace(folder);
        writeFileSync(`${path}.new`, "two");
        await settle(workspace);
        renameSync(`${path}.new`, path);
        await until(() => document.text === "two" && !document.isDirty, () => `${opened.heard}`);
    });
}

test("a document goes along with renames by anybody", async (context) => {
    const opened = await openDocument(context);
    const { client, document, folder } = opened;
    const workspace = await client.openWorkspace(folder);
    await workspace.createFolder(folder, "inner");
    await workspace.move(join(folder, "a.txt"), join(folder, "inner"));
    assert.equal(document.path, join(folder, "inner/a.txt"));
    await workspace.rename(join(folder, "inner"), "outer");
    assert.equal(document.path, join(folder, "outer/a.txt"));
    document.text = "two";
    await document.save();
    assert.equal(opened.disk(), "two");
    await settle(workspace);
    renameSync(join(folder, "outer/a.txt"), join(folder, "outer/b.txt"));
    await until(() => document.path === join(folder, "outer/b.txt"), () => document.path);
    await settle(workspace);
    renameSync(join(folder, "outer"), join(folder, "renamed"));
    await until(() => document.path === join(folder, "renamed/b.txt"), () => document.path);
    document.text = "three";
    await document.save();
    assert.equal(opened.disk(), "three");
});

test("what the editor itself removes comes back by saving", async (context) => {
    for (const removes of ["trash", "delete"] as const) {
        const home = temporaryFolder(context);
        const folder = temporaryFolder(context);
        const client = await startClient(context, { environment: { ...process.env, HOME: home, XDG_DATA_HOME: "" } });
        mkdirSync(join(folder, "inner"));
        writeFileSync(join(folder, "inner/a.txt"), "one");
        const document = await client.openDocument(join(folder, "inner/a.txt"));
        const workspace = await client.openWorkspace(folder);
        await workspace[removes](join(folder, "inner"));
        assert.equal(document.state, "deleted", removes);
        await document.save();
        assert.equal(readFileSync(join(folder, "inner/a.txt"), "utf8"), "one", removes);
        assert.ok(!document.isDirty);
    }
});

test("saves go one after the other, each with the text of its turn", async (context) => {
    const opened = await openDocument(context);
    const { document } = opened;
    const saves = [];
    for (let round = 0; round < 50; ++round) {
        document.text = `round ${round}`;
        saves.push(document.save());
    }
    await Promise.all(saves);
    assert.equal(opened.disk(), "round 49");
    document.text = "while saving";
    const save = document.save();
    await until(() => opened.heard.length > 50 || !document.isDirty, () => "no save");
    document.text = "typed on";
    await save;
    assert.deepEqual([document.isDirty, opened.disk()], [true, "while saving"]);
});

test("a save that the disk does not allow leaves the text to be saved", async (context) => {
    const opened = await openDocument(context);
    const { document, path, folder } = opened;
    rmSync(folder, { recursive: true });
    await hears(opened, "deleted");
    writeFileSync(folder, "a file where the folder was");
    await assert.rejects(document.save(), { name: "RequestFailedError" });
    assert.ok(document.isDirty);
    unlinkSync(folder);
    await document.save();
    assert.equal(readFileSync(path, "utf8"), "one");
});

test("a document that is opened twice is one, and closing ends it", async (context) => {
    const { client, document, path } = await openDocument(context);
    document.text = "mine";
    assert.equal(await client.openDocument(path), document);
    assert.equal(document.text, "mine", "opening again takes nothing from the user");
    await document.save();
    await document.close();
    const another = await client.openDocument(path);
    assert.notEqual(another, document);
    assert.equal(another.text, "mine");
    await assert.rejects(document.save());
    assert.ok(existsSync(path));
});
