// SPDX-License-Identifier: Apache-2.0
// The bands below the curves: the decision, the truth, and what happened to the radio and the dongles.

import { byId, drawing } from '../shared/dom.js';
import { colourOf } from './palette.js';
import { span } from './range.js';
import { drawable } from './stretches.js';
import { nameOfDongle } from './texts.js';

/** The least width of a piece that is drawn by itself, and the room that a letter of its name takes, in pixels. */
const LEAST_PIXELS = 1;
const PIXELS_PER_LETTER = 7.5;

function fillOf(piece, list, state) {
    if (piece.many > 0) return state.colours.quiet;
    const { dongle } = list[piece.index];
    return dongle < 0 ? state.colours.none : colourOf(dongle, state.dark);
}

function nameFor(piece, list, model, pixels) {
    if (piece.many > 0) return '';
    const name = nameOfDongle(model.dongles, list[piece.index].dongle);
    const room = Math.floor((pixels - 8) / PIXELS_PER_LETTER);
    if (room >= [...name].length) return name;
    return room >= 4 ? `${[...name].slice(0, room - 1).join('')}…` : '';
}

/** One stretch of a band as a bar with its name. */
function bar(piece, list, model, state, place) {
    const left = place.x(piece.from);
    const width = Math.max(place.x(piece.to) - left, 0.5);
    const stretch = list[piece.index];
    const parts = [drawing('rect', {
        x: left, y: 0, width, height: place.height, fill: fillOf(piece, list, state), stroke: 'none',
        'fill-opacity': stretch.stale && piece.many === 0 ? 0.4 : 1,
    })];
    if (width > 3) {
        const fill = state.colours.ground;
        parts.push(drawing('rect', { x: left + width - 1, y: 0, width: 1, height: place.height, fill }));
    }
    const name = nameFor(piece, list, model, width);
    if (name) {
        const colour = stretch.dongle < 0 || stretch.stale ? state.colours.text : state.colours['on-colour'];
        const [x, y] = [left + width / 2, place.height / 2 + 4];
        parts.push(drawing('text', { x, y, 'text-anchor': 'middle', fill: colour }, name));
    }
    return parts;
}

function placeIn(svg, range) {
    const width = svg.clientWidth;
    const shown = span(range);
    return {
        width,
        height: svg.clientHeight,
        x: (time) => Math.min(Math.max(((time - range.from) / shown) * width, -2), width + 2),
    };
}

function drawBand(svg, list, model, state) {
    const place = placeIn(svg, state.range);
    const least = (span(state.range) / Math.max(place.width, 1)) * LEAST_PIXELS;
    svg.replaceChildren(
        ...drawable(list, state.range, least).flatMap((piece) => bar(piece, list, model, state, place)));
}

/** Symbols of what happened: a cross for a silence, a bar for the radio, a tick for the scan. */
function symbol(mark, x, height, state) {
    const middle = height / 2;
    if (mark.kind === 'silent') {
        const path = `M${x - 4} ${middle - 4}L${x + 4} ${middle + 4}M${x - 4} ${middle + 4}L${x + 4} ${middle - 4}`;
        const stroke = colourOf(mark.dongle, state.dark);
        return drawing('path', { d: path, stroke, 'stroke-width': 2.2, fill: 'none' });
    }
    const scan = mark.kind === 'scan';
    const [y, width] = scan ? [middle, 1.5] : [0, 3];
    const fill = state.colours[scan ? 'quiet' : 'alarm'];
    return drawing('rect', { x: x - width / 2, y, width, height: height - y, fill });
}

function drawMarks(svg, model, state) {
    const place = placeIn(svg, state.range);
    const drawn = new Set();
    const line = { x: 0, y: place.height / 2 - 0.5, width: place.width, height: 1, fill: state.colours.grid };
    const symbols = [drawing('rect', line)];
    for (const mark of model.marks) {
        if (mark.at < state.range.from || mark.at > state.range.to) continue;
        if (mark.kind === 'silent' && !state.visible.has(mark.dongle)) continue;
        const x = place.x(mark.at);
        const key = `${mark.kind} ${mark.dongle} ${Math.round(x)}`;
        if (drawn.has(key)) continue;
        drawn.add(key);
        symbols.push(symbol(mark, x, place.height, state));
    }
    svg.replaceChildren(...symbols);
}

/** Draws the bands, and draws them again when something changes. */
export function attachBands(model, store) {
    const svgOf = (id) => byId(id).querySelector('svg');
    byId('truth-band').hidden = model.truth === null;
    const draw = (state) => {
        drawBand(svgOf('decision-band'), model.decisions, model, state);
        if (model.truth !== null) drawBand(svgOf('truth-band'), model.truth, model, state);
        drawMarks(svgOf('mark-band'), model, state);
    };
    store.on(['range', 'visible', 'size', 'dark', 'colours'], draw);
    draw(store.get());
}
