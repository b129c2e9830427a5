// SPDX-License-Identifier: Apache-2.0
// The page's data as charts: series of points, each point with its tip.

import { figure } from '../shared/tables.js';

/** The quantity on the x axis of each chart; y is the time right in all of them. */
const ALONG = [
    { title: 'Time right over wrong switches', name: 'wrong switches a minute', key: 'wrongSwitchesPerMinute' },
    {
        title: 'Time right over the time to follow a change', name: 'median time to follow a change, s',
        key: 'medianSecondsToFollow',
    },
];

/** A setting's value as a person would write it. */
export function shortest(value) {
    return String(Number(value.toPrecision(6)));
}

/** The figures of a score in one sentence. */
export function tipOf(what, score) {
    return `${what}: ${figure(score.rightPercent)} % right, ${figure(score.wrongSwitchesPerMinute, 2)} wrong ` +
        `switches/min, followed in ${figure(score.medianSecondsToFollow)} s, ` +
        `${score.neverReached} of ${score.changes} changes never reached`;
}

/** The point of a score, as a list; empty where one of its figures is not known. */
function pointsOf(what, score, key) {
    const [x, y] = [score[key], score.rightPercent];
    return x === null || y === null ? [] : [{ x, y, tip: tipOf(what, score) }];
}

/** The curve of a sweep, or, for a grid of two settings, a curve for each value of the first. */
function sweepSeries({ sweeps, points }, key) {
    if (sweeps.length === 0) return [];
    const called = (place, value) => `${sweeps[place].name} ${shortest(value)}`;
    const grid = sweeps.length === 2;
    const pointOf = ({ values, total }) => pointsOf(values.map((value, i) => called(i, value)).join(', '), total, key);
    const curves = grid ? [...new Set(points.map((point) => point.values[0]))] : [null];
    return curves.map((first, index) => {
        const own = points.filter((point) => !grid || point.values[0] === first);
        return {
            name: grid ? called(0, first) : sweeps[0].name, line: true, main: true,
            shade: grid ? index / Math.max(curves.length - 1, 1) : null,
            points: own.flatMap(pointOf),
        };
    });
}

/** Other rules may be this many times as far to the right as `nearest` and its curves, and this much lower. */
const WIDER = 2.5;
const LOWER = 15;

/**
 * Leaves out rules that are so far away that there would be little room to see `nearest` and its curves. Where those
 * have no points, all stay.
 * @return {near: the series that stay, far: the names of the others}
 */
export function withoutFar(series) {
    const about = series.filter(({ main }) => main).flatMap(({ points }) => points);
    if (about.length === 0) return { near: series, far: [] };
    const right = Math.max(...about.map(({ x }) => x)) * WIDER;
    const bottom = Math.min(...about.map(({ y }) => y)) - LOWER;
    const isFar = ({ main, points }) => !main && points.some(({ x, y }) => x > right || y < bottom);
    return { near: series.filter((one) => !isFar(one)), far: series.filter(isFar).map(({ name }) => name) };
}

/** 1, 2 or 5 times a power of ten, so that a span has about five steps. */
function stepFor(size) {
    const power = 10 ** Math.floor(Math.log10(size / 5));
    return power * ([1, 2, 5].find((factor) => factor * power * 5 >= size) ?? 10);
}

/** The ends of an axis: whole steps around all values. */
export function axisFor(values) {
    const [least, most] = [Math.min(...values), Math.max(...values)];
    const step = stepFor(Math.max(most - least, 0.1));
    const from = Math.floor(least / step);
    return { from: from * step, to: Math.max(Math.ceil(most / step), from + 1) * step };
}

function chartOf(data, { title, name, key }) {
    const rules = data.rules.map(({ rule, total }) =>
        ({ name: rule, line: false, main: rule === data.main, shade: null, points: pointsOf(rule, total, key) }));
    const series = [...rules, ...sweepSeries(data, key)].filter(({ points }) => points.length > 0);
    const { near, far } = withoutFar(series);
    const points = near.flatMap((one) => one.points);
    return {
        title, xName: name, yName: 'time right, %', series: near, far,
        x: axisFor([0, ...points.map(({ x }) => x)]), y: axisFor(points.map(({ y }) => y)),
    };
}

/** The charts of the page; one without any point is left out. See docs/reports.md for the data. */
export function chartsOf(data) {
    return ALONG.map((along) => chartOf(data, along)).filter(({ series }) => series.length > 0);
}
