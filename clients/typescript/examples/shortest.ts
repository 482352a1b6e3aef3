import { EditorDocumentDaemonClient } from "editor-document-daemon-client";

const client = await EditorDocumentDaemonClient.start();
const workspace = await client.openWorkspace(process.argv[2] ?? ".");
workspace.on("mutation", ({ kind, sourcePath, destinationPath }) => console.log(kind, destinationPath ?? sourcePath));

const diary = await client.openDocument(`${workspace.rootPath}/diary.txt`);
diary.text += "All is well.\n";
await diary.save();
