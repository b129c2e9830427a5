// SPDX-License-Identifier: Apache-2.0
// The curves, drawn by uPlot. For each range it gets no more points than there are pixels to show them.

import { byId } from '../shared/dom.js';
import { figure } from '../shared/tables.js';
import { columnsFor } from './decimate.js';
import { signalScale } from './model.js';
import { paintBlind, paintChosen, paintThresholds } from './paint.js';
import { colourOf, dashOf, faded } from './palette.js';
import { axisText, DAY } from './texts.js';

/** Pixels to the left and to the right of the curves; the bands keep to both. */
export const GUTTER = 64;
export const MARGIN = 12;

/** Seconds from one mark of the axis to the next. A recording whose clock jumped may be hundreds of years long. */
const STEPS = [
    0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 43200, DAY,
    ...[1, 10, 100, 1000, 10000].flatMap((days) => [2 * days * DAY, 5 * days * DAY, 10 * days * DAY]),
];
const FONT = '12px system-ui, "DejaVu Sans", sans-serif';
/** Room for the name of the axis. */
const LABEL = 16;
const NOTHING = { t: [], v: [] };
const KINDS = [
    { key: 'raw', title: 'raw' },
    { key: 'level', title: 'level' },
    { key: 'smoothed', title: 'smoothed' },
];

/** How strongly a dongle is drawn while another one is pointed at. */
function presence(state, dongle) {
    return state.focus === null || state.focus === dongle ? 1 : 0.14;
}

function seriesOf(kind, dongle, store) {
    const stroke = (opacity) => () => {
        const state = store.get();
        return faded(colourOf(dongle.index, state.dark), opacity * presence(state, dongle.index));
    };
    const shared = { label: `${dongle.name}, ${kind.title}`, spanGaps: false };
    if (kind.key === 'raw') {
        const points = { show: true, size: 3.5, width: 0, stroke: stroke(0), fill: stroke(0.45) };
        return { ...shared, paths: () => null, points };
    }
    const line = kind.key === 'level' ? { width: 1, dash: [4, 3] } : { width: 1.8, dash: dashOf(dongle.index) };
    return { ...shared, ...line, stroke: stroke(kind.key === 'level' ? 0.8 : 1), points: { show: false } };
}

function axes(store) {
    const colour = (name) => () => store.get().colours[name];
    const shared = {
        stroke: colour('quiet'),
        grid: { stroke: colour('grid'), width: 1 },
        ticks: { stroke: colour('line'), width: 1 },
        font: FONT,
    };
    return [
        {
            ...shared, size: 34, space: 80, incrs: STEPS,
            values: (plot, moments, axis, space, step) => moments.map((moment) => axisText(moment, step)),
        },
        {
            ...shared, size: GUTTER - LABEL, label: 'dBm', labelSize: LABEL, labelFont: FONT,
            values: (plot, signals) => signals.map((signal) => figure(signal, 0)),
        },
    ];
}

/** What the plot is to draw: the curves in the order of its series; those that are not shown are empty. */
function curvesOf(model, state) {
    return KINDS.flatMap(({ key }) =>
        model.dongles.map((dongle) => (state[key] && state.visible.has(dongle.index) ? dongle[key] : NOTHING)));
}

function options(model, store, scale) {
    const columnOf = (dongle) => 1 + KINDS.findIndex(({ key }) => key === 'smoothed') * model.dongles.length + dongle;
    return {
        width: 100,
        height: 100,
        legend: { show: false },
        cursor: { show: false },
        padding: [10, MARGIN, 0, 0],
        scales: {
            x: { time: false, range: (u, min, max) => [min, max] },
            y: { range: () => [scale.low, scale.high] },
        },
        axes: axes(store),
        series: [{}, ...KINDS.flatMap((kind) => model.dongles.map((dongle) => seriesOf(kind, dongle, store)))],
        hooks: {
            drawClear: [
                (plot) => paintBlind(plot, model, store.get()),
                (plot) => paintChosen(plot, model, store.get(), columnOf),
            ],
            draw: [(plot) => paintThresholds(plot, model, store.get())],
        },
    };
}

/** Draws the curves, and draws them again when something changes. */
export function attachPlot(model, store) {
    const place = byId('plot');
    const plot = new globalThis.uPlot(options(model, store, signalScale(model.dongles)), undefined, place);
    const draw = (state) => {
        const width = Math.max(place.clientWidth, GUTTER + MARGIN + 50);
        const height = place.clientHeight;
        const columns = columnsFor(curvesOf(model, state), state.range, width - GUTTER - MARGIN);
        plot.batch(() => {
            if (plot.width !== width || plot.height !== height) plot.setSize({ width, height });
            plot.setData(columns, false);
            plot.setScale('x', { min: state.range.from, max: state.range.to });
        });
    };
    store.on(['range', 'visible', 'raw', 'smoothed', 'level', 'size'], draw);
    store.on(['dark', 'colours', 'focus', 'thresholds'], () => plot.redraw(false, true));
    draw(store.get());
}
