import type { Readable } from "node:stream";

const lineFeed = 0x0a;

/**
 * Cuts a stream of bytes into lines. While it is paused it delivers nothing and reads nothing, so that the pipe fills
 * and whoever writes into it has to wait.
 */
export class LineReader {
    private beginning: Buffer[] = []; // of the line whose end has not come yet
    private held: Buffer | undefined; // what came in one piece with the line after which the reader was paused
    private isPaused = false;

    constructor(
        private readonly stream: Readable,
        private readonly deliver: (line: string) => void,
    ) {
        stream.on("data", (bytes: Buffer) => this.take(bytes));
    }

    /** How many bytes were read and not delivered yet. */
    get bufferedByteCount(): number {
        const pieces = this.held ? [...this.beginning, this.held] : this.beginning;
        return pieces.reduce((count, piece) => count + piece.length, this.stream.readableLength);
    }

    pause(): void {
        this.isPaused = true;
        this.stream.pause();
    }

    resume(): void {
        this.isPaused = false;
        const held = this.held;
        this.held = undefined;
        if (held) this.take(held);
        if (!this.isPaused) this.stream.resume();
    }

    private take(bytes: Buffer): void {
        let rest = bytes;
        while (!this.isPaused) {
            const end = rest.indexOf(lineFeed);
            if (end < 0) {
                if (rest.length > 0) this.beginning.push(rest);
                return;
            }
            const line = Buffer.concat([...this.beginning, rest.subarray(0, end)]).toString("utf8");
            this.beginning = [];
            rest = rest.subarray(end + 1);
            this.deliver(line);
        }
        this.held = this.held ? Buffer.concat([rest, this.held]) : rest;
    }
}
