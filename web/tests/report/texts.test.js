// SPDX-License-Identifier: Apache-2.0
import assert from 'node:assert/strict';
import test from 'node:test';

import { readModel } from '../../report/model.js';
import {
    axisText, decisionFacts, decisionSentence, fullName, markText, ruleText, signalText, summary, timeText,
} from '../../report/texts.js';
import { decision, pageData } from './fixture.js';

test('times change their form at a minute and at an hour', () => {
    assert.equal(timeText(59.94), '59.9 s');
    assert.equal(timeText(59.95), '1:00.0');
    assert.equal(timeText(3599.94), '59:59.9');
    assert.equal(timeText(3599.95), '1:00:00.0');
});

test('times without decimals are whole', () => {
    assert.equal(timeText(5, 0), '5 s');
    assert.equal(timeText(65, 0), '1:05');
});

test('an axis has tenths where its marks are close, and days where they are more than one apart', () => {
    assert.equal(axisText(65.5, 0.5), '1:05.5');
    assert.equal(axisText(65, 1), '1:05');
    assert.equal(axisText(172800, 86400), '48:00:00');
    assert.equal(axisText(172800, 172800), '2 d');
    assert.equal(axisText(86400 * 11000, 86400 * 1000), '11000 d');
});

test('no signal is a dash', () => {
    assert.equal(signalText(null), '\u2013');
    assert.equal(signalText(-60), '\u221260 dBm');
});

test('a full name says nothing twice', () => {
    assert.equal(fullName({ nick: '', port: 'X', address: 'X' }), 'X');
    assert.equal(fullName({ nick: 'Bar', port: 'BT:Bar', address: '02' }), 'Bar, BT:Bar, 02');
});

test('a decision is told with its rule, signal, threshold, runner-up and distance', () => {
    const { dongles } = readModel(pageData());
    const facts = new Map(decisionFacts({
        ...decision({ dongle: 0, rule: 'led', signal: -58, threshold: -65, runner: 1, runnerSignal: -64, distance: 6 }),
        from: 2, to: 7,
    }, dongles));
    assert.equal(facts.get('Chosen'), 'Bar');
    assert.match(facts.get('Rule'), /^led: its lead/);
    assert.equal(facts.get('Signal'), '\u221258.0 dBm');
    assert.equal(facts.get('Threshold'), '\u221265.0 dBm');
    assert.equal(facts.get('Runner-up'), 'BT:Kitchen at \u221264.0 dBm, 6.0 dB behind');
});

test('a runner-up that is stronger is ahead', () => {
    const { dongles } = readModel(pageData());
    const entry = decision({ dongle: 0, runner: 1, runnerSignal: -55, distance: -3 });
    assert.ok(decisionSentence({ ...entry, from: 0, to: 1 }, dongles).includes('3.0 dB ahead'));
});

test('a default threshold and a stale choice are marked', () => {
    const { dongles } = readModel(pageData());
    const sentence = decisionSentence({ ...decision({ dongle: 1, stale: true }), from: 0, to: 1 }, dongles);
    assert.match(sentence, /\(default\)/);
    assert.match(sentence, /stale/);
});

test('of nobody chosen only the reason is told', () => {
    const { dongles } = readModel(pageData());
    const labels = decisionFacts({ ...decision(), from: 0, to: 1 }, dongles).map(([label]) => label);
    assert.deepEqual(labels, ['Chosen', 'From', 'Rule']);
});

test('a rule that the page does not know is named all the same', () => {
    assert.match(ruleText({ rule: 'moon' }), /^moon: /);
});

test('each kind of event has its words', () => {
    const { dongles, marks } = readModel(pageData());
    assert.deepEqual(marks.map((mark) => markText(mark, dongles)), [
        '0.0 s: scan started', '7.0 s: Bar has fallen silent', '8.0 s: the radio is powered off',
        '9.0 s: the radio is powered on',
    ]);
});

test('the summary counts changes of the device', () => {
    const facts = summary(readModel(pageData()), 0.3);
    assert.deepEqual(facts, [
        '10.0 s long', '2 dongles', '2 readings', '2 changes of the decision', 'right 30 % of the time',
    ]);
});
