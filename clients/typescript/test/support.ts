import assert from "node:assert/strict";
import { mkdtempSync, readFileSync, realpathSync, renameSync, rmSync, unlinkSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test as testOfNode, type TestContext } from "node:test";
import { fileURLToPath } from "node:url";

import { EditorDocumentDaemonClient, type ConnectionOptions, type WorkspaceModel } from "../src/index.js";
import { assertEnvelopeOfTheSchema } from "./schemaCheck.js";

export const packageFolder = fileURLToPath(new URL("../../", import.meta.url));
export const projectFolder = join(packageFolder, "../..");

/** The executable that is tested. */
export const daemonPath =
    process.env["EDITOR_DOCUMENT_DAEMON"] ?? join(projectFolder, "build/dev/EditorDocumentDaemon");

/** A test that fails when it does not come to an end. */
export function test(name: string, body: (context: TestContext) => void | Promise<void>): void {
    void testOfNode(name, { timeout: 120_000 }, async (context) => {
        await body(context);
    });
}

/** A folder of its own for a test, which goes with it. */
export function temporaryFolder(test: TestContext): string {
    const folder = mkdtempSync(join(realpathSync(tmpdir()), "editor-client-"));
    test.after(() => rmSync(folder, { recursive: true, force: true }));
    return folder;
}

export async function startClient(
    test: TestContext,
    options: ConnectionOptions = {},
): Promise<EditorDocumentDaemonClient> {
    const client = await EditorDocumentDaemonClient.start({ executablePath: daemonPath, ...options });
    client.on("envelope", assertEnvelopeOfTheSchema);
    test.after(() => client.close());
    return client;
}

/** Waits until the condition holds, and fails with what `describe` says when it never does. */
export async function until(condition: () => boolean, describe: () => string): Promise<void> {
    const deadline = performance.now() + 30_000;
    while (!condition()) {
        assert.ok(performance.now() < deadline, describe());
        await new Promise((resolve) => setTimeout(resolve, 2));
    }
}

/** Gives a file its content in one step, so that nobody sees it half written. */
export function replaceFile(path: string, text: string): void {
    writeFileSync(`${path}.part`, text);
    renameSync(`${path}.part`, path);
}

let sentinelCount = 0;

/** Waits until the daemon has told of everything that was done in the workspace so far. */
export async function settle(workspace: WorkspaceModel): Promise<void> {
    const sentinel = join(workspace.rootPath, `sentinel${++sentinelCount}`);
    writeFileSync(sentinel, "");
    await until(() => workspace.nodeAt(sentinel) !== undefined, () => "the sentinel does not appear");
    unlinkSync(sentinel);
    await until(() => workspace.nodeAt(sentinel) === undefined, () => "the sentinel does not disappear");
    // The listings come first; an answer shows that all is done that came with them.
    await workspace.expand(workspace.root);
}

function stateOf(processID: number): string {
    const status = readFileSync(`/proc/${processID}/stat`, "utf8");
    return status.charAt(status.lastIndexOf(")") + 2);
}

export const isAsleep = (processID: number) => stateOf(processID) === "S";
export const isStopped = (processID: number) => stateOf(processID) === "T";

/** Kills the daemon as a crash would, and waits until it runs again with all that was open. */
export async function crash(client: EditorDocumentDaemonClient): Promise<void> {
    const restarted = new Promise<void>((resolve) => {
        const stop = client.on("restarted", () => {
            stop();
            resolve();
        });
    });
    process.kill(client.processID!, "SIGKILL");
    await restarted;
}
