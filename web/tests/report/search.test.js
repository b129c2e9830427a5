// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { lowerBound, upperBound, valueAt } from '../../report/search.js';

const times = [1, 2, 2, 3];

test('the lower bound is the first that is not before', () => {
    assert.deepEqual([0, 1, 2, 2.5, 3, 4].map((time) => lowerBound(times, time)), [0, 0, 1, 3, 3, 4]);
});

test('the upper bound is the first that is after', () => {
    assert.deepEqual([0, 1, 2, 2.5, 3, 4].map((time) => upperBound(times, time)), [0, 1, 3, 3, 4, 4]);
});

test('nothing is found in nothing', () => {
    assert.equal(lowerBound([], 1), 0);
    assert.equal(upperBound([], 1), 0);
});

test('a value holds from its moment on', () => {
    const curve = { t: [1, 2], v: [-60, -70] };
    assert.equal(valueAt(curve, 0.999, 5), null);
    assert.equal(valueAt(curve, 1, 5), -60);
    assert.equal(valueAt(curve, 2, 5), -70);
});

test('a value is not shown when it is older than asked for', () => {
    const curve = { t: [1], v: [-60] };
    assert.equal(valueAt(curve, 6, 5), -60);
    assert.equal(valueAt(curve, 6.001, 5), null);
});
