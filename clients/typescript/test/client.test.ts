import assert from "node:assert/strict";
import { existsSync, readFileSync, unlinkSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import {
    DaemonEndedError,
    EditorDocumentDaemonClient,
    RequestFailedError,
    RequestRefusedError,
    type UpdatedEvent,
} from "../src/index.js";
import { crash, daemonPath, isStopped, replaceFile, startClient, temporaryFolder, test, until } from "./support.js";

test("every answer goes to its request, also one that names none", async (context) => {
    const folder = temporaryFolder(context);
    const client = await startClient(context);
    writeFileSync(join(folder, "a.txt"), "a");
    const { snapshot } = await client.request("open", { path: join(folder, "a.txt") });
    const kinds = {
        succeeds: () => client.request("openWorkspace", { rootPath: folder }),
        "is refused": () => client.request("open", { path: join(folder, "missing") }),
        "is outside of the root": () => client.request("loadWorkspaceChildren", { rootPath: folder, path: "/" }),
        "cannot be read": () =>
            client.request("save", { documentID: snapshot.documentID, text: "half a pair \ud800", expectedVersion: 1 }),
    };
    const outcomeOf = {
        succeeds: folder,
        "is refused": "The file could not be found.",
        "is outside of the root": "The selected path is outside the active project root.",
        "cannot be read": "surrogate",
    };
    const names = Object.keys(kinds) as (keyof typeof kinds)[];
    const asked = Array.from({ length: 1000 }, (_, index) => names[(index * 7 + (index >> 3)) % names.length]!);
    const outcomes = await Promise.allSettled(asked.map((name) => kinds[name]()));
    outcomes.forEach((outcome, index) => {
        const name = asked[index]!;
        const isOrdinary = outcome.status === "fulfilled" || outcome.reason instanceof RequestRefusedError;
        assert.equal(isOrdinary, name === "succeeds" || name === "is refused", `${index}: ${name}`);
        const said =
            outcome.status === "rejected"
                ? (outcome.reason as Error).message
                : "workspaceRootPath" in outcome.value && outcome.value.workspaceRootPath;
        assert.ok(said && said.includes(outcomeOf[name]), `${index}: ${name}: ${said}`);
    });
    assert.equal(readFileSync(join(folder, "a.txt"), "utf8"), "a");
});

test("a failure of the system is told from a refusal", async (context) => {
    const folder = temporaryFolder(context);
    const client = await startClient(context);
    const root = join(folder, "gone");
    const failed = client.request("createWorkspaceFile", { rootPath: folder, path: "/", name: "x" });
    await assert.rejects(failed, (error: RequestFailedError) => {
        assert.ok(error instanceof RequestFailedError);
        assert.equal(error.command, "createWorkspaceFile");
        return !error.reason.includes("Failed to decode");
    });
    await assert.rejects(client.request("openWorkspace", { rootPath: root }), {
        name: "RequestRefusedError",
        command: "openWorkspace",
        message: "The selected project root is unavailable.",
    });
});

test("events come typed, until the listener has had enough", async (context) => {
    const folder = temporaryFolder(context);
    const path = join(folder, "a.txt");
    writeFileSync(path, "one");
    const client = await startClient(context);
    const { snapshot } = await client.request("open", { path });
    const texts: string[] = [];
    const stop = client.on("updated", (event: UpdatedEvent) => texts.push(event.snapshot.text));
    replaceFile(path, "two");
    await until(() => texts.includes("two"), () => `only ${texts}`);
    stop();
    let deletedID: string | undefined;
    client.on("deleted", (event) => (deletedID = event.documentID));
    unlinkSync(path);
    await until(() => deletedID === snapshot.documentID, () => "no event of the deletion");
    replaceFile(path, "three");
    const back = new Promise((resolve) => client.on("updated", resolve));
    await back;
    assert.deepEqual([...new Set(texts)], ["two"]);
});

test("an executable that cannot be started is an error of the start", async () => {
    await assert.rejects(EditorDocumentDaemonClient.start({ executablePath: "/nonexistent/daemon" }), { code: "ENOENT" });
});

const large = "x".repeat(4_000_000);

test("closing waits for the saves of documents", async (context) => {
    const folder = temporaryFolder(context);
    const path = join(folder, "a.txt");
    writeFileSync(path, "");
    const client = await EditorDocumentDaemonClient.start({ executablePath: daemonPath });
    const document = await client.openDocument(path);
    const saves = ["a", "b", "c"].map((letter) => {
        document.text = letter + large;
        return document.save();
    });
    await Promise.all([client.close(), ...saves]);
    assert.ok(readFileSync(path, "utf8").startsWith("cx"));
});

test("closing lets the daemon answer what it was asked", async (context) => {
    const folder = temporaryFolder(context);
    const client = await EditorDocumentDaemonClient.start({ executablePath: daemonPath });
    const tooLong = { rootPath: folder, name: large };
    const failed = Array.from({ length: 5 }, () => client.request("createWorkspaceFolder", tooLong));
    const last = client.request("createWorkspaceFile", { rootPath: folder, name: "last" });
    await Promise.all([client.close(), last, ...failed.map((request) => assert.rejects(request, RequestFailedError))]);
    assert.ok(existsSync(join(folder, "last")));
    await assert.rejects(client.request("close", { documentID: "x" }), DaemonEndedError);
    await client.close();
});

test("a request that the crash left open fails, and later ones are served", async (context) => {
    const client = await startClient(context);
    const folder = temporaryFolder(context);
    process.kill(client.processID!, "SIGSTOP");
    const open = assert.rejects(client.request("openWorkspace", { rootPath: folder }), DaemonEndedError);
    await until(() => isStopped(client.processID!), () => "the daemon goes on");
    const crashed = crash(client);
    await open;
    const early = client.request("openWorkspace", { rootPath: folder });
    await crashed;
    assert.equal((await early).workspaceRootPath, folder);
});

test("a daemon that crashes again and again is given up", async (context) => {
    const client = await startClient(context, { crashesPerMinute: 2 });
    await crash(client);
    await crash(client);
    const ended = new Promise<Error | undefined>((resolve) => client.on("ended", resolve));
    process.kill(client.processID!, "SIGKILL");
    assert.ok((await ended) instanceof DaemonEndedError);
    await assert.rejects(client.openWorkspace("/"), /again and again/);
});

test("a program that is no daemon is not taken for one", async (context) => {
    const folder = temporaryFolder(context);
    const executablePath = join(folder, "chatter");
    writeFileSync(executablePath, "#!/bin/sh\necho Hello\nexec cat\n", { mode: 0o700 });
    const client = await EditorDocumentDaemonClient.start({ executablePath, crashesPerMinute: 1 });
    await new Promise((resolve) => client.on("ended", resolve));
    await assert.rejects(client.request("close", { documentID: "x" }), DaemonEndedError);
});
