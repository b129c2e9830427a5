// SPDX-License-Identifier: Apache-2.0
// The table of dongles: switches them on and off, and says how each was heard at the moment that is pointed at.

import { byId, drawing, element } from '../shared/dom.js';
import { figure } from '../shared/tables.js';
import { colourOf, dashOf } from './palette.js';
import { PRESENT, valueAt } from './search.js';
import { stretchAt } from './stretches.js';
import { fullName, signalText } from './texts.js';

function head() {
    const cells = [
        ['', ''], ['Dongle', ''], ['Port', ''], ['Address', 'address'], ['Threshold', 'number'], ['Raw', 'number'],
        ['Smoothed', 'number'], ['Level', 'number'],
    ];
    const row = cells.map(([text, kind]) => element('th', { class: kind }, text));
    return element('thead', {}, element('tr', {}, ...row));
}

function toggled(set, index) {
    const result = new Set(set);
    if (!result.delete(index)) result.add(index);
    return result;
}

/** Nothing is said twice in a row. */
function otherThan(text, name) {
    return text === name ? '' : text;
}

function makeRow(dongle, store) {
    const dashes = dashOf(dongle.index).join(' ');
    const swatch = drawing('line', { x1: 0, y1: 6, x2: 26, y2: 6, 'stroke-width': 4, 'stroke-dasharray': dashes });
    const button = element('button', { type: 'button', 'aria-label': `Show ${fullName(dongle)}` },
        drawing('svg', { 'aria-hidden': 'true', viewBox: '0 0 26 12' }, swatch));
    const values = ['raw', 'smoothed', 'level'].map(() => element('td', { class: 'number' }, '\u2013'));
    const known = dongle.port !== '';
    const threshold = `${figure(dongle.threshold, 0)} dBm${dongle.ownThreshold ? '' : ' (default)'}`;
    const row = element('tr', {}, element('td', {}, button), element('td', { class: 'name' }, dongle.name),
        element('td', {}, known ? otherThan(dongle.port, dongle.name) : 'not registered'),
        element('td', { class: 'address' }, otherThan(dongle.address, dongle.name)),
        element('td', { class: 'number' }, known ? threshold : '\u2013'), ...values);
    button.addEventListener('click', () => store.set({ visible: toggled(store.get().visible, dongle.index) }));
    row.addEventListener('pointerenter', () => store.set({ focus: dongle.index }));
    row.addEventListener('pointerleave', () => store.set({ focus: null }));
    button.addEventListener('focus', () => store.set({ focus: dongle.index }));
    button.addEventListener('blur', () => store.set({ focus: null }));
    return { dongle, row, button, swatch, values };
}

function showLook(rows, { visible, dark }) {
    for (const { dongle, row, button, swatch } of rows) {
        const on = visible.has(dongle.index);
        button.setAttribute('aria-pressed', String(on));
        row.classList.toggle('off', !on);
        swatch.setAttribute('stroke', colourOf(dongle.index, dark));
        swatch.setAttribute('opacity', on ? '1' : '0.25');
    }
}

function showValues(rows, model, { cursor }) {
    if (cursor === null) return;
    const chosen = model.decisions[stretchAt(model.decisions, cursor)]?.dongle ?? -1;
    for (const { dongle, row, values } of rows) {
        row.classList.toggle('chosen', dongle.index === chosen);
        values[0].textContent = signalText(valueAt(dongle.raw, cursor, PRESENT));
        values[1].textContent = signalText(valueAt(dongle.smoothed, cursor, PRESENT));
        values[2].textContent = signalText(valueAt(dongle.level, cursor, PRESENT), 1);
    }
}

export function attachLegend(model, store) {
    const rows = model.dongles.map((dongle) => makeRow(dongle, store));
    byId('legend').replaceChildren(head(), element('tbody', {}, ...rows.map(({ row }) => row)));
    byId('all-on').addEventListener('click', () => store.set({ visible: new Set(rows.map((_, index) => index)) }));
    byId('all-off').addEventListener('click', () => store.set({ visible: new Set() }));
    store.on(['visible', 'dark'], (state) => showLook(rows, state));
    store.on(['cursor'], (state) => showValues(rows, model, state));
    showLook(rows, store.get());
}
