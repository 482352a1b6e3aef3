import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { readFileSync, symlinkSync, unlinkSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import { daemonPath, packageFolder, temporaryFolder, test, until } from "./support.js";

test("the program of the README does what it says", async (context) => {
    const readme = readFileSync(join(packageFolder, "README.md"), "utf8");
    const program = readFileSync(join(packageFolder, "examples/shortest.ts"), "utf8");
    assert.equal(readme.match(/```ts\n([^]*?)```/)?.[1], program);

    const [tools, folder] = [temporaryFolder(context), temporaryFolder(context)];
    symlinkSync(daemonPath, join(tools, "EditorDocumentDaemon"));
    writeFileSync(join(folder, "diary.txt"), "Dear diary,\n");
    const child = spawn(process.execPath, [join(packageFolder, "build/examples/shortest.js"), folder], {
        env: { ...process.env, PATH: tools },
        stdio: ["ignore", "pipe", "inherit"],
    });
    context.after(() => child.kill());
    let output = "";
    child.stdout.on("data", (bytes: Buffer) => (output += bytes.toString()));
    const diary = () => readFileSync(join(folder, "diary.txt"), "utf8");
    await until(() => diary() === "Dear diary,\nAll is well.\n", diary);
    writeFileSync(join(folder, "letter.txt"), "");
    await until(() => output === `createdFile ${folder}/letter.txt\n`, () => output);
    unlinkSync(join(folder, "letter.txt"));
    await until(() => output.endsWith(`deleted ${folder}/letter.txt\n`), () => output);
    child.kill();
    await once(child, "close");
});
