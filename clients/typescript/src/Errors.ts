import type { EditorDocumentRequestCommand } from "./WireTypes.js";

/** The daemon understood the request and says why it cannot be carried out. The message is for the user. */
export class RequestRefusedError extends Error {
    override readonly name = "RequestRefusedError";

    constructor(
        readonly command: EditorDocumentRequestCommand,
        message: string,
    ) {
        super(message);
    }
}

const failurePrefix = "Failed to decode request: ";

/** The system did not let the daemon carry out the request, or the daemon could not read it. */
export class RequestFailedError extends Error {
    override readonly name = "RequestFailedError";
    /** The message without what every message of this kind begins with. */
    readonly reason: string;

    constructor(
        readonly command: EditorDocumentRequestCommand,
        message: string,
    ) {
        super(message);
        this.reason = message.startsWith(failurePrefix) ? message.slice(failurePrefix.length) : message;
    }
}

/** The daemon ended before it answered. Whether the request was carried out is not known. */
export class DaemonEndedError extends Error {
    override readonly name = "DaemonEndedError";
}

/** The file has got another content since; the document's `conflict` holds it. */
export class SaveConflictError extends Error {
    override readonly name = "SaveConflictError";

    constructor(readonly path: string) {
        super("The file changed on disk, and the document was changed here as well.");
    }
}
