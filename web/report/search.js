// SPDX-License-Identifier: Apache-2.0
// Searching columns that are sorted by time.

/** The first index whose time is not before `time`; the length where there is none. */
export function lowerBound(times, time) {
    let low = 0;
    let high = times.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (times[middle] < time) low = middle + 1;
        else high = middle;
    }
    return low;
}

/** The first index whose time is after `time`; the length where there is none. */
export function upperBound(times, time) {
    let low = 0;
    let high = times.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (times[middle] <= time) low = middle + 1;
        else high = middle;
    }
    return low;
}

/** After this many seconds without a reading the manager reports a dongle as silent. */
export const PRESENT = 5;

/** The last value of a curve at a moment, or null where it is older than `age` seconds. */
export function valueAt(curve, time, age) {
    const index = upperBound(curve.t, time) - 1;
    if (index < 0 || time - curve.t[index] > age) return null;
    return curve.v[index];
}
