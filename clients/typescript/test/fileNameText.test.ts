import assert from "node:assert/strict";
import { renameSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import { displayText, fileNameFromText, textFromFileName } from "../src/index.js";
import { settle, startClient, temporaryFolder, test, until } from "./support.js";

const cases: [string, number[], string][] = [
    ["plain", [0x61, 0x62], "ab"],
    ["UTF-8", [0xc3, 0xa9, 0xf0, 0x9f, 0x99, 0x82], "é🙂"],
    ["Latin-1", [0x63, 0x61, 0x66, 0xe9], "caf\u{10f8e9}"],
    ["a beginning without its end", [0xe2, 0x82, 0x61], "\u{10f8e2}\u{10f882}a"],
    ["a surrogate", [0xed, 0xa0, 0x80], "\u{10f8ed}\u{10f8a0}\u{10f880}"],
    ["an overlong slash", [0xc0, 0xaf], "\u{10f8c0}\u{10f8af}"],
    ["a byte order mark", [0xef, 0xbb, 0xbf, 0x61], "\ufeffa"],
    ["an escape itself", [0xf4, 0x8f, 0xa2, 0x80], "\u{10f8f4}\u{10f88f}\u{10f8a2}\u{10f880}"],
    ["what is next to the escapes", [0xf4, 0x8f, 0xa1, 0xbf, 0xf4, 0x8f, 0xa4, 0x80], "\u{10f87f}\u{10f900}"],
];

test("file names go to text and back", () => {
    for (const [name, bytes, text] of cases) {
        assert.equal(textFromFileName(Uint8Array.from(bytes)), text, name);
        assert.deepEqual([...fileNameFromText(text)], bytes, name);
    }
    assert.equal(displayText("caf\u{10f8e9}.txt"), "caf\ufffd.txt");
});

test("the daemon uses the same form", async (context) => {
    const folder = temporaryFolder(context);
    const pathOf = (bytes: number[]) => Buffer.concat([Buffer.from(`${folder}/`), Buffer.from(bytes)]);
    for (const [name, bytes] of cases) writeFileSync(pathOf(bytes), name);
    const client = await startClient(context);
    const workspace = await client.openWorkspace(folder);
    const texts = cases.map(([, , text]) => text);
    assert.deepEqual(workspace.root.children!.map((node) => node.name).sort(), [...texts].sort());
    for (const [name, , text] of cases) assert.equal((await client.openDocument(join(folder, text))).text, name);
    const document = await client.openDocument(join(folder, texts[2]!));
    await settle(workspace);
    renameSync(pathOf(cases[2]![1]), pathOf([0xfe]));
    await until(() => document.path === `${folder}/\u{10f8fe}`, () => document.path);
});
