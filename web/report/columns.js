// SPDX-License-Identifier: Apache-2.0
// Columns of numbers as the page carries them: whole numbers, each as its difference from the one before.

function sums(differences, scale) {
    const column = new Float64Array(differences.length);
    let sum = 0;
    for (let i = 0; i < differences.length; ++i) {
        sum += differences[i];
        column[i] = sum / scale;
    }
    return column;
}

/** Milliseconds as differences -> seconds. */
export function decodeTimes(differences) {
    return sums(differences, 1000);
}

/** Whole numbers as differences -> numbers; `scale` is what they were multiplied by. */
export function decodeValues(differences, scale = 1) {
    return sums(differences, scale);
}

/** A curve of the page's data -> {t, v}: seconds and dBm, of equal length. */
export function decodeCurve(curve, scale = 1) {
    const length = Math.min(curve.t.length, curve.v.length);
    return { t: decodeTimes(curve.t.slice(0, length)), v: decodeValues(curve.v.slice(0, length), scale) };
}
