// SPDX-License-Identifier: Apache-2.0
// The state of a page, and its listeners.

/**
 * @param initial  the state: a plain object
 * @param schedule calls a function soon, once for many changes
 */
export function makeStore(initial, schedule) {
    let state = { ...initial };
    let waiting = new Set();
    const listeners = [];
    const tell = () => {
        const changed = waiting;
        waiting = new Set();
        for (const { keys, listener } of listeners) {
            if (keys.some((key) => changed.has(key))) listener(state);
        }
    };
    return {
        get: () => state,
        /** Changes values; those that stay the same are not reported. */
        set(values) {
            const keys = Object.keys(values).filter((key) => !Object.is(values[key], state[key]));
            if (keys.length === 0) return;
            state = { ...state, ...values };
            if (waiting.size === 0) schedule(tell);
            for (const key of keys) waiting.add(key);
        },
        /** Calls the listener after a change of one of the keys. */
        on(keys, listener) {
            listeners.push({ keys, listener });
        },
    };
}
