// SPDX-License-Identifier: Apache-2.0
// Making elements. Texts become text nodes, so a name from the air is never read as markup.

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
