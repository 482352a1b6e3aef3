import { appendFileSync, existsSync, mkdirSync, readdirSync, renameSync, rmSync, unlinkSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";

/** Numbers that are the same for the same seed. */
export class Random {
    constructor(private state: number) {}

    below(limit: number): number {
        this.state = (this.state + 0x6d2b79f5) | 0;
        let mixed = Math.imul(this.state ^ (this.state >>> 15), 1 | this.state);
        mixed ^= mixed + Math.imul(mixed ^ (mixed >>> 7), 61 | mixed);
        return ((mixed ^ (mixed >>> 14)) >>> 0) % limit;
    }

    pick<Item>(items: readonly Item[]): Item | undefined {
        return items[this.below(Math.max(items.length, 1))];
    }
}

/** A folder in which things happen. Few names are used, so that one item often takes the place of another. */
export class RandomDisk {
    readonly log: string[] = [];

    constructor(
        readonly rootPath: string,
        private readonly random: Random,
    ) {}

    folders(): string[] {
        return [this.rootPath, ...this.items().filter((item) => item.isFolder).map((item) => item.path)];
    }

    files(): string[] {
        return this.items().filter((item) => !item.isFolder).map((item) => item.path);
    }

    /** One change, if what it needs is there. */
    change(): void {
        const changes = [
            () => this.write(this.freeOrTakenFile()),
            () => this.write(this.freeOrTakenFile()),
            () => this.withFile((path) => this.write(path)),
            () => this.withFile((path) => this.append(path)),
            () => this.withFile((path) => this.replace(path)),
            () => this.withFile((path) => this.remove(path)),
            () => this.withFile((path) => this.rename(path, join(dirname(path), this.name("file")))),
            () => this.withFile((path) => this.rename(path, this.freeOrTakenFile())),
            () => this.makeFolder(join(this.folder(), this.name("folder"))),
            () => this.makeFolder(join(this.folder(), this.name("folder"))),
            () => this.withFolder((path) => this.removeFolder(path)),
            () => this.withFolder((path) => this.renameFolder(path, join(dirname(path), this.name("folder")))),
            () => this.withFolder((path) => this.renameFolder(path, join(this.folder(), this.name("folder")))),
        ];
        changes[this.random.below(changes.length)]!();
    }

    private items(): { path: string; isFolder: boolean }[] {
        const found: { path: string; isFolder: boolean }[] = [];
        const visit = (folder: string) => {
            for (const entry of readdirSync(folder, { withFileTypes: true })) {
                const path = join(folder, entry.name);
                found.push({ path, isFolder: entry.isDirectory() });
                if (entry.isDirectory()) visit(path);
            }
        };
        visit(this.rootPath);
        return found;
    }

    private name = (kind: string) => `${kind}${this.random.below(6)}`;
    private folder = () => this.random.pick(this.folders())!;
    private freeOrTakenFile = () => join(this.folder(), this.name("file"));

    private withFile(change: (path: string) => void): void {
        const path = this.random.pick(this.files());
        if (path !== undefined) change(path);
    }

    private withFolder(change: (path: string) => void): void {
        const path = this.random.pick(this.folders().slice(1));
        if (path !== undefined) change(path);
    }

    private write(path: string): void {
        this.did(`write ${path}`);
        writeFileSync(path, `text ${this.random.below(1_000_000)}\n`);
    }

    private append(path: string): void {
        this.did(`append ${path}`);
        appendFileSync(path, `more ${this.random.below(1_000_000)}\n`);
    }

    private replace(path: string): void {
        this.did(`replace ${path}`);
        writeFileSync(`${path}.tmp`, `whole ${this.random.below(1_000_000)}\n`);
        renameSync(`${path}.tmp`, path);
    }

    private remove(path: string): void {
        this.did(`remove ${path}`);
        unlinkSync(path);
    }

    private rename(from: string, to: string): void {
        this.did(`rename ${from} ${to}`);
        renameSync(from, to);
    }

    private makeFolder(path: string): void {
        if (existsSync(path)) return;
        this.did(`make ${path}`);
        mkdirSync(path);
    }

    private removeFolder(path: string): void {
        this.did(`remove all ${path}`);
        rmSync(path, { recursive: true });
    }

    private renameFolder(from: string, to: string): void {
        if (existsSync(to) || `${to}/`.startsWith(`${from}/`)) return;
        this.rename(from, to);
    }

    private did(what: string): void {
        this.log.push(what.replaceAll(this.rootPath, ""));
    }
}
