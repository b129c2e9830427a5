// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { axisFor, chartsOf, shortest, tipOf, withoutFar } from '../../evaluate/model.js';
import { evaluation, rule, score, sweep } from './fixture.js';

const series = (name, main, x, y) => ({ name, main, points: [{ x, y }] });

test('there is a chart of wrong switches and one of the time to follow', () => {
    const charts = chartsOf(evaluation());
    assert.deepEqual(charts.map(({ xName }) => xName),
        ['wrong switches a minute', 'median time to follow a change, s']);
    assert.deepEqual(charts.map((chart) => chart.series.map(({ points }) => [points[0].x, points[0].y])),
        [[[2, 50], [2, 60]], [[1.5, 50], [1.5, 60]]]);
});

test('a chart is left out where none of its figures is known', () => {
    const rules = [rule('nearest', { medianSecondsToFollow: null })];
    assert.equal(chartsOf(evaluation({ rules })).length, 1);
    assert.deepEqual(chartsOf(evaluation({ rules: [rule('nearest', { rightPercent: null })] })), []);
});

test('a sweep of one setting is one curve in the order of its values', () => {
    const [chart] = chartsOf(evaluation(sweep({ name: 'patience', values: [3, 1, 2] })));
    const curve = chart.series.at(-1);
    assert.deepEqual([curve.name, curve.line, curve.shade], ['patience', true, null]);
    assert.deepEqual(curve.points.map(({ y }) => y), [43, 41, 42]);
    assert.match(curve.points[0].tip, /^patience 3: 43\.0 % right/);
});

test('of a grid each value of the first setting has a curve and a shade', () => {
    const [chart] = chartsOf(evaluation(
        sweep({ name: 'dwell', values: [0, 2, 4] }, { name: 'patience', values: [1, 3] })));
    const curves = chart.series.filter(({ line }) => line);
    assert.deepEqual(curves.map(({ name, shade }) => [name, shade]),
        [['dwell 0', 0], ['dwell 2', 0.5], ['dwell 4', 1]]);
    assert.match(curves[1].points[1].tip, /^dwell 2, patience 3: /);
});

test('a grid with one value of the first setting has a curve', () => {
    const [chart] = chartsOf(evaluation(sweep({ name: 'dwell', values: [1] }, { name: 'patience', values: [1, 3] })));
    assert.deepEqual(chart.series.filter(({ line }) => line).map(({ shade }) => shade), [0]);
});

test('what is far from what the page is about is named and not drawn', () => {
    const { near, far } = withoutFar([
        series('main', true, 2, 50), series('edge', false, 5, 35), series('right', false, 5.1, 50),
        series('below', false, 1, 34.9),
    ]);
    assert.deepEqual(near.map(({ name }) => name), ['main', 'edge']);
    assert.deepEqual(far, ['right', 'below']);
});

test('where the page is about nothing everything stays', () => {
    const { near, far } = withoutFar([series('one', false, 900, 0), series('two', false, 0, 90)]);
    assert.equal(near.length, 2);
    assert.deepEqual(far, []);
});

test('axes end at whole steps around all values', () => {
    assert.deepEqual(axisFor([0, 10.7]), { from: 0, to: 15 });
    assert.deepEqual(axisFor([44.7, 58]), { from: 40, to: 60 });
});

test('one value alone has an axis around it', () => {
    for (const value of [0, 50, 100, 33.3]) {
        const { from, to } = axisFor([value]);
        assert.ok(from <= value && value <= to && to > from, `${value}: ${from} to ${to}`);
    }
});

test('a tip has the figures in words, and dashes where there are none', () => {
    assert.equal(tipOf('median-7', score({ medianSecondsToFollow: null })),
        'median-7: 50.0 % right, 2.00 wrong switches/min, followed in \u2013 s, 1 of 3 changes never reached');
});

test('values of settings are as short as they are written', () => {
    assert.deepEqual([0.1 + 0.2, 5, -110, 1 / 3].map(shortest), ['0.3', '5', '-110', '0.333333']);
});
