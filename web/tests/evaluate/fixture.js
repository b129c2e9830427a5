// SPDX-License-Identifier: Apache-2.0
// A small evaluation as its page carries it.

export function score(values = {}) {
    return {
        rightPercent: 50, rightOfAnsweredPercent: 60, wrongSwitchesPerMinute: 2, medianSecondsToFollow: 1.5,
        ninetiethSecondsToFollow: 4, changes: 3, neverReached: 1, wrongSwitches: 4, minutes: 2, ...values,
    };
}

export function rule(name, values = {}) {
    return { rule: name, recordings: [score(values)], total: score(values) };
}

/** One setting, or for two a grid in which the second changes fastest. */
export function sweep(...settings) {
    const sweeps = settings.map(({ name }) => ({ name, unit: 's' }));
    const [first, second = { values: [null] }] = settings;
    const points = first.values.flatMap((one) => second.values.map((two) =>
        ({ values: [one, two].filter((value) => value !== null), total: score({ rightPercent: 40 + one }) })));
    return { sweeps, points };
}

export function evaluation(values = {}) {
    return {
        format: 1, program: 'nearcast 0', main: 'nearest', recordings: ['walk.jsonl'], settings: [],
        rules: [rule('median-7'), rule('nearest', { rightPercent: 60 })], sweeps: [], points: [], ...values,
    };
}
