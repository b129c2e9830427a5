// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { agreement, merged, readModel, signalScale, stretches } from '../../report/model.js';
import { pageData } from './fixture.js';

test('curves are in seconds and dBm', () => {
    const [bar] = readModel(pageData()).dongles;
    assert.deepEqual([...bar.raw.t], [1, 2]);
    assert.deepEqual([...bar.raw.v], [-60, -62]);
    assert.deepEqual([...bar.level.v], [-60]);
});

test('a silence breaks the smoothed line and not the raw readings', () => {
    const [bar] = readModel(pageData()).dongles;
    assert.deepEqual([...bar.smoothed.breaks], [7]);
    assert.equal(bar.raw.breaks, undefined);
});

test('a dongle without a nick name goes by its port, and one without a port by its address', () => {
    const data = pageData();
    assert.equal(readModel(data).dongles[1].name, 'BT:Kitchen');
    data.dongles[1].port = '';
    assert.equal(readModel(data).dongles[1].name, '02:4E:43:00:00:05');
});

test('a decision holds until the next one, the last one to the end', () => {
    const { decisions } = readModel(pageData());
    assert.deepEqual(decisions.map(({ from, to }) => [from, to]), [[0, 2], [2, 7], [7, 10]]);
});

test('a stretch of no length is left out, and none reaches beyond the recording', () => {
    const list = stretches([{ at: 1000 }, { at: 1000 }, { at: 4000 }, { at: 12000 }], 10);
    assert.deepEqual(list.map(({ from, to }) => [from, to]), [[1, 4], [4, 10]]);
});

test('neighbours with one dongle are one stretch, those with a gap are not', () => {
    const list = [{ from: 0, to: 1, dongle: 2 }, { from: 1, to: 2, dongle: 2 }, { from: 3, to: 4, dongle: 2 }];
    assert.deepEqual(merged(list).map(({ from, to }) => [from, to]), [[0, 2], [3, 4]]);
});

test('what happened is in order of time', () => {
    const { marks } = readModel(pageData());
    assert.deepEqual(marks.map(({ at, kind }) => [at, kind]), [[0, 'scan'], [7, 'silent'], [8, 'radio'], [9, 'radio']]);
});

test('the radio is blind from losing its power to having it again', () => {
    assert.deepEqual(readModel(pageData()).blind.map(({ from, to }) => [from, to]), [[8, 9]]);
});

test('an empty recording has a length that can be drawn', () => {
    const empty = readModel(pageData({ end: 0, dongles: [], decision: [], truth: null, radio: [], scans: [] }));
    assert.ok(empty.whole.to > empty.whole.from);
    assert.equal(empty.truth, null);
    assert.deepEqual(signalScale(empty.dongles), { low: -100, high: -30 });
});

test('the scale has room around the signals and passes over what no reading can be', () => {
    const curve = (values) => ({ v: values });
    const scale = (...values) => signalScale([{ raw: curve(values), smoothed: curve([-60]) }]);
    assert.deepEqual(scale(-71, -58, -2147483648, -128, 21), { low: -75, high: -55 });
    assert.deepEqual(scale(-127, 20), { low: -130, high: 25 });
});

test('the agreement is the share of the time of the truth', () => {
    const { decisions, truth } = readModel(pageData());
    assert.equal(agreement(decisions, truth), 0.3);
});

test('without a truth there is no agreement', () => {
    assert.equal(agreement(readModel(pageData()).decisions, null), null);
    assert.equal(agreement([], []), null);
});
