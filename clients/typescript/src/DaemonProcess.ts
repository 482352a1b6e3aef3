import { spawn, type ChildProcessByStdio } from "node:child_process";
import { once } from "node:events";
import type { Readable, Writable } from "node:stream";

import { LineReader } from "./LineReader.js";

export interface DaemonProcessOptions {
    /** The executable; by default it is looked for in PATH. */
    executablePath?: string;
    /** The daemon's environment; by default that of this process. */
    environment?: NodeJS.ProcessEnv;
    /** Where paths that are not absolute begin; by default the working directory of this process. */
    workingDirectory?: string;
}

/** How a process ended: its exit status, or the signal that ended it. */
export interface DaemonEnd {
    status: number | null;
    signal: NodeJS.Signals | null;
}

export interface DaemonProcessListener {
    line(line: string): void;
    drained(): void;
    ended(end: DaemonEnd): void;
}

/** The executable behind its pipes. */
export class DaemonProcess {
    private readonly reader: LineReader;

    private constructor(
        private readonly child: ChildProcessByStdio<Writable, Readable, null>,
        listener: DaemonProcessListener,
    ) {
        this.reader = new LineReader(child.stdout, (line) => listener.line(line));
        child.stdin.on("drain", () => listener.drained());
        // That nobody reads any more is told by the end of the process.
        child.stdin.on("error", () => {});
        // Not "exit": what the daemon wrote before it ended still counts.
        child.on("close", (status, signal) => listener.ended({ status, signal }));
    }

    /** Fails when the executable cannot be started. */
    static async start(options: DaemonProcessOptions, listener: DaemonProcessListener): Promise<DaemonProcess> {
        const child = spawn(options.executablePath ?? "EditorDocumentDaemon", [], {
            stdio: ["pipe", "pipe", "inherit"],
            ...(options.environment && { env: options.environment }),
            ...(options.workingDirectory !== undefined && { cwd: options.workingDirectory }),
        });
        await once(child, "spawn");
        return new DaemonProcess(child, listener);
    }

    get processID(): number {
        return this.child.pid ?? 0;
    }

    /** False when nothing more should be written until the listener is told that the pipe is drained. */
    writeLine(line: string): boolean {
        return this.child.stdin.write(line + "\n");
    }

    closeInput(): void {
        this.child.stdin.end();
    }

    kill(): void {
        this.child.kill("SIGKILL");
    }

    get bufferedByteCount(): number {
        return this.reader.bufferedByteCount;
    }

    pauseReading(): void {
        this.reader.pause();
    }

    resumeReading(): void {
        this.reader.resume();
    }
}
