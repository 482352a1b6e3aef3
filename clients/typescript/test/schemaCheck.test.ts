import assert from "node:assert/strict";

import { assertEnvelopeOfTheSchema } from "./schemaCheck.js";
import { test } from "./support.js";

test("the check refuses what is no envelope", () => {
    const node = { nodeID: "n", path: "/r/a", name: "a", isDirectory: false, isRoot: false };
    const listing = { rootPath: "/r", directoryPath: "/r", nodes: [node] };
    const event = { kind: "event", event: "workspaceChildrenUpdated", workspaceRootPath: "/r", workspaceDirectory: listing };
    assertEnvelopeOfTheSchema(event);
    const wrong: unknown[] = [
        null,
        "text",
        { ...event, kind: "response" },
        { ...event, workspaceRootPath: 1 },
        { ...event, colour: "red" },
        { ...event, workspaceDirectory: { ...listing, nodes: {} } },
        { ...event, workspaceDirectory: { ...listing, nodes: [{ ...node, isRoot: "false" }] } },
        { ...event, workspaceDirectory: { ...listing, nodes: [{ ...node, nodeID: undefined }] } },
        { kind: "event", event: "deleted" },
    ];
    for (const value of wrong) assert.throws(() => assertEnvelopeOfTheSchema(value), assert.AssertionError);
});
