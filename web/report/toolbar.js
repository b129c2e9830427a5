// SPDX-License-Identifier: Apache-2.0
// Buttons and keys.

import { byId } from '../shared/dom.js';
import { stepTo } from './panel.js';
import { panned, span, zoomed } from './range.js';
import { timeText } from './texts.js';

const ZOOM = 1.6;
const STEP = 0.25;

function commands(model, store) {
    const zoom = (factor) => () => {
        const { range, cursor } = store.get();
        const inside = cursor !== null && cursor >= range.from && cursor <= range.to;
        store.set({ range: zoomed(range, factor, inside ? cursor : (range.from + range.to) / 2, model.whole) });
    };
    const pan = (share) => () => {
        const { range } = store.get();
        store.set({ range: panned(range, span(range) * share, model.whole) });
    };
    return {
        'zoom-in': zoom(1 / ZOOM),
        'zoom-out': zoom(ZOOM),
        'pan-left': pan(-STEP),
        'pan-right': pan(STEP),
        reset: () => store.set({ range: model.whole }),
        previous: () => stepTo(model, store, -1),
        next: () => stepTo(model, store, 1),
    };
}

const KEYS = {
    ArrowLeft: 'pan-left', ArrowRight: 'pan-right', '+': 'zoom-in', '=': 'zoom-in', '-': 'zoom-out', 0: 'reset',
    Home: 'reset', n: 'next', p: 'previous', N: 'next', P: 'previous',
};

function attachKeys(all) {
    document.addEventListener('keydown', (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        if (event.target.closest?.('.scroll') && event.key.startsWith('Arrow')) return;
        const command = all[KEYS[event.key]];
        if (command === undefined) return;
        event.preventDefault();
        command();
    });
}

function attachToggle(id, key, store) {
    const button = byId(id);
    button.addEventListener('click', () => store.set({ [key]: !store.get()[key] }));
    store.on([key], (state) => button.setAttribute('aria-pressed', String(state[key])));
}

export function attachToolbar(model, store) {
    const all = commands(model, store);
    for (const [id, command] of Object.entries(all)) byId(id).addEventListener('click', command);
    attachKeys(all);
    attachToggle('show-raw', 'raw', store);
    attachToggle('show-smoothed', 'smoothed', store);
    attachToggle('show-level', 'level', store);
    attachToggle('show-thresholds', 'thresholds', store);
    const tell = ({ range }) => {
        byId('range').textContent = `${timeText(range.from)} \u2013 ${timeText(range.to)}`;
        byId('zoom-out').disabled = span(range) >= span(model.whole);
        byId('reset').disabled = span(range) >= span(model.whole);
        byId('pan-left').disabled = range.from <= model.whole.from;
        byId('pan-right').disabled = range.to >= model.whole.to;
    };
    store.on(['range'], tell);
    tell(store.get());
}
