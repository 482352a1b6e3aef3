import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { join } from "node:path";

import { packageFolder, temporaryFolder, test } from "./support.js";

test("the types are those of the schemas", (context) => {
    const made = join(temporaryFolder(context), "WireTypes.ts");
    execFileSync(process.execPath, [join(packageFolder, "scripts/generateWireTypes.js"), made]);
    const committed = readFileSync(join(packageFolder, "src/WireTypes.ts"), "utf8");
    assert.equal(committed, readFileSync(made, "utf8"), 'run "npm run generate"');
});
