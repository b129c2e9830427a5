// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { columnsFor } from '../../report/decimate.js';

function longCurve(count, valueOf) {
    return {
        t: Float64Array.from({ length: count }, (_, i) => i * 0.1),
        v: Float64Array.from({ length: count }, (_, i) => valueOf(i)),
    };
}

test('few points are drawn as they are, on one common time', () => {
    const [times, first, second] = columnsFor(
        [{ t: [1, 2], v: [-60, -61] }, { t: [1.5], v: [-70] }], { from: 0, to: 3 }, 100);
    assert.deepEqual([...times], [1, 1.5, 2]);
    assert.deepEqual(first, [-60, undefined, -61]);
    assert.deepEqual(second, [undefined, -70, undefined]);
});

test('one point on each side of the range is kept, so that lines reach its edges', () => {
    const [times] = columnsFor([{ t: [1, 2, 3, 4, 5, 6], v: [1, 2, 3, 4, 5, 6] }], { from: 2.5, to: 4.5 }, 100);
    assert.deepEqual([...times], [2, 3, 4, 5]);
});

test('a break is a null', () => {
    const [times, column] = columnsFor([{ t: [1, 9], v: [-60, -61], breaks: [6] }], { from: 0, to: 10 }, 100);
    assert.deepEqual([...times], [1, 6, 9]);
    assert.deepEqual(column, [-60, null, -61]);
});

test('a break outside the range is not drawn', () => {
    const [times] = columnsFor([{ t: [1], v: [-60], breaks: [6] }], { from: 0, to: 5 }, 100);
    assert.deepEqual([...times], [1]);
});

test('many points are bounded by the pixels', () => {
    const [times, column] = columnsFor([longCurve(36000, () => -60)], { from: 0, to: 3600 }, 500);
    assert.equal(times.length, 2 * 501);
    assert.equal(column.length, times.length);
});

test('a single spike among many points is seen', () => {
    const [, column] = columnsFor([longCurve(36000, (i) => (i === 17777 ? -20 : -60))], { from: 0, to: 3600 }, 500);
    assert.equal(column.filter((value) => value === -20).length, 1);
});

test('lowest and highest come in the order in which they were heard', () => {
    const rising = columnsFor([longCurve(36000, (i) => i)], { from: 0, to: 3600 }, 500)[1];
    const values = rising.filter((value) => value !== undefined);
    assert.deepEqual(values, [...values].sort((a, b) => a - b));
});

test('the times of many points are in order', () => {
    const [times] = columnsFor([longCurve(36000, () => -60)], { from: 17, to: 3333 }, 700);
    assert.ok(times.every((time, i) => i === 0 || time > times[i - 1]));
});

test('a silence among many points breaks the line', () => {
    const curve = longCurve(36000, () => -60);
    const gap = { t: curve.t.filter((t) => t < 1000 || t > 1100), v: curve.v.slice(0, 34999), breaks: [1005] };
    const [times, column] = columnsFor([gap], { from: 0, to: 3600 }, 500);
    const broken = column.indexOf(null);
    assert.ok(Math.abs(times[broken] - 1005) < 3600 / 500);
});

test('nothing at all gives empty columns', () => {
    const [times, column] = columnsFor([{ t: [], v: [] }], { from: 0, to: 10 }, 100);
    assert.equal(times.length + column.length, 0);
});
