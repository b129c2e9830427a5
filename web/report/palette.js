// SPDX-License-Identifier: Apache-2.0
// Colours that tell dongles apart on a light and on a dark ground; after twelve the lines are dashed too.

const LIGHT = [
    '#1f6fd6', '#d1495b', '#23893f', '#8e4ec6', '#b96a00', '#0b7f91',
    '#b8397f', '#6b7a00', '#5257cf', '#a0522d', '#3f7183', '#74465c',
];
const DARK = [
    '#6aa9ff', '#ff7b8a', '#5fd07a', '#c492ff', '#ffb454', '#4fd0e0',
    '#ff86c8', '#c0cf3a', '#9ea2ff', '#e09a6a', '#8fbccc', '#d3a6bd',
];
const DASHES = [[], [8, 4], [2, 3], [10, 3, 2, 3]];

export function colourOf(index, dark) {
    const colours = dark ? DARK : LIGHT;
    return colours[index % colours.length];
}

/** How the line of a dongle is broken up, so that two of one colour are told apart. */
export function dashOf(index) {
    return DASHES[Math.floor(index / LIGHT.length) % DASHES.length];
}

/** The colour with an opacity from 0 to 1. */
export function faded(colour, opacity) {
    const channel = (place) => parseInt(colour.slice(place, place + 2), 16);
    return `rgba(${channel(1)}, ${channel(3)}, ${channel(5)}, ${opacity})`;
}
