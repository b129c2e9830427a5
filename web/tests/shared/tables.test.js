// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { figure } from '../../shared/tables.js';

test('a negative number has a minus sign', () => {
    assert.equal(figure(-3.26, 1), '\u22123.3');
    assert.equal(figure(3, 0), '3');
});

test('what lies in the middle goes to the even digit, and nothing else does', () => {
    assert.deepEqual([16.25, 8.75, -3.25, 0.45, 0.35].map((value) => figure(value)),
        ['16.2', '8.8', '\u22123.2', '0.5', '0.3']);
    assert.deepEqual([0.5, 1.5, 2.5].map((value) => figure(value, 0)), ['0', '2', '2']);
});

test('where there is no number there is a dash', () => {
    assert.equal(figure(null), '\u2013');
    assert.equal(figure(undefined, 2), '\u2013');
    assert.equal(figure(0), '0.0');
});
