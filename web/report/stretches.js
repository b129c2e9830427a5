// SPDX-License-Identifier: Apache-2.0
// Stretches of time that follow one another, {from, to, ...}, in order: finding one, and which of them to draw.

/** The index of the stretch that a moment lies in, its beginning included; -1 where there is none. */
export function stretchAt(list, time) {
    let low = 0;
    let high = list.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (list[middle].from <= time) low = middle + 1;
        else high = middle;
    }
    const index = low - 1;
    return index >= 0 && time < list[index].to ? index : -1;
}

/**
 * What is to be drawn of a range: stretches that are narrower than `least` seconds each are put together to pieces
 * without a dongle, {from, to, many: how many}, so that what is drawn is bounded by the pixels.
 */
export function drawable(list, range, least) {
    const pieces = [];
    let index = Math.max(firstEndingAfter(list, range.from), 0);
    for (; index < list.length && list[index].from < range.to; ++index) {
        const stretch = list[index];
        const narrow = stretch.to - stretch.from < least;
        const last = pieces.at(-1);
        if (narrow && last && last.many && stretch.to - last.from < least * 2) {
            last.to = stretch.to;
            last.many += 1;
        } else if (narrow) {
            pieces.push({ from: stretch.from, to: stretch.to, many: 1, index });
        } else {
            pieces.push({ from: stretch.from, to: stretch.to, many: 0, index });
        }
    }
    return pieces;
}

function firstEndingAfter(list, time) {
    let low = 0;
    let high = list.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (list[middle].to <= time) low = middle + 1;
        else high = middle;
    }
    return low;
}
