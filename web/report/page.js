// SPDX-License-Identifier: Apache-2.0
// Puts the page together.

import { byId, element } from '../shared/dom.js';
import { startPage } from '../shared/start.js';
import { makeStore } from '../shared/store.js';
import { attachTheme } from '../shared/theme.js';
import { attachBands } from './bands.js';
import { shownAtFirst } from './choice.js';
import { attachDetails } from './details.js';
import { attachGestures } from './gestures.js';
import { attachLegend } from './legend.js';
import { agreement, readModel } from './model.js';
import { attachPanel } from './panel.js';
import { attachPlot } from './plot.js';
import { summary, timeText } from './texts.js';
import { attachToolbar } from './toolbar.js';

function startingState(model) {
    return {
        range: model.whole, cursor: null, focus: null, visible: shownAtFirst(model), size: '', dark: false, colours: {},
        raw: true, smoothed: true, level: false, thresholds: true,
    };
}

function describe(model) {
    const facts = summary(model, agreement(model.decisions, model.truth));
    byId('summary').replaceChildren(...facts.map((fact) => element('span', {}, fact)));
    byId('plot').setAttribute('aria-label',
        `Signals of ${model.dongles.length} dongles over ${timeText(model.end)}; the table Dongles has their values`);
    byId('decision-band').querySelector('svg').setAttribute('aria-label',
        `The decision over time, ${model.decisions.length} stretches; all of them are in the table Decisions`);
}

function watchSize(store) {
    new ResizeObserver(([entry]) => store.set({ size: `${entry.contentRect.width} ${entry.contentRect.height}` }))
        .observe(byId('chart'));
}

startPage((data) => {
    const model = readModel(data);
    const store = makeStore(startingState(model), (tell) => requestAnimationFrame(tell));
    describe(model);
    attachTheme(store);
    attachPlot(model, store);
    attachBands(model, store);
    attachLegend(model, store);
    attachPanel(model, store);
    attachDetails(model);
    attachToolbar(model, store);
    attachGestures(model, store);
    watchSize(store);
});
