// SPDX-License-Identifier: Apache-2.0
// The page's data as the rest of it works with them: seconds, dBm, and stretches of time with a beginning and an end.

import { decodeCurve, decodeTimes } from './columns.js';

/** Levels are carried in tenths of a dB. */
const LEVEL_SCALE = 10;

function readDongle(dongle, index) {
    const silent = decodeTimes(dongle.silent);
    return {
        index,
        port: dongle.port,
        nick: dongle.nick,
        address: dongle.address,
        name: dongle.nick || dongle.port || dongle.address,
        threshold: dongle.threshold,
        ownThreshold: dongle.own,
        raw: decodeCurve(dongle.raw),
        smoothed: { ...decodeCurve(dongle.smoothed), breaks: silent },
        level: { ...decodeCurve(dongle.level, LEVEL_SCALE), breaks: silent },
        silent,
    };
}

/** Entries that hold from their `at` (milliseconds) to the next one's, as stretches; none of them is of no length. */
export function stretches(entries, end) {
    const endOf = (index) => Math.min((entries[index + 1]?.at ?? Infinity) / 1000, end);
    return entries
        .map((entry, index) => ({ ...entry, from: Math.max(entry.at / 1000, 0), to: endOf(index) }))
        .filter((stretch) => stretch.to > stretch.from);
}

/** Neighbours with the same dongle as one. */
export function merged(list) {
    const result = [];
    for (const stretch of list) {
        const last = result.at(-1);
        if (last && last.dongle === stretch.dongle && last.to === stretch.from) last.to = stretch.to;
        else result.push({ ...stretch });
    }
    return result;
}

function readMarks(data, dongles) {
    const marks = [];
    for (const dongle of dongles) {
        for (const at of dongle.silent) marks.push({ at, kind: 'silent', dongle: dongle.index });
    }
    for (const scan of data.scans) marks.push({ at: scan.at / 1000, kind: 'scan', what: scan.what });
    for (const radio of data.radio) marks.push({ at: radio.at / 1000, kind: 'radio', what: radio.state });
    return marks.sort((a, b) => a.at - b.at);
}

/** The data of the page as a model; see `docs/reports.md` for what they hold. */
export function readModel(data) {
    const end = Math.max(data.end / 1000, 0.001);
    const dongles = data.dongles.map(readDongle);
    return {
        title: data.title,
        program: data.program,
        sources: data.sources,
        settings: data.settings,
        end,
        whole: { from: 0, to: end },
        dongles,
        decisions: stretches(data.decision, end),
        truth: data.truth === null ? null : merged(stretches(data.truth, end)),
        blind: stretches(data.radio, end).filter((stretch) => !stretch.hears),
        marks: readMarks(data, dongles),
    };
}

/** What a reading can be (Core Specification, Volume 4, Part E, 7.7.65.2); anything else is the radio's mistake. */
const WEAKEST = -127;
const STRONGEST = 20;

/** The signals that are there, as a scale with room around them: {low, high} in dBm. */
export function signalScale(dongles) {
    let low = Infinity;
    let high = -Infinity;
    for (const { raw, smoothed } of dongles) {
        for (const column of [raw.v, smoothed.v]) {
            for (const value of column) {
                if (value < WEAKEST || value > STRONGEST) continue;
                if (value < low) low = value;
                if (value > high) high = value;
            }
        }
    }
    if (low > high) return { low: -100, high: -30 };
    return { low: Math.floor((low - 2) / 5) * 5, high: Math.ceil((high + 2) / 5) * 5 };
}

/** For how much of the time that the truth is known the decision was the truth, from 0 to 1; null where it never is. */
export function agreement(decisions, truth) {
    let right = 0;
    let known = 0;
    let i = 0;
    for (const stretch of truth ?? []) {
        known += stretch.to - stretch.from;
        while (i < decisions.length && decisions[i].to <= stretch.from) ++i;
        for (let k = i; k < decisions.length && decisions[k].from < stretch.to; ++k) {
            if (decisions[k].dongle !== stretch.dongle) continue;
            right += Math.min(decisions[k].to, stretch.to) - Math.max(decisions[k].from, stretch.from);
        }
    }
    return known > 0 ? right / known : null;
}
