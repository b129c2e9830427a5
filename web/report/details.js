// SPDX-License-Identifier: Apache-2.0
// Lists below the chart: every decision, every event, and the settings.

import { byId, element } from '../shared/dom.js';
import { figure, settingTable, textTable } from '../shared/tables.js';
import { markText, nameOfDongle, signalText, timeText } from './texts.js';

/** More rows than these make a page slow, and nobody reads them. */
const MOST_ROWS = 2000;

function decisionRow(decision, dongles) {
    const runner = decision.runner < 0 ? '' : nameOfDongle(dongles, decision.runner);
    const chosen = decision.dongle >= 0;
    return [
        timeText(decision.from),
        timeText(decision.to - decision.from),
        nameOfDongle(dongles, decision.dongle) + (decision.stale ? ' (stale)' : ''),
        decision.rule,
        chosen ? signalText(decision.signal, 1) : '',
        chosen ? signalText(decision.threshold, 1) : '',
        runner,
        decision.distance === null ? '' : `${figure(decision.distance)} dB`,
    ];
}

function decisionTable(model, list) {
    const head = ['At', 'For', 'Chosen', 'Rule', 'Signal', 'Threshold', 'Runner-up', 'Lead'];
    return textTable(head, list.map((decision) => decisionRow(decision, model.dongles)), [0, 1, 4, 5, 7]);
}

function eventList(model, list) {
    return element('ul', {}, ...list.map((mark) => element('li', {}, markText(mark, model.dongles))));
}

/** Fills the part when it is opened for the first time. */
function attachPart(id, title, list, make) {
    const part = byId(id);
    part.querySelector('summary').textContent = title;
    part.addEventListener('toggle', () => {
        const place = part.querySelector('.scroll');
        if (!part.open || place.hasChildNodes()) return;
        place.append(make(list.slice(0, MOST_ROWS)));
        if (list.length > MOST_ROWS) place.append(element('p', {}, `and ${list.length - MOST_ROWS} more`));
    });
}

export function attachDetails(model) {
    const { decisions, marks, settings } = model;
    attachPart('decision-details', `Decisions (${decisions.length})`, decisions, (list) => decisionTable(model, list));
    attachPart('mark-details', `Silences, radio and scan (${marks.length})`, marks, (list) => eventList(model, list));
    attachPart('setting-details', 'Settings of the decision', settings, settingTable);
}
