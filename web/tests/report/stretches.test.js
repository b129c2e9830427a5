// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { drawable, stretchAt } from '../../report/stretches.js';

const list = [{ from: 0, to: 2 }, { from: 2, to: 5 }, { from: 7, to: 9 }];

test('a stretch has its beginning and not its end', () => {
    assert.deepEqual([0, 1.999, 2, 4.999, 5, 7, 9].map((time) => stretchAt(list, time)), [0, 0, 1, 1, -1, 2, -1]);
});

test('before the first stretch there is none', () => {
    assert.equal(stretchAt(list, -1), -1);
    assert.equal(stretchAt([], 0), -1);
});

test('only what is in the range is drawn', () => {
    assert.deepEqual(drawable(list, { from: 2, to: 7 }, 0.1).map((piece) => piece.index), [1]);
    assert.deepEqual(drawable(list, { from: 1.9, to: 7.1 }, 0.1).map((piece) => piece.index), [0, 1, 2]);
});

test('what is too narrow to be seen is put together, and bounded', () => {
    const many = Array.from({ length: 10000 }, (_, i) => ({ from: i * 0.01, to: (i + 1) * 0.01 }));
    const pieces = drawable(many, { from: 0, to: 100 }, 1);
    assert.ok(pieces.length <= 100);
    assert.equal(pieces.reduce((sum, piece) => sum + piece.many, 0), 10000);
    assert.equal(pieces.at(-1).to, 100);
});

test('a wide stretch stays itself beside narrow ones', () => {
    const mixed = [{ from: 0, to: 0.1 }, { from: 0.1, to: 5 }, { from: 5, to: 5.1 }];
    assert.deepEqual(drawable(mixed, { from: 0, to: 10 }, 1).map((piece) => piece.many), [1, 0, 1]);
});
