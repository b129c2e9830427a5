// SPDX-License-Identifier: Apache-2.0
// A chart, drawn by uPlot: axes, curves and points on its canvas, and over each point a button that can be pointed at,
// touched and reached by the keyboard.

import { drawing, element } from '../shared/dom.js';
import { figure } from '../shared/tables.js';
import { placeNames } from './names.js';

const FONT = '12px system-ui, "DejaVu Sans", sans-serif';
const nameFont = (main, pixel) => `${main ? 600 : 400} ${11.5 * pixel}px system-ui, "DejaVu Sans", sans-serif`;

/** Hues of the first and the last curve of a family. */
const BLUE = 215;
const RED = 365;

export function colourOfSeries({ shade, main }, { dark, colours }) {
    if (shade === null) return main ? colours.accent : colours.other;
    return `hsl(${BLUE + shade * (RED - BLUE)}, 75%, ${dark ? 68 : 42}%)`;
}

function axes(chart, store) {
    const colour = (name) => () => store.get().colours[name];
    const shared = {
        stroke: colour('quiet'),
        grid: { stroke: colour('grid'), width: 1 },
        ticks: { stroke: colour('line'), width: 1 },
        font: FONT, labelFont: FONT, labelSize: 18,
    };
    const plain = (value) => figure(value, Number.isInteger(value) ? 0 : 1);
    const values = (plot, splits, axis, space, step) =>
        splits.map((value) => (step < 0.1 ? figure(value, 2) : plain(value)));
    return [
        { ...shared, size: 32, space: 60, label: chart.xName, values },
        { ...shared, size: 44, space: 36, label: chart.yName, values },
    ];
}

/** Paints the curve and the points of a series. */
function paintSeries(plot, series, state) {
    const { ctx } = plot;
    const pixel = globalThis.devicePixelRatio || 1;
    const places = series.points.map(({ x, y }) => [plot.valToPos(x, 'x', true), plot.valToPos(y, 'y', true)]);
    ctx.save();
    ctx.strokeStyle = colourOfSeries(series, state);
    ctx.fillStyle = ctx.strokeStyle;
    ctx.lineWidth = 1.5 * pixel;
    if (series.line) {
        ctx.beginPath();
        places.forEach(([x, y]) => ctx.lineTo(x, y));
        ctx.stroke();
    }
    ctx.strokeStyle = state.colours.ground;
    for (const [x, y] of places) {
        ctx.beginPath();
        ctx.arc(x, y, (series.line ? 3.5 : 5) * pixel, 0, 2 * Math.PI);
        ctx.fill();
        ctx.stroke();
    }
    ctx.restore();
}

/** Paints the name of each series beside its last point; curves of a family have a legend instead. */
function paintNames(plot, chart, state) {
    const { ctx, bbox } = plot;
    const pixel = globalThis.devicePixelRatio || 1;
    const place = ({ x, y }) => ({ x: plot.valToPos(x, 'x'), y: plot.valToPos(y, 'y') });
    const named = chart.series.filter(({ shade }) => shade === null);
    ctx.save();
    ctx.textAlign = 'left';
    ctx.textBaseline = 'middle';
    const names = named.map(({ name, main, points }) => {
        ctx.font = nameFont(main, pixel);
        return { ...place(points.at(-1)), length: ctx.measureText(name).width / pixel };
    });
    const points = chart.series.flatMap((series) => series.points).map(place);
    const size = { width: bbox.width / pixel, height: bbox.height / pixel };
    placeNames(names, points, size).forEach(({ x, y }, index) => {
        ctx.font = nameFont(named[index].main, pixel);
        ctx.fillStyle = colourOfSeries(named[index], state);
        ctx.fillText(named[index].name, bbox.left + x * pixel, bbox.top + y * pixel);
    });
    ctx.restore();
}

function options(chart, store) {
    const facets = [{ scale: 'x', auto: false }, { scale: 'y', auto: false }];
    return {
        mode: 2, width: 100, height: 100, legend: { show: false }, cursor: { show: false }, padding: [10, 16, 0, 0],
        scales: {
            x: { time: false, auto: false, range: () => [chart.x.from, chart.x.to] },
            y: { auto: false, range: () => [chart.y.from, chart.y.to] },
        },
        axes: axes(chart, store),
        series: [null, ...chart.series.map((series) => ({
            label: series.name, facets, points: { show: false },
            paths: (plot) => {
                paintSeries(plot, series, store.get());
                return null;
            },
        }))],
        hooks: { draw: [(plot) => paintNames(plot, chart, store.get())] },
    };
}

/** What the colours of a family of curves mean. Of very many the first and the last say what lies between. */
const MOST_NAMES = 12;

function legendOf(chart) {
    const family = chart.series.filter(({ shade }) => shade !== null);
    const shown = family.length > MOST_NAMES ? [family[0], family.at(-1)] : family;
    const items = shown.map((series) => {
        const dot = drawing('circle', { cx: 5.5, cy: 5.5, r: 5.5 });
        const swatch = drawing('svg', { 'aria-hidden': 'true', viewBox: '0 0 11 11' }, dot);
        const item = element('li', {}, swatch, series.name);
        return { item, colour: (state) => dot.setAttribute('fill', colourOfSeries(series, state)) };
    });
    return { list: element('ul', { class: 'legend' }, ...items.map(({ item }) => item)), items };
}

/**
 * Makes the element of a chart, which is drawn when it gets its size.
 * @param marks (chart, plot) => place: makes the buttons over the points; place() moves them to their points
 */
export function chartElement(chart, store, marks) {
    const place = element('div', { class: 'plot', role: 'group', 'aria-label': chart.title,
        'aria-describedby': 'chart-help' });
    const legend = legendOf(chart);
    const figureElement = element('figure', {}, element('figcaption', {}, chart.title), place);
    if (legend.items.length > 0) figureElement.append(legend.list);
    if (chart.far.length > 0) {
        figureElement.append(element('p', { class: 'far' }, `Too far away to be shown: ${chart.far.join(', ')}.`));
    }
    const columns = chart.series.map(({ points }) => [points.map(({ x }) => x), points.map(({ y }) => y)]);
    const plot = new globalThis.uPlot(options(chart, store), [null, ...columns], place);
    const placeMarks = marks(chart, plot);
    new ResizeObserver(() => {
        plot.setSize({ width: Math.max(place.clientWidth, 160), height: place.clientHeight });
        placeMarks();
    }).observe(place);
    store.on(['dark', 'colours'], (state) => {
        legend.items.forEach(({ colour }) => colour(state));
        plot.redraw(false, true);
    });
    return figureElement;
}
