// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { makeStore } from '../../shared/store.js';

test('many changes are told once, to those who asked for one of them', () => {
    const scheduled = [];
    const store = makeStore({ a: 1, b: 1, c: 1 }, (tell) => scheduled.push(tell));
    const told = [];
    store.on(['a', 'b'], (state) => told.push(`ab ${state.a} ${state.b}`));
    store.on(['c'], () => told.push('c'));
    store.set({ a: 2 });
    store.set({ b: 3 });
    scheduled.forEach((tell) => tell());
    assert.deepEqual(told, ['ab 2 3']);
    assert.equal(scheduled.length, 1);
});

test('a value that stays the same is no change', () => {
    const scheduled = [];
    const store = makeStore({ a: 1 }, (tell) => scheduled.push(tell));
    store.set({ a: 1 });
    assert.equal(scheduled.length, 0);
});
