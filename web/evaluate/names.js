// SPDX-License-Identifier: Apache-2.0
// Where the names of points are written, so that neither points nor other names are in the way.

/** Pixels from a point to its name, around a point, and from line to line. */
const BESIDE = 9;
const RADIUS = 5;
const LINE = 13;

/** A name that has moved further than this from its point does not belong to it any more. */
const MOST_LINES = 8;

function overlaps(box, other) {
    return box.x < other.x + other.length && other.x < box.x + box.length && Math.abs(box.y - other.y) < LINE;
}

/** Half a line down, half a line up, a whole line down, and so on. */
function distances() {
    const result = [0];
    for (let half = 1; half <= 2 * MOST_LINES; ++half) result.push((half * LINE) / 2, (-half * LINE) / 2);
    return result;
}

/**
 * @param names  {x, y, length}: the points that get a name and how long it is, in pixels
 * @param points {x, y} of all points, those with names among them
 * @param size   {width, height} of the plot
 * @return {x, y} for each name: its left end and the middle of its line
 */
export function placeNames(names, points, size) {
    const taken = points.map(({ x, y }) => ({ x: x - RADIUS, y, length: 2 * RADIUS }));
    return names.map(({ x, y, length }) => {
        const left = x + BESIDE + length > size.width ? Math.max(x - BESIDE - length, 0) : x + BESIDE;
        const boxes = distances().map((distance) => ({ x: left, y: y + distance, length }));
        const inside = boxes.filter((box) => box.y >= LINE / 2 && box.y <= size.height - LINE / 2);
        const free = inside.find((box) => !taken.some((other) => overlaps(box, other))) ?? boxes[0];
        taken.push(free);
        return { x: free.x, y: free.y };
    });
}
