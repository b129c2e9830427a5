// SPDX-License-Identifier: Apache-2.0
// Mouse, wheel and fingers over the chart.

import { byId } from '../shared/dom.js';
import { GUTTER, MARGIN } from './plot.js';
import { LEAST_SPAN, panned, pinched, span, zoomed } from './range.js';

/** How far a pointer may move, in pixels, and still be a click. */
const SLACK = 4;
const WHEEL_STEP = 0.0018;

/** Where a pointer is, as a share of the shown range: 0 at its beginning, 1 at its end. */
function shareOf(chart, clientX) {
    const box = chart.getBoundingClientRect();
    return (clientX - box.left - GUTTER) / Math.max(box.width - GUTTER - MARGIN, 1);
}

function timeAt(state, share) {
    return state.range.from + span(state.range) * Math.min(Math.max(share, 0), 1);
}

function showSelection(chart, first, second) {
    const box = chart.getBoundingClientRect();
    const width = box.width - GUTTER - MARGIN;
    const clamp = (share) => Math.min(Math.max(share, 0), 1);
    const selection = byId('selection');
    selection.hidden = false;
    selection.style.left = `${GUTTER + clamp(Math.min(first, second)) * width}px`;
    selection.style.width = `${Math.abs(clamp(first) - clamp(second)) * width}px`;
}

function attachWheel(chart, model, store) {
    chart.addEventListener('wheel', (event) => {
        event.preventDefault();
        const state = store.get();
        const pixels = event.deltaMode === 1 ? 16 : event.deltaMode === 2 ? 400 : 1;
        if (event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY)) {
            const moved = ((event.deltaX || event.deltaY) * pixels) / Math.max(chart.clientWidth, 1);
            store.set({ range: panned(state.range, moved * span(state.range), model.whole) });
            return;
        }
        const factor = Math.exp(event.deltaY * pixels * WHEEL_STEP);
        store.set({ range: zoomed(state.range, factor, timeAt(state, shareOf(chart, event.clientX)), model.whole) });
    }, { passive: false });
}

/** One pointer that is down: what it does, and where it was. */
function begin(chart, event, state) {
    const inPlot = byId('plot').contains(event.target);
    const selects = event.pointerType !== 'touch' && inPlot && !event.shiftKey;
    const share = shareOf(chart, event.clientX);
    return { selects, first: share, now: share, x: event.clientX, moved: false, range: state.range };
}

function moveOne(chart, model, store, pointer) {
    if (!pointer.moved) return;
    if (pointer.selects) {
        showSelection(chart, pointer.first, pointer.now);
        return;
    }
    const seconds = (pointer.first - pointer.now) * span(pointer.range);
    store.set({ range: panned(pointer.range, seconds, model.whole) });
}

function moveTwo(model, store, [first, second]) {
    const was = [first.first, second.first];
    store.set({ range: pinched(first.range, was, [first.now, second.now], model.whole) });
}

/** Beginnings are taken anew when a finger comes or goes, so that nothing jumps. */
function restart(pointers, state) {
    for (const pointer of pointers.values()) {
        pointer.first = pointer.now;
        pointer.range = state.range;
    }
}

function finish(model, store, pointer) {
    const state = store.get();
    const [from, to] = [pointer.first, pointer.now].map((share) => timeAt(state, share)).sort((a, b) => a - b);
    if (!pointer.moved) store.set({ cursor: to });
    else if (pointer.selects && to - from > LEAST_SPAN / 10) {
        store.set({ range: zoomed({ from, to }, 1, (from + to) / 2, model.whole) });
    }
}

function attachPointers(chart, model, store) {
    const pointers = new Map();
    chart.addEventListener('pointerdown', (event) => {
        if (event.button !== 0) return;
        pointers.set(event.pointerId, begin(chart, event, store.get()));
        chart.setPointerCapture(event.pointerId);
        if (pointers.size > 1) restart(pointers, store.get());
    });
    chart.addEventListener('pointermove', (event) => {
        const pointer = pointers.get(event.pointerId);
        if (pointer === undefined) {
            if (event.pointerType !== 'touch') hover(chart, event, store);
            return;
        }
        pointer.now = shareOf(chart, event.clientX);
        pointer.moved ||= Math.abs(event.clientX - pointer.x) > SLACK;
        if (pointers.size === 1) moveOne(chart, model, store, pointer);
        else if (pointers.size === 2) moveTwo(model, store, [...pointers.values()]);
    });
    const end = (event) => {
        const pointer = pointers.get(event.pointerId);
        pointers.delete(event.pointerId);
        byId('selection').hidden = true;
        if (pointer !== undefined && event.type === 'pointerup' && pointers.size === 0) finish(model, store, pointer);
        restart(pointers, store.get());
    };
    chart.addEventListener('pointerup', end);
    chart.addEventListener('pointercancel', end);
}

function hover(chart, event, store) {
    const share = shareOf(chart, event.clientX);
    if (share >= 0 && share <= 1) store.set({ cursor: timeAt(store.get(), share) });
}

export function attachGestures(model, store) {
    const chart = byId('chart');
    attachWheel(chart, model, store);
    attachPointers(chart, model, store);
    chart.addEventListener('dblclick', () => store.set({ range: model.whole }));
}
