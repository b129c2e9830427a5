// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { decodeCurve, decodeTimes, decodeValues } from '../../report/columns.js';

test('times are milliseconds as differences', () => {
    assert.deepEqual([...decodeTimes([0, 1, 499, 0])], [0, 0.001, 0.5, 0.5]);
});

test('values are differences in the unit of their scale', () => {
    assert.deepEqual([...decodeValues([-700, 5, -10], 10)], [-70, -69.5, -70.5]);
});

test('differences add up exactly over a long recording', () => {
    assert.equal(decodeTimes(new Array(36000).fill(100)).at(-1), 3600);
});

test('a curve without readings has empty columns', () => {
    const curve = decodeCurve({ t: [], v: [] });
    assert.equal(curve.t.length + curve.v.length, 0);
});

test('a curve is as long as the shorter of its columns', () => {
    const curve = decodeCurve({ t: [0, 10, 10], v: [-70, 1] });
    assert.equal(curve.t.length, 2);
    assert.equal(curve.v.length, 2);
});
