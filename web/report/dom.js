// SPDX-License-Identifier: Apache-2.0
// Making elements. Texts become text nodes: nothing that was heard is ever read as markup.

const SVG = 'http://www.w3.org/2000/svg';

function filled(node, attributes, children) {
    for (const [name, value] of Object.entries(attributes)) node.setAttribute(name, value);
    node.append(...children);
    return node;
}

export function element(name, attributes = {}, ...children) {
    return filled(document.createElement(name), attributes, children);
}

export function drawing(name, attributes = {}, ...children) {
    return filled(document.createElementNS(SVG, name), attributes, children);
}

export function byId(id) {
    return document.getElementById(id);
}

/** A table of texts; cells of the columns in `numbers` stand to the right. */
export function textTable(head, rows, numbers = []) {
    const cell = (kind) => (text, column) => element(kind, numbers.includes(column) ? { class: 'number' } : {}, text);
    return element('table', {},
        element('thead', {}, element('tr', {}, ...head.map(cell('th')))),
        element('tbody', {}, ...rows.map((row) => element('tr', {}, ...row.map(cell('td'))))));
}
