type Listener<Value> = (value: Value) => void;

/** Listeners by the name of what they listen to. */
export class Listeners<Events extends object> {
    private readonly listenersByName = new Map<keyof Events, Set<Listener<never>>>();

    /** Returns the function that ends the listening. */
    on<Name extends keyof Events>(name: Name, listener: Listener<Events[Name]>): () => void {
        const listeners = this.listenersByName.get(name) ?? new Set();
        this.listenersByName.set(name, listeners.add(listener));
        return () => listeners.delete(listener);
    }

    emit<Name extends keyof Events>(name: Name, value: Events[Name]): void {
        for (const listener of this.listenersByName.get(name) ?? []) {
            try {
                (listener as Listener<Events[Name]>)(value);
            } catch (error) {
                // The fault of one listener is not lost, and keeps nobody else from hearing.
                queueMicrotask(() => {
                    throw error;
                });
            }
        }
    }
}
