// SPDX-License-Identifier: Apache-2.0
// Many readings, few pixels: curves with times of their own become columns over one common time, as the plot wants
// them. `undefined` in a column is "nothing here, go on"; `null` breaks the line.

import { lowerBound, upperBound } from './search.js';

/** Up to this many points are drawn exactly. */
const EXACT_POINTS = 3000;

/** The indexes of a curve that are needed to draw [from, to]: those inside, and one more on each side. */
function needed(curve, range) {
    return {
        begin: Math.max(lowerBound(curve.t, range.from) - 1, 0),
        end: Math.min(upperBound(curve.t, range.to) + 1, curve.t.length),
    };
}

function exactTimes(curves, parts, range) {
    const times = new Set();
    curves.forEach((curve, index) => {
        for (let i = parts[index].begin; i < parts[index].end; ++i) times.add(curve.t[i]);
        for (const time of curve.breaks ?? []) {
            if (time >= range.from && time <= range.to) times.add(time);
        }
    });
    return Float64Array.from(times).sort();
}

function exactColumn(curve, part, times) {
    const column = new Array(times.length).fill(undefined);
    for (const time of curve.breaks ?? []) {
        const place = lowerBound(times, time);
        if (times[place] === time) column[place] = null;
    }
    for (let i = part.begin; i < part.end; ++i) column[lowerBound(times, curve.t[i])] = curve.v[i];
    return column;
}

function exact(curves, parts, range) {
    const times = exactTimes(curves, parts, range);
    return [times, ...curves.map((curve, index) => exactColumn(curve, parts[index], times))];
}

/** Lowest and highest value of each bin, in their order of time. */
function binnedColumn(curve, part, bins) {
    const column = new Array(bins.count * 2).fill(undefined);
    let i = part.begin;
    while (i < part.end) {
        const bin = bins.of(curve.t[i]);
        let low = i;
        let high = i;
        for (++i; i < part.end && bins.of(curve.t[i]) === bin; ++i) {
            if (curve.v[i] < curve.v[low]) low = i;
            if (curve.v[i] > curve.v[high]) high = i;
        }
        column[bin * 2] = curve.v[Math.min(low, high)];
        if (low !== high) column[bin * 2 + 1] = curve.v[Math.max(low, high)];
    }
    for (const time of curve.breaks ?? []) markBreak(column, curve, bins, time);
    return column;
}

/** A break shows where nothing is drawn in its bin, or in the free half of it. */
function markBreak(column, curve, bins, time) {
    if (time < bins.from || time > bins.to) return;
    const bin = bins.of(time);
    if (column[bin * 2] === undefined) column[bin * 2] = null;
    else if (column[bin * 2 + 1] === undefined) column[bin * 2 + 1] = null;
}

/** Bins that stay where they are while the range is moved, so that nothing flickers. */
function makeBins(range, columns) {
    const width = (range.to - range.from) / columns;
    const from = Math.floor(range.from / width) * width;
    const count = columns + 1;
    return {
        count,
        width,
        from,
        to: from + count * width,
        of: (time) => Math.min(Math.max(Math.floor((time - from) / width), 0), count - 1),
    };
}

function binned(curves, parts, bins) {
    const times = new Float64Array(bins.count * 2);
    for (let i = 0; i < times.length; ++i) times[i] = bins.from + (i / 2 + 0.25) * bins.width;
    return [times, ...curves.map((curve, index) => binnedColumn(curve, parts[index], bins))];
}

/**
 * The columns to draw: [times, values of the first curve, of the second, ...].
 * @param curves  {t, v, breaks?}: times in seconds in order, values, moments at which the line is broken
 * @param range   {from, to} in seconds
 * @param columns how many pixels there are
 */
export function columnsFor(curves, range, columns) {
    const parts = curves.map((curve) => needed(curve, range));
    const points = parts.reduce((sum, part) => sum + part.end - part.begin, 0);
    if (points <= EXACT_POINTS) return exact(curves, parts, range);
    return binned(curves, parts, makeBins(range, Math.max(1, Math.round(columns))));
}
