// SPDX-License-Identifier: Apache-2.0
// Which dongles a page shows at first: all of them, or of more than 16 those that were chosen longest.

/** More curves than these cannot be told apart. */
const AT_ONCE = 16;

function timeChosen(model) {
    const time = new Array(model.dongles.length).fill(0);
    for (const stretch of [...model.decisions, ...(model.truth ?? [])]) {
        if (stretch.dongle >= 0) time[stretch.dongle] += stretch.to - stretch.from;
    }
    return time;
}

/** The indexes of the dongles that are shown at first, as a set. */
export function shownAtFirst(model) {
    const all = model.dongles.map((dongle) => dongle.index);
    if (all.length <= AT_ONCE) return new Set(all);
    const time = timeChosen(model);
    const readings = (index) => model.dongles[index].raw.t.length + model.dongles[index].smoothed.t.length;
    all.sort((a, b) => time[b] - time[a] || readings(b) - readings(a) || a - b);
    return new Set(all.slice(0, AT_ONCE));
}
