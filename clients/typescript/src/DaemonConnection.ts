import { DaemonProcess, type DaemonEnd, type DaemonProcessOptions } from "./DaemonProcess.js";
import { DaemonEndedError } from "./Errors.js";
import { Listeners } from "./Listeners.js";
import { RequestQueue } from "./RequestQueue.js";
import type { AnswerTo, Command, Event, FieldsOf } from "./Requests.js";
import type { EditorDocumentDaemonEnvelope } from "./WireTypes.js";

/** What follows the daemon's envelopes, and is brought back after a crash. */
export interface Model {
    follow(envelope: EditorDocumentDaemonEnvelope): void;
    restore(): Promise<void>;
    /** Waits for what the model has yet to ask of the daemon. */
    idle(): Promise<void>;
}

export interface ConnectionOptions extends DaemonProcessOptions {
    /** After more crashes than these within one minute the client gives up. */
    crashesPerMinute?: number;
}

export type ConnectionEvents = { [Name in Event["event"]]: Extract<Event, { event: Name }> } & {
    /** Every envelope in its order, events as well as responses: for those who record what was said. */
    envelope: EditorDocumentDaemonEnvelope;
    /** The daemon ended by itself; it is being started again. */
    crashed: DaemonEnd;
    /** The daemon runs again, with the workspaces and documents as far as they still exist. */
    restarted: undefined;
    /** The daemon has ended and is not started again; after a crash with the reason. */
    ended: Error | undefined;
};

/** One daemon after another, as long as they crash and until the client has had enough. */
export class DaemonConnection extends Listeners<ConnectionEvents> {
    private readonly models = new Set<Model>();
    private readonly requests = new RequestQueue();
    private process: DaemonProcess | undefined;
    private isPipeFull = false;
    private isReadingPaused = false;
    private isClosing = false;
    private endedBy: Error | undefined;
    private readonly crashTimes: number[] = [];
    private restarting: Promise<void> | undefined;
    private waitingForPipe: (() => void)[] = [];

    constructor(private readonly options: ConnectionOptions) {
        super();
    }

    async start(): Promise<void> {
        this.process = await DaemonProcess.start(this.options, {
            line: (line) => this.receive(line),
            drained: () => this.pipeIsDrained(),
            ended: (end) => this.processEnded(end),
        });
        this.isPipeFull = false;
        if (this.isReadingPaused) this.process.pauseReading();
    }

    add(model: Model): void {
        this.models.add(model);
    }

    remove(model: Model): void {
        this.models.delete(model);
    }

    modelsOf<Kind extends Model>(kind: new (...parts: never[]) => Kind): Kind[] {
        return [...this.models].filter((model): model is Kind => model instanceof kind);
    }

    get processID(): number | undefined {
        return this.process?.processID;
    }

    /** Waits while the daemon is started again. Fails when there is none any more. */
    async ready(): Promise<void> {
        while (this.restarting) await this.restarting;
        if (this.endedBy) throw this.endedBy;
    }

    /** Sends to the daemon as it is now. To be called as soon as it is ready, or by a model that is being restored. */
    send<Asked extends Command>(
        command: Asked,
        fields: FieldsOf[Asked],
        apply?: (answer: AnswerTo<Asked>) => void,
    ): Promise<AnswerTo<Asked>> {
        if (!this.process) return Promise.reject(this.endedBy ?? new DaemonEndedError("The daemon has ended."));
        const answer = this.requests.add(command, fields, apply);
        this.sendWaiting();
        return answer;
    }

    /** Waits until every request so far is in the pipe, so that a long row of large texts need not lie in memory. */
    async drained(): Promise<void> {
        if (this.isPipeFull) await new Promise<void>((resolve) => this.waitingForPipe.push(resolve));
    }

    get bufferedByteCount(): number {
        return this.process?.bufferedByteCount ?? 0;
    }

    pauseReading(): void {
        this.isReadingPaused = true;
        this.process?.pauseReading();
    }

    resumeReading(): void {
        this.isReadingPaused = false;
        this.process?.resumeReading();
    }

    async close(): Promise<void> {
        // Whoever has asked for something in the same turn is still on the way here.
        await new Promise((resolve) => setImmediate(resolve));
        this.resumeReading();
        await Promise.all([...this.models].map((model) => model.idle()));
        while (this.restarting) await this.restarting;
        if (!this.process) return;
        const ended = new Promise<void>((resolve) => this.on("ended", () => resolve()));
        this.isClosing = true;
        this.sendWaiting();
        await ended;
    }

    private sendWaiting(): void {
        while (this.process && !this.isPipeFull) {
            const line = this.requests.takeUnsent();
            if (line === undefined) break;
            this.isPipeFull = !this.process.writeLine(line);
        }
        if (this.isClosing && !this.requests.hasUnsent) this.process?.closeInput();
    }

    private pipeIsDrained(): void {
        this.isPipeFull = false;
        this.sendWaiting();
        if (!this.isPipeFull) this.releaseWaiting();
    }

    private releaseWaiting(): void {
        for (const resolve of this.waitingForPipe.splice(0)) resolve();
    }

    private receive(line: string): void {
        let envelope: EditorDocumentDaemonEnvelope;
        try {
            envelope = JSON.parse(line) as EditorDocumentDaemonEnvelope;
        } catch {
            // Whatever runs there, it is no daemon in good order.
            this.process?.kill();
            return;
        }
        this.emit("envelope", envelope);
        for (const model of [...this.models]) model.follow(envelope);
        if (envelope.kind === "response") {
            this.requests.answer(envelope);
        } else {
            this.emit(envelope.event, envelope as never);
        }
    }

    private processEnded(end: DaemonEnd): void {
        this.process = undefined;
        this.isPipeFull = false;
        const cause = end.signal ?? `status ${end.status}`;
        const error = new DaemonEndedError(`The daemon ended (${cause}) before it answered.`);
        this.requests.failAll(error);
        this.releaseWaiting();
        if (this.isClosing) return this.end(undefined);
        this.emit("crashed", end);
        this.crashTimes.push(performance.now());
        // A daemon that ends while the models are being restored is noticed by the loop that restores them.
        this.restarting ??= this.restart().finally(() => (this.restarting = undefined));
    }

    private async restart(): Promise<void> {
        while (!this.process) {
            if (this.hasCrashedTooOften()) return this.end(new DaemonEndedError("The daemon crashes again and again."));
            try {
                await this.start();
            } catch (error) {
                return this.end(error instanceof Error ? error : new DaemonEndedError(String(error)));
            }
            await this.restoreModels();
        }
        this.emit("restarted", undefined);
    }

    private async restoreModels(): Promise<void> {
        for (const model of [...this.models]) {
            if (!this.process) return;
            await model.restore().catch((error: unknown) => {
                if (!(error instanceof DaemonEndedError)) throw error;
            });
        }
    }

    private hasCrashedTooOften(): boolean {
        const aMinuteAgo = performance.now() - 60_000;
        return this.crashTimes.filter((time) => time > aMinuteAgo).length > (this.options.crashesPerMinute ?? 5);
    }

    private end(error: Error | undefined): void {
        this.endedBy = error ?? new DaemonEndedError("The client was closed.");
        this.emit("ended", error);
    }
}
