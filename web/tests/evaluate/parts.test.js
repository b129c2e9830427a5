// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { colourOfSeries } from '../../evaluate/chart.js';
import { cellsOf } from '../../evaluate/figures.js';
import { placeAfter } from '../../evaluate/marks.js';
import { placeNames } from '../../evaluate/names.js';
import { score } from './fixture.js';

const size = { width: 400, height: 300 };
const state = { dark: false, colours: { accent: 'blue', other: 'brown' } };

test('a name stands to the right of its point', () => {
    assert.deepEqual(placeNames([{ x: 100, y: 100, length: 50 }], [{ x: 100, y: 100 }], size), [{ x: 109, y: 100 }]);
});

test('a name that would leave the plot stands to the left of its point', () => {
    const [name] = placeNames([{ x: 395, y: 100, length: 50 }], [{ x: 395, y: 100 }], size);
    assert.deepEqual(name, { x: 336, y: 100 });
});

test('two names beside one point do not lie on one another', () => {
    const point = { x: 100, y: 100, length: 50 };
    const [first, second] = placeNames([point, point], [point, point], size);
    assert.ok(Math.abs(first.y - second.y) >= 13 || Math.abs(first.x - second.x) >= 50);
});

test('a name keeps clear of other points and of the edges', () => {
    const names = [{ x: 100, y: 2, length: 50 }];
    const [{ y }] = placeNames(names, [{ x: 100, y: 2 }, { x: 130, y: 8 }, { x: 70, y: 8 }], size);
    assert.ok(y >= 8 + 13, String(y));
});

test('where everything is taken a name stands beside its point all the same', () => {
    const points = Array.from({ length: 300 }, (_, y) => [{ x: 120, y }, { x: 80, y }]).flat();
    assert.deepEqual(placeNames([{ x: 100, y: 100, length: 50 }], points, size), [{ x: 109, y: 100 }]);
});

test('keys go from mark to mark and end at both ends', () => {
    assert.deepEqual(['ArrowRight', 'ArrowDown', 'ArrowLeft', 'ArrowUp', 'Home', 'End', 'x'].map((key) =>
        placeAfter(key, 3, 9)), [4, 4, 2, 2, 0, 8, null]);
    assert.equal(placeAfter('ArrowLeft', 0, 9), 0);
    assert.equal(placeAfter('ArrowRight', 8, 9), 8);
});

test('what the page is about has a colour of its own, and a family has shades from blue to red', () => {
    assert.equal(colourOfSeries({ shade: null, main: true }, state), 'blue');
    assert.equal(colourOfSeries({ shade: null, main: false }, state), 'brown');
    assert.equal(colourOfSeries({ shade: 0, main: true }, state), 'hsl(215, 75%, 42%)');
    assert.equal(colourOfSeries({ shade: 1, main: true }, { ...state, dark: true }), 'hsl(365, 75%, 68%)');
});

test('the cells of a score have the decimals of the table on the terminal', () => {
    assert.deepEqual(cellsOf(score({ ninetiethSecondsToFollow: null })),
        ['50.0', '60.0', '2.00', '1.5', '\u2013', '3', '1', '2.0']);
});
