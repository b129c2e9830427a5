// SPDX-License-Identifier: Apache-2.0
// What is painted on the plot's canvas beside the curves: where the radio could not hear, and the thresholds.

import { colourOf } from './palette.js';
import { figure } from './texts.js';

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

/** The thresholds to be drawn: one of each dongle that has its own, and one for all that have the default. */
export function thresholdLines(dongles, state) {
    const lines = [];
    let byDefault = null;
    for (const dongle of dongles) {
        if (!state.visible.has(dongle.index)) continue;
        if (dongle.ownThreshold) lines.push({ value: dongle.threshold, dongle: dongle.index, name: dongle.name });
        else byDefault ??= { value: dongle.threshold, dongle: null, name: 'default' };
    }
    return byDefault === null ? lines : [...lines, byDefault];
}

/** Only some can have their names beside them. */
const MOST_NAMES = 6;

function paintLine(plot, line, state, named) {
    const { ctx, bbox } = plot;
    const y = Math.round(plot.valToPos(line.value, 'y', true)) + 0.5;
    const pixel = globalThis.devicePixelRatio || 1;
    const colour = line.dongle === null ? state.colours.quiet : colourOf(line.dongle, state.dark);
    const near = state.focus === null || state.focus === line.dongle;
    ctx.globalAlpha = near ? 0.9 : 0.15;
    ctx.strokeStyle = colour;
    ctx.fillStyle = colour;
    ctx.lineWidth = pixel;
    ctx.setLineDash([6 * pixel, 5 * pixel]);
    ctx.beginPath();
    ctx.moveTo(bbox.left, y);
    ctx.lineTo(bbox.left + bbox.width, y);
    ctx.stroke();
    if (named) ctx.fillText(`${line.name} ${figure(line.value, 0)}`, bbox.left + bbox.width - 4 * pixel, y - 3 * pixel);
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
    for (const line of lines) paintLine(plot, line, state, lines.length <= MOST_NAMES || line.dongle === state.focus);
    ctx.restore();
}
