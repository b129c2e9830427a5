// SPDX-License-Identifier: Apache-2.0
// The page's texts.

import { figure } from '../shared/tables.js';

/** Why a choice was made, by the name of its rule. */
const RULES = {
    'none inside': 'no device is inside its action area',
    entered: 'nobody was chosen, and this is the strongest of those inside their areas',
    led: 'its lead over the device chosen before has added up to the patience',
    left: 'the device chosen before has left its area',
    silent: 'the dongle of the device chosen before has fallen silent',
    blind: 'the radio could not hear for too long',
    removed: 'the device chosen before is not registered any more',
};

/** Seconds as a person reads them: 7.2 s, 1:05.0, 1:02:03.0. */
export function timeText(seconds, decimals = 1) {
    const tenths = Math.round(Math.max(seconds, 0) * 10 ** decimals) / 10 ** decimals;
    if (tenths < 60) return `${tenths.toFixed(decimals)} s`;
    const hours = Math.floor(tenths / 3600);
    const minutes = Math.floor(tenths / 60) % 60;
    const rest = (tenths % 60).toFixed(decimals).padStart(decimals > 0 ? decimals + 3 : 2, '0');
    return hours > 0 ? `${hours}:${String(minutes).padStart(2, '0')}:${rest}` : `${minutes}:${rest}`;
}

/** Seconds in a day. */
export const DAY = 86400;

/** A moment on an axis whose marks are so many seconds apart: where those are days, in days. */
export function axisText(seconds, step) {
    if (step > DAY) return `${Math.round(seconds / DAY)} d`;
    return timeText(seconds, step < 1 ? 1 : 0);
}

export function signalText(value, decimals = 0) {
    return value === null || value === undefined ? '\u2013' : `${figure(value, decimals)} dBm`;
}

export function nameOfDongle(dongles, index) {
    return dongles[index]?.name ?? 'none';
}

/** Nick name, port and address, each once. */
export function fullName(dongle) {
    return [...new Set([dongle.nick, dongle.port, dongle.address])].filter((part) => part).join(', ');
}

export function ruleText(decision) {
    return `${decision.rule}: ${RULES[decision.rule] ?? 'a rule that this page does not know'}`;
}

function thresholdText(decision, dongle) {
    return `${signalText(decision.threshold, 1)}${dongle?.ownThreshold === false ? ' (default)' : ''}`;
}

/** A runner-up: {runner: its index or -1, runnerSignal: dBm, distance: by how many dB it is behind, or null}. */
function runnerUpText({ runner, runnerSignal, distance }, dongles) {
    if (runner < 0) return 'none';
    const ahead = distance === null ? '' : `, ${figure(Math.abs(distance))} dB ${distance < 0 ? 'ahead' : 'behind'}`;
    return `${nameOfDongle(dongles, runner)} at ${signalText(runnerSignal, 1)}${ahead}`;
}

/**
 * A decision as [label, text] pairs.
 * @param now how it is at a moment later on: {signal, runner, runnerSignal, distance}; null: that is not asked
 */
export function decisionFacts(decision, dongles, now = null) {
    const facts = [
        ['Chosen', nameOfDongle(dongles, decision.dongle) + (decision.stale ? ' (stale: the radio cannot hear)' : '')],
        ['From', `${timeText(decision.from)} to ${timeText(decision.to)}`],
        ['Rule', ruleText(decision)],
    ];
    if (decision.dongle < 0) return facts;
    facts.push(['Signal', signalText(decision.signal, 1)]);
    if (now !== null) facts.push(['\u2013 now', signalText(now.signal, 1)]);
    facts.push(['Threshold', thresholdText(decision, dongles[decision.dongle])]);
    facts.push(['Runner-up', runnerUpText(decision, dongles)]);
    if (now !== null) facts.push(['\u2013 now', runnerUpText(now, dongles)]);
    return facts;
}

/** The same in one sentence, for screen readers. */
export function decisionSentence(decision, dongles) {
    return decisionFacts(decision, dongles)
        .map(([label, text]) => `${label}: ${text}`)
        .join('. ');
}

export function markText(mark, dongles) {
    const at = timeText(mark.at);
    if (mark.kind === 'silent') return `${at}: ${nameOfDongle(dongles, mark.dongle)} has fallen silent`;
    if (mark.kind === 'scan') return `${at}: scan ${mark.what}`;
    return `${at}: the radio is ${mark.what}`;
}

function count(number, one, many) {
    return `${number} ${number === 1 ? one : many}`;
}

/** What the recording holds, in a few words each. */
export function summary(model, agreed) {
    const readings = model.dongles.reduce((sum, dongle) => sum + dongle.raw.t.length, 0);
    const changes = model.decisions.filter((d, i) => i > 0 && d.dongle !== model.decisions[i - 1].dongle).length;
    const facts = [
        `${timeText(model.end)} long`,
        count(model.dongles.length, 'dongle', 'dongles'),
        count(readings, 'reading', 'readings'),
        count(changes, 'change of the decision', 'changes of the decision'),
    ];
    if (agreed !== null) facts.push(`right ${Math.round(agreed * 100)} % of the time`);
    return facts;
}
