import { RequestFailedError, RequestRefusedError } from "./Errors.js";
import type { AnswerTo, Command, FieldsOf, Response } from "./Requests.js";

interface PendingRequest {
    requestID: string;
    command: Command;
    fields: object;
    succeed(answer: Response): void;
    fail(error: Error): void;
}

/** The requests that wait to be sent, and those that wait for their answers. */
export class RequestQueue {
    private readonly unsent: PendingRequest[] = [];
    private readonly open = new Map<string, PendingRequest>(); // in the order in which they were sent
    private count = 0;

    get hasUnsent(): boolean {
        return this.unsent.length > 0;
    }

    /**
     * `apply` is called with the answer at its place among the events; whoever awaits the promise is called after
     * events that have come with it.
     */
    add<Asked extends Command>(
        command: Asked,
        fields: FieldsOf[Asked],
        apply?: (answer: AnswerTo<Asked>) => void,
    ): Promise<AnswerTo<Asked>> {
        return new Promise((resolve, reject) => {
            const succeed = (answer: AnswerTo<Asked>) => {
                apply?.(answer);
                resolve(answer);
            };
            const requestID = String(++this.count);
            this.unsent.push({ requestID, command, fields, succeed: succeed as (answer: Response) => void, fail: reject });
        });
    }

    /** The line of the next request, which is open from now on. Only now does a long text become one. */
    takeUnsent(): string | undefined {
        const request = this.unsent.shift();
        if (!request) return undefined;
        this.open.set(request.requestID, request);
        return JSON.stringify({ requestID: request.requestID, command: request.command, ...request.fields });
    }

    answer(response: Response): void {
        const request = this.takeAnswered(response);
        if (!request) return;
        if (response.success) {
            request.succeed(response);
        } else if ("requestID" in response) {
            request.fail(new RequestRefusedError(request.command, response.message));
        } else {
            request.fail(new RequestFailedError(request.command, response.message));
        }
    }

    failAll(error: Error): void {
        const requests = [...this.open.values(), ...this.unsent.splice(0)];
        this.open.clear();
        for (const request of requests) request.fail(error);
    }

    // The daemon answers in the order of the requests, so an answer that names none is that of the oldest.
    private takeAnswered(response: Response): PendingRequest | undefined {
        const oldest = this.open.keys().next();
        const requestID = "requestID" in response ? response.requestID : oldest.done ? "" : oldest.value;
        const request = this.open.get(requestID);
        this.open.delete(requestID);
        return request;
    }
}
