// SPDX-License-Identifier: Apache-2.0
// Where to write the names of points, so that they overlap neither points nor other names.

/** Pixels from a point to its name, around a point, and from line to line. */
const BESIDE = 9;
const RADIUS = 5;
const LINE = 13;

/** Further away a name would not be seen to belong to its point. */
const MOST_LINES = 4;

function overlaps(box, other) {
    return box.x < other.x + other.length && other.x < box.x + box.length && Math.abs(box.y - other.y) < LINE;
}

/** To the right and to the left of the point; then half a line down, half a line up, a whole line down, and so on. */
function candidates({ x, y, length }) {
    const boxes = [];
    for (let half = 0; half <= 2 * MOST_LINES; ++half) {
        for (const distance of half === 0 ? [0] : [(half * LINE) / 2, (-half * LINE) / 2]) {
            for (const left of [x + BESIDE, x - BESIDE - length]) boxes.push({ x: left, y: y + distance, length });
        }
    }
    return boxes;
}

/**
 * @param names  {x, y, length}: the points that get a name and how long it is, in pixels
 * @param points {x, y} of all points, those with names among them
 * @param size   {width, height} of the plot
 * @return {x, y} for each name: its left end and the middle of its line
 */
export function placeNames(names, points, size) {
    const taken = points.map(({ x, y }) => ({ x: x - RADIUS, y, length: 2 * RADIUS }));
    const inside = ({ x, y, length }) =>
        x >= 0 && x + length <= size.width && y >= LINE / 2 && y <= size.height - LINE / 2;
    return names.map((name) => {
        const places = candidates(name);
        const free = places.filter(inside).find((box) => !taken.some((other) => overlaps(box, other))) ??
            places.find(inside) ?? places[0];
        taken.push(free);
        return { x: free.x, y: free.y };
    });
}
