// SPDX-License-Identifier: Apache-2.0
// What is painted on the plot's canvas beside the curves: where the radio could not hear, which curve was the chosen
// one, and the thresholds.

import { figure } from '../shared/tables.js';
import { colourOf, faded } from './palette.js';
import { lowerBound } from './search.js';

/** Shades the time in which the radio could not hear. */
export function paintBlind(plot, model, state) {
    const { ctx, bbox } = plot;
    ctx.save();
    ctx.fillStyle = state.colours.blind;
    for (const stretch of model.blind) {
        const from = Math.max(stretch.from, state.range.from);
        const to = Math.min(stretch.to, state.range.to);
        if (to <= from) continue;
        const left = plot.valToPos(from, 'x', true);
        ctx.fillRect(left, bbox.top, Math.max(plot.valToPos(to, 'x', true) - left, 1), bbox.height);
    }
    ctx.restore();
}

/** A broad line along what was drawn of a curve between two moments. */
function paintAlong(plot, column, stretch) {
    const { ctx, data } = plot;
    const [times] = data;
    let begun = false;
    ctx.beginPath();
    for (let i = lowerBound(times, stretch.from); i < times.length && times[i] <= stretch.to; ++i) {
        const value = data[column][i];
        if (value === undefined) continue;
        if (value === null) {
            begun = false;
            continue;
        }
        const [x, y] = [plot.valToPos(times[i], 'x', true), plot.valToPos(value, 'y', true)];
        if (begun) ctx.lineTo(x, y);
        else ctx.moveTo(x, y);
        begun = true;
    }
    ctx.stroke();
}

/**
 * Marks the curve of the chosen device for as long as it was chosen.
 * @param columnOf which of the plot's columns is the curve of a dongle
 */
export function paintChosen(plot, model, state, columnOf) {
    if (!state.smoothed) return;
    const { ctx, bbox } = plot;
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    ctx.lineWidth = 7 * (globalThis.devicePixelRatio || 1);
    ctx.lineJoin = 'round';
    ctx.setLineDash([]);
    for (const decision of model.decisions) {
        if (decision.to <= state.range.from || decision.from >= state.range.to) continue;
        if (!state.visible.has(decision.dongle)) continue;
        const near = state.focus === null || state.focus === decision.dongle;
        ctx.strokeStyle = faded(colourOf(decision.dongle, state.dark), near ? 0.3 : 0.08);
        paintAlong(plot, columnOf(decision.dongle), decision);
    }
    ctx.restore();
}

/** The thresholds to be drawn: one of each dongle that has its own, and one for all that have the default. */
export function thresholdLines(dongles, state) {
    const lines = [];
    let byDefault = null;
    for (const dongle of dongles) {
        if (!state.visible.has(dongle.index)) continue;
        if (dongle.ownThreshold) lines.push({ value: dongle.threshold, dongle: dongle.index, name: dongle.name });
        else if (dongle.port !== '') byDefault ??= { value: dongle.threshold, dongle: null, name: 'default' };
    }
    return byDefault === null ? lines : [...lines, byDefault];
}

/** Names that are closer to one another than so many pixels cannot be read. */
const APART = 13;

function colourOfLine(line, state) {
    return line.dongle === null ? state.colours.quiet : colourOf(line.dongle, state.dark);
}

function paintLine(plot, line, state) {
    const { ctx, bbox } = plot;
    const y = Math.round(plot.valToPos(line.value, 'y', true)) + 0.5;
    const pixel = globalThis.devicePixelRatio || 1;
    const near = state.focus === null || state.focus === line.dongle;
    ctx.globalAlpha = near ? 0.9 : 0.15;
    ctx.strokeStyle = colourOfLine(line, state);
    ctx.lineWidth = pixel;
    ctx.setLineDash([6 * pixel, 5 * pixel]);
    ctx.beginPath();
    ctx.moveTo(bbox.left, y);
    ctx.lineTo(bbox.left + bbox.width, y);
    ctx.stroke();
    return y;
}

/** The name of a threshold at its end, on the page's ground, so that it is read over the curves. */
function paintName(plot, line, state, y) {
    const { ctx, bbox } = plot;
    const pixel = globalThis.devicePixelRatio || 1;
    const text = `${line.name} ${figure(line.value, 0)}`;
    const right = bbox.left + bbox.width - 4 * pixel;
    const width = ctx.measureText(text).width;
    ctx.globalAlpha = 0.9;
    ctx.fillStyle = state.colours.ground;
    ctx.fillRect(right - width - 3 * pixel, y - 6.5 * pixel, width + 6 * pixel, 13 * pixel);
    ctx.fillStyle = colourOfLine(line, state);
    ctx.fillText(text, right, y + 4 * pixel);
}

/** Draws the thresholds that lie within the scale. */
export function paintThresholds(plot, model, state) {
    if (!state.thresholds) return;
    const { ctx } = plot;
    const { min, max } = plot.scales.y;
    const lines = thresholdLines(model.dongles, state).filter((line) => line.value >= min && line.value <= max);
    ctx.save();
    ctx.textAlign = 'right';
    ctx.font = `${11 * (globalThis.devicePixelRatio || 1)}px system-ui, "DejaVu Sans", sans-serif`;
    const places = lines.map((line) => paintLine(plot, line, state));
    const named = [];
    lines.forEach((line, index) => {
        if (state.focus !== null && line.dongle !== state.focus) return;
        const y = places[index];
        if (named.some((other) => Math.abs(other - y) < APART * (globalThis.devicePixelRatio || 1))) return;
        named.push(y);
        paintName(plot, line, state, y);
    });
    ctx.restore();
}
