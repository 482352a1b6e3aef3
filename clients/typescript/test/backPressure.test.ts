import assert from "node:assert/strict";
import { existsSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import { isAsleep, startClient, temporaryFolder, test, until } from "./support.js";

const largestSize = 8 * 1024 * 1024;

function largeText(letter: string): string {
    const line = `${letter.repeat(62)}é\n`; // 65 bytes
    return line.repeat(Math.floor(largestSize / 65));
}

test("a client that does not read makes the daemon wait, and loses nothing", async (context) => {
    const folder = temporaryFolder(context);
    const client = await startClient(context);
    const letters = ["a", "b", "c", "d"];
    for (const letter of letters) writeFileSync(join(folder, letter), largeText(letter));
    await client.openWorkspace(folder);

    client.pauseReading();
    const opened = letters.map((letter) => client.request("open", { path: join(folder, letter) }));
    const made = client.request("createWorkspaceFile", { rootPath: folder, name: "made" });
    let isAnswered = false;
    void opened[0]!.then(() => (isAnswered = true));
    await until(
        () => client.bufferedByteCount > 0 && isAsleep(client.processID!),
        () => "the daemon does not come to wait",
    );
    assert.ok(client.bufferedByteCount < largestSize / 8, `${client.bufferedByteCount} bytes were read`);
    assert.ok(!isAnswered);
    assert.ok(!existsSync(join(folder, "made")), "the daemon went on although nobody read");

    client.resumeReading();
    for (const [index, letter] of letters.entries()) {
        assert.ok((await opened[index]!).snapshot.text === largeText(letter), letter);
    }
    await made;
    assert.ok(existsSync(join(folder, "made")));
});

test("whoever awaits the pipe sends large texts without holding them all", async (context) => {
    const folder = temporaryFolder(context);
    const client = await startClient(context);
    writeFileSync(join(folder, "a"), "");
    const { snapshot } = await client.request("open", { path: join(folder, "a") });
    const saves: Promise<number>[] = [];
    let answers = 0;
    let greatestDistance = 0;
    for (let round = 0; round < 12; ++round) {
        await client.drained();
        greatestDistance = Math.max(greatestDistance, saves.length - answers);
        const text = largeText(String.fromCharCode(97 + round));
        const save = client.request("save", { documentID: snapshot.documentID, text, expectedVersion: round + 1 });
        saves.push(save.then((answer) => (++answers, answer.snapshot.version)));
        await new Promise((resolve) => setImmediate(resolve));
    }
    assert.deepEqual(await Promise.all(saves), Array.from({ length: 12 }, (_, round) => round + 2));
    assert.ok(greatestDistance <= 3, `${greatestDistance} texts were under way at once`);
    assert.ok(readFileSync(join(folder, "a"), "utf8") === largeText("l"));
});

test("reading may be paused and resumed by whoever hears an answer", async (context) => {
    const folder = temporaryFolder(context);
    const client = await startClient(context);
    const heard: string[] = [];
    client.on("workspaceMutation", (event) => {
        heard.push(event.workspaceMutation.destinationPath ?? "");
        client.pauseReading();
        if (heard.length % 2) client.resumeReading();
        else setImmediate(() => client.resumeReading());
    });
    const names = Array.from({ length: 100 }, (_, index) => `file${index}`);
    await Promise.all(names.map((name) => client.request("createWorkspaceFile", { rootPath: folder, name })));
    await client.request("openWorkspace", { rootPath: folder });
    assert.deepEqual(heard, names.map((name) => join(folder, name)));
});
