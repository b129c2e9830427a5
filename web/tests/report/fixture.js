// SPDX-License-Identifier: Apache-2.0
// A small recording as the page carries it: two dongles, ten seconds, one change.

const NO_CURVE = { t: [], v: [] };

export function dongle(values = {}) {
    return {
        port: 'BT:Bar', nick: 'Bar', address: '02:4E:43:00:00:03', threshold: -65, own: true,
        raw: NO_CURVE, smoothed: NO_CURVE, level: NO_CURVE, silent: [], ...values,
    };
}

export function decision(values = {}) {
    return {
        at: 0, dongle: -1, rule: 'none inside', signal: 0, threshold: 0, runner: -1, runnerSignal: 0, distance: null,
        stale: false, ...values,
    };
}

export function pageData(values = {}) {
    return {
        format: 1, program: 'nearcast 0', title: 'shop', sources: ['shop.jsonl'], end: 10000, settings: [],
        dongles: [
            dongle({
                raw: { t: [1000, 1000], v: [-60, -2] }, smoothed: { t: [1000], v: [-60] },
                level: { t: [1000], v: [-600] }, silent: [7000],
            }),
            dongle({ port: 'BT:Kitchen', nick: '', address: '02:4E:43:00:00:05', threshold: -110, own: false }),
        ],
        decision: [
            decision(),
            decision({ at: 2000, dongle: 0, rule: 'entered', signal: -60, threshold: -65 }),
            decision({ at: 7000, rule: 'silent' }),
        ],
        truth: [{ at: 0, dongle: 0 }, { at: 5000, dongle: 1 }],
        radio: [{ at: 8000, hears: false, state: 'powered off' }, { at: 9000, hears: true, state: 'powered on' }],
        scans: [{ at: 0, what: 'started' }],
        ...values,
    };
}
