// SPDX-License-Identifier: Apache-2.0
// The part of the recording that is shown: {from, to} in seconds, always inside {from: 0, to: end}.

/** The shortest range that can be shown, in seconds. */
export const LEAST_SPAN = 0.5;

export function span(range) {
    return range.to - range.from;
}

/** The range moved, and resized if it has to be, so that it lies inside the whole. */
export function fitInto(range, whole) {
    const least = Math.min(LEAST_SPAN, span(whole));
    const width = Math.min(Math.max(span(range), least), span(whole));
    const middle = (range.from + range.to) / 2;
    const from = Math.min(Math.max(middle - width / 2, whole.from), whole.to - width);
    return { from, to: from + width };
}

/** A range `factor` times as wide, in which `centre` keeps its place. */
export function zoomed(range, factor, centre, whole) {
    const least = Math.min(LEAST_SPAN, span(whole));
    const width = Math.min(Math.max(span(range) * factor, least), span(whole));
    const share = span(range) > 0 ? (centre - range.from) / span(range) : 0.5;
    const from = centre - width * share;
    return fitInto({ from, to: from + width }, whole);
}

/** The range moved by so many seconds; it stops at the ends and keeps its width. */
export function panned(range, seconds, whole) {
    return fitInto({ from: range.from + seconds, to: range.to + seconds }, whole);
}

/** Zoom and move by two fingers: the moments at the shares `was` of the range are then at the shares `now` of it. */
export function pinched(range, was, now, whole) {
    const first = range.from + span(range) * was[0];
    const second = range.from + span(range) * was[1];
    const apart = now[1] - now[0];
    if (Math.abs(apart) < 0.01 || (second - first) / apart <= 0) return range;
    const width = (second - first) / apart;
    const clamped = zoomed(range, width / span(range), (first + second) / 2, whole);
    const from = (first + second) / 2 - span(clamped) * ((now[0] + now[1]) / 2);
    return fitInto({ from, to: from + span(clamped) }, whole);
}
