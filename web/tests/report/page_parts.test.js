// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { shownAtFirst } from '../../report/choice.js';
import { readModel } from '../../report/model.js';
import { thresholdLines } from '../../report/paint.js';
import { colourOf, dashOf, faded } from '../../report/palette.js';
import { decisionAfter, factsAt, marksNear, nowAt } from '../../report/panel.js';
import { decision, dongle, pageData } from './fixture.js';

function crowd(count) {
    return Array.from({ length: count }, (_, i) => dongle({ address: String(i), raw: { t: [i], v: [-60] } }));
}

test('sixteen dongles are shown at first, and of more than that those that mattered', () => {
    const few = readModel(pageData({ dongles: crowd(16), decision: [], truth: null }));
    assert.equal(shownAtFirst(few).size, 16);
    const many = readModel(pageData({ dongles: crowd(17), decision: [decision({ dongle: 16 })], truth: null }));
    assert.equal(shownAtFirst(many).size, 16);
    assert.ok(shownAtFirst(many).has(16));
});

test('dongles of one colour have different dashes', () => {
    assert.equal(colourOf(0, false), colourOf(12, false));
    assert.notDeepEqual(dashOf(0), dashOf(12));
    assert.notEqual(colourOf(0, false), colourOf(0, true));
});

test('a faded colour keeps its channels', () => {
    assert.equal(faded('#1f6fd6', 0.5), 'rgba(31, 111, 214, 0.5)');
});

test('own thresholds have a line each, the default has one for all', () => {
    const { dongles } = readModel(pageData({ dongles: [dongle(), dongle({ own: false }), dongle({ own: false })] }));
    const lines = thresholdLines(dongles, { visible: new Set([0, 1, 2]) });
    assert.deepEqual(lines.map((line) => line.dongle), [0, null]);
});

test('a dongle that is switched off has no threshold line', () => {
    const { dongles } = readModel(pageData());
    assert.deepEqual(thresholdLines(dongles, { visible: new Set() }), []);
});

test('stepping goes from decision to decision and ends at both ends', () => {
    const { decisions } = readModel(pageData());
    assert.equal(decisionAfter(decisions, -1, 1), 0);
    assert.equal(decisionAfter(decisions, 0, 1), 2);
    assert.equal(decisionAfter(decisions, 6.9, 1), 7);
    assert.equal(decisionAfter(decisions, 8, 1), null);
    assert.equal(decisionAfter(decisions, 8, -1), 2);
    assert.equal(decisionAfter(decisions, 1, -1), null);
});

test('the facts of a moment have the truth and what happened close by', () => {
    const facts = factsAt(readModel(pageData()), 7.1, 0.2);
    assert.deepEqual(facts.filter(([label]) => label === 'Truth'), [['Truth', 'BT:Kitchen']]);
    assert.deepEqual(facts.filter(([label]) => label === 'Event'), [['Event', '7.0 s: Bar has fallen silent']]);
});

test('what happened farther away than the reach is not told', () => {
    const { marks } = readModel(pageData());
    assert.equal(marksNear(marks, 7.5, 0.5).length, 2);
    assert.equal(marksNear(marks, 7.5, 0.49).length, 0);
});

test('the runner-up of now is the strongest other level', () => {
    const level = (value) => ({ level: { t: [2000], v: [value] } });
    const dongles = [dongle(level(-600)), dongle(level(-700)), dongle(level(-655)), dongle()];
    const model = readModel(pageData({ dongles }));
    assert.deepEqual(nowAt(model, { dongle: 0 }, 3), { signal: -60, runner: 2, runnerSignal: -65.5, distance: 5.5 });
    assert.deepEqual(nowAt(model, { dongle: 3 }, 3), { signal: null, runner: 0, runnerSignal: -60, distance: null });
});
