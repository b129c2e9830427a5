// SPDX-License-Identifier: Apache-2.0
// Tables of the figures: of all recordings, of each one, and of the settings that were tried.

import { element } from '../shared/dom.js';
import { figure, textTable } from '../shared/tables.js';
import { shortest } from './model.js';

const COLUMNS = [
    ['right %', (score) => figure(score.rightPercent)],
    ['of answered %', (score) => figure(score.rightOfAnsweredPercent)],
    ['wrong/min', (score) => figure(score.wrongSwitchesPerMinute, 2)],
    ['median s', (score) => figure(score.medianSecondsToFollow)],
    ['90th s', (score) => figure(score.ninetiethSecondsToFollow)],
    ['changes', (score) => String(score.changes)],
    ['never', (score) => String(score.neverReached)],
    ['minutes', (score) => figure(score.minutes)],
];

/** The cells of a score, in the order of the columns. */
export function cellsOf(score) {
    return COLUMNS.map(([, textOf]) => textOf(score));
}

function scoreTable(names, rows) {
    const head = [...names, ...COLUMNS.map(([name]) => name)];
    return textTable(head, rows, head.map((_, index) => index).slice(1));
}

/** Rules and their figures. @param scoreOf which score of a rule */
export function ruleTable(data, scoreOf) {
    const table = scoreTable(['rule'], data.rules.map((rule) => [rule.rule, ...cellsOf(scoreOf(rule))]));
    const place = data.rules.findIndex(({ rule }) => rule === data.main);
    if (place >= 0) table.querySelectorAll('tbody tr')[place].classList.add('main');
    return table;
}

export function sweepTable(data) {
    const names = data.sweeps.map(({ name, unit }) => (unit ? `${name} ${unit}` : name));
    return scoreTable(names, data.points.map(({ values, total }) => [...values.map(shortest), ...cellsOf(total)]));
}

/** A part for each recording, which is filled when it is opened for the first time. */
export function recordingParts(data) {
    return data.recordings.map((name, place) => {
        const box = element('div', { class: 'scroll' });
        const part = element('details', {}, element('summary', {}, name), box);
        part.addEventListener('toggle', () => {
            if (part.open && !box.hasChildNodes()) box.append(ruleTable(data, ({ recordings }) => recordings[place]));
        });
        return part;
    });
}
