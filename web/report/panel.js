// SPDX-License-Identifier: Apache-2.0
// The panel that tells the decision and its reasons at the moment that is pointed at.

import { byId, element } from '../shared/dom.js';
import { GUTTER, MARGIN } from './plot.js';
import { fitInto, span } from './range.js';
import { PRESENT, valueAt } from './search.js';
import { stretchAt } from './stretches.js';
import { decisionFacts, decisionSentence, markText, nameOfDongle, timeText } from './texts.js';

/** Events within this many pixels of the moment are told too. */
const REACH = 6;

/** The events close to a moment, the closest first. */
export function marksNear(marks, time, reach, most = 3) {
    return marks
        .filter((mark) => Math.abs(mark.at - time) <= reach)
        .sort((a, b) => Math.abs(a.at - time) - Math.abs(b.at - time))
        .slice(0, most);
}

/** How the chosen device and the strongest of the others are at a moment, by the levels that the decision compares. */
export function nowAt(model, decision, time) {
    const levelOf = (dongle) => valueAt(dongle.level, time, PRESENT);
    const signal = levelOf(model.dongles[decision.dongle]);
    let [runner, runnerSignal] = [-1, null];
    for (const dongle of model.dongles) {
        const level = dongle.index === decision.dongle ? null : levelOf(dongle);
        if (level === null || (runnerSignal !== null && level <= runnerSignal)) continue;
        [runner, runnerSignal] = [dongle.index, level];
    }
    return { signal, runner, runnerSignal, distance: signal === null || runner < 0 ? null : signal - runnerSignal };
}

/** The facts of a moment as [label, text] pairs. */
export function factsAt(model, time, reach) {
    const decision = model.decisions[stretchAt(model.decisions, time)];
    const now = decision === undefined || decision.dongle < 0 ? null : nowAt(model, decision, time);
    const facts = decision === undefined
        ? [['Chosen', 'nothing is known here']]
        : decisionFacts(decision, model.dongles, now);
    if (model.truth !== null) {
        const truth = model.truth[stretchAt(model.truth, time)];
        facts.push(['Truth', truth === undefined ? 'not known' : nameOfDongle(model.dongles, truth.dongle)]);
    }
    for (const mark of marksNear(model.marks, time, reach)) facts.push(['Event', markText(mark, model.dongles)]);
    return facts;
}

/** The moment of the next (+1) or the previous (-1) decision, or null. */
export function decisionAfter(decisions, time, direction) {
    const index = stretchAt(decisions, time);
    if (index < 0 && direction > 0) return decisions[0]?.from ?? null;
    return decisions[index + direction]?.from ?? null;
}

/** Moves the cursor to the next or the previous decision, into view, and says it aloud. */
export function stepTo(model, store, direction) {
    const { cursor, range } = store.get();
    const time = decisionAfter(model.decisions, cursor ?? range.from - 1, direction);
    if (time === null) return;
    const inView = time >= range.from && time <= range.to;
    const half = span(range) / 2;
    store.set({ cursor: time, range: inView ? range : fitInto({ from: time - half, to: time + half }, model.whole) });
    const decision = model.decisions[stretchAt(model.decisions, time)];
    byId('spoken').textContent = decisionSentence(decision, model.dongles);
}

function moveLine({ cursor, range }) {
    const line = byId('cursor-line');
    line.hidden = cursor === null || cursor < range.from || cursor > range.to;
    if (line.hidden) return;
    const width = byId('chart').clientWidth - GUTTER - MARGIN;
    line.style.transform = `translateX(${GUTTER + ((cursor - range.from) / span(range)) * width}px)`;
}

/** Updates the panel, and the line through the chart, when something changes. */
export function attachPanel(model, store) {
    const show = (state) => {
        moveLine(state);
        if (state.cursor === null) return;
        byId('moment').textContent = `At ${timeText(state.cursor)}`;
        const reach = (span(state.range) / Math.max(byId('chart').clientWidth, 1)) * REACH;
        const facts = factsAt(model, state.cursor, reach);
        byId('facts').replaceChildren(
            ...facts.flatMap(([label, text]) => [element('dt', {}, label), element('dd', {}, text)]));
    };
    store.on(['cursor', 'range', 'size'], show);
}
