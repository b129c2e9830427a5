// SPDX-License-Identifier: Apache-2.0
// Numbers and tables as both pages show them.

import { element } from './dom.js';

/** Digits that tell whether a number lies in the middle between two that can be shown. */
const MORE = 40;

/** Rounds as printf does, so that page and terminal agree: a value in the middle goes to the even digit. */
function rounded(value, decimals) {
    const text = value.toFixed(decimals);
    const exact = value.toFixed(decimals + MORE);
    const between = /^50*$/.test(exact.slice(-MORE));
    return between && Number(text.at(-1)) % 2 === 1 ? exact.slice(0, -MORE).replace(/\.$/, '') : text;
}

/** A number with a proper minus sign and so many decimals; a dash where there is none. */
export function figure(value, decimals = 1) {
    return value === null || value === undefined ? '\u2013' : rounded(value, decimals).replace('-', '\u2212');
}

/** A table of texts; cells of the columns in `numbers` are flush right. */
export function textTable(head, rows, numbers = []) {
    const cell = (kind, more) => (text, column) =>
        element(kind, numbers.includes(column) ? { ...more, class: 'number' } : more, text);
    return element('table', {},
        element('thead', {}, element('tr', {}, ...head.map(cell('th', { scope: 'col' })))),
        element('tbody', {}, ...rows.map((row) => element('tr', {}, ...row.map(cell('td', {}))))));
}

/** @param settings {name, value, unit} of each setting of the decision */
export function settingTable(settings) {
    const rows = settings.map(({ name, value, unit }) => [name, String(value), unit]);
    return textTable(['Setting', 'Value', 'Unit'], rows, [1]);
}
