// SPDX-License-Identifier: Apache-2.0
// Buttons over the points of a chart, which show a point's figures on pointing, touch and focus. Only one button of a
// chart is reached by Tab, since there may be thousands.

import { byId, element } from '../shared/dom.js';

/** Pixels between a mark and its tip, and between the tip and the edges of the window. */
const APART = 8;

function showTip(mark) {
    const tip = byId('tip');
    tip.textContent = mark.getAttribute('aria-label');
    tip.hidden = false;
    const box = mark.getBoundingClientRect();
    const { clientWidth, clientHeight } = document.documentElement;
    const left = Math.min(box.right + APART, clientWidth - tip.offsetWidth - APART);
    const below = box.bottom + APART;
    const fits = below + tip.offsetHeight < clientHeight;
    tip.style.left = `${Math.max(left, APART)}px`;
    tip.style.top = `${fits ? below : box.top - tip.offsetHeight - APART}px`;
}

function hideTip() {
    byId('tip').hidden = true;
}

/** The index of the mark to which a key leads, of `count` marks; null for other keys. */
export function placeAfter(key, place, count) {
    const steps = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 };
    if (key === 'Home') return 0;
    if (key === 'End') return count - 1;
    return key in steps ? Math.min(Math.max(place + steps[key], 0), count - 1) : null;
}

/** Tab reaches the button that was used last; the other keys go from there. */
function attachKeys(area, marks) {
    const reach = (place) => marks.forEach((mark, index) => { mark.tabIndex = index === place ? 0 : -1; });
    area.addEventListener('focusin', ({ target }) => reach(marks.indexOf(target)));
    area.addEventListener('keydown', (event) => {
        const place = placeAfter(event.key, marks.indexOf(event.target), marks.length);
        if (place === null) return;
        event.preventDefault();
        marks[place].focus();
    });
}

/** Makes the buttons of a chart. @return a function that moves them to their points */
export function marksOf(chart, plot) {
    const points = chart.series.flatMap(({ points: own, main }) => own.map((point) => ({ ...point, main })));
    const first = Math.max(points.findIndex(({ main }) => main), 0);
    const marks = points.map(({ tip }, index) => {
        const mark = element('button',
            { type: 'button', class: 'mark', 'aria-label': tip, tabindex: index === first ? 0 : -1 });
        for (const begin of ['pointerenter', 'focus', 'click']) mark.addEventListener(begin, () => showTip(mark));
        for (const end of ['pointerleave', 'blur']) mark.addEventListener(end, hideTip);
        return mark;
    });
    plot.over.append(...marks);
    attachKeys(plot.over, marks);
    return () => marks.forEach((mark, index) => {
        mark.style.left = `${plot.valToPos(points[index].x, 'x')}px`;
        mark.style.top = `${plot.valToPos(points[index].y, 'y')}px`;
    });
}

/** Hides the tip on Escape, and on scrolling, which would leave it behind. */
export function attachTip() {
    document.addEventListener('keydown', ({ key }) => {
        if (key === 'Escape') hideTip();
    });
    document.addEventListener('scroll', hideTip, { passive: true });
}
