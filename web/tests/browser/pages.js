// SPDX-License-Identifier: Apache-2.0
// Pages made by the program under test, in a folder of their own, and browsers that show them.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after } from 'node:test';

import { openBrowser } from './chromium.js';

/** A folder for files and browsers for pages; nothing of either is left after the tests. */
export function makePages(name) {
    const folder = mkdtempSync(join(tmpdir(), `nearcast-${name}-`));
    const browsers = [];
    after(async () => {
        for (const { close } of browsers) await close();
        rmSync(folder, { recursive: true });
    });
    return {
        path: (file) => join(folder, file),
        write(file, text) {
            writeFileSync(join(folder, file), text);
            return join(folder, file);
        },
        run: (...words) => execFileSync(process.env.NEARCAST_PROGRAM, words, { encoding: 'utf8' }),
        /** Opens a page and waits until it has built itself. */
        async open(url, options) {
            const browser = await openBrowser(options);
            browsers.push(browser);
            await browser.page.open(url);
            await browser.page.until('document.documentElement.dataset.ready === "true"');
            return browser.page;
        },
    };
}

/** What advertises at a moment, as a line of a recording. */
export function advertise(at, address, RSSI) {
    return { at, do: 'advertise', manufacturerData: `FFFF${address.replaceAll(':', '')}`, RSSI };
}

/** Objects as JSON Lines. */
export function linesOf(objects) {
    return objects.map((object) => `${JSON.stringify(object)}\n`).join('');
}

/** Where the middle of the first element that fits is in the window. */
export function middleOf(page, selector) {
    return page.evaluate(`(() => {
        const box = document.querySelector(${JSON.stringify(selector)}).getBoundingClientRect();
        return { x: box.left + box.width / 2, y: box.top + box.height / 2 };
    })()`);
}

/** What is on a canvas, as an expression. It is read from a copy, for reading slows a canvas down. */
export function pixelsOf(selector) {
    return `(() => {
        const canvas = document.querySelector(${JSON.stringify(selector)});
        const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext('2d', { willReadFrequently: true });
        copy.drawImage(canvas, 0, 0);
        return copy.getImageData(0, 0, canvas.width, canvas.height);
    })()`;
}

/** Which of some opaque colours (numbers) are on the canvas that fits. */
export function coloursOn(page, selector, colours) {
    return page.evaluate(`(() => {
        const { data } = ${pixelsOf(selector)};
        const seen = new Set();
        for (let i = 0; i < data.length; i += 4) {
            if (data[i + 3] === 255) seen.add(data[i] << 16 | data[i + 1] << 8 | data[i + 2]);
        }
        return ${JSON.stringify(colours)}.map((colour) => seen.has(colour));
    })()`);
}
