// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { LEAST_SPAN, fitInto, panned, pinched, span, zoomed } from '../../report/range.js';

const whole = { from: 0, to: 100 };

test('zooming in keeps the moment under the pointer in its place', () => {
    assert.deepEqual(zoomed(whole, 0.5, 25, whole), { from: 12.5, to: 62.5 });
});

test('zooming out ends at the whole', () => {
    assert.deepEqual(zoomed({ from: 40, to: 60 }, 50, 45, whole), whole);
});

test('zooming in ends at the least span', () => {
    assert.equal(span(zoomed({ from: 40, to: 60 }, 0.0001, 45, whole)), LEAST_SPAN);
});

test('a recording shorter than the least span is shown whole', () => {
    const short = { from: 0, to: 0.2 };
    assert.deepEqual(zoomed(short, 0.1, 0.1, short), short);
});

test('panning stops at both ends and keeps the width', () => {
    const range = { from: 40, to: 60 };
    assert.deepEqual(panned(range, 40, whole), { from: 80, to: 100 });
    assert.deepEqual(panned(range, 41, whole), { from: 80, to: 100 });
    assert.deepEqual(panned(range, -41, whole), { from: 0, to: 20 });
});

test('a range wider than the whole becomes the whole', () => {
    assert.deepEqual(fitInto({ from: -10, to: 200 }, whole), whole);
});

test('two fingers keep the moments under them', () => {
    const range = pinched({ from: 20, to: 60 }, [0.25, 0.75], [0, 1], whole);
    assert.deepEqual(range, { from: 30, to: 50 });
});

test('two fingers that move together pan', () => {
    const range = pinched({ from: 20, to: 60 }, [0.25, 0.5], [0.5, 0.75], whole);
    assert.deepEqual(range, { from: 10, to: 50 });
});

test('two fingers in one place, or that have crossed, change nothing', () => {
    const range = { from: 20, to: 60 };
    assert.equal(pinched(range, [0.2, 0.8], [0.5, 0.505], whole), range);
    assert.equal(pinched(range, [0.2, 0.8], [0.8, 0.2], whole), range);
});
