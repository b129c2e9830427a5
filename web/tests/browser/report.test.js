// SPDX-License-Identifier: Apache-2.0
// The page of `nearcast report` in a real browser: made by the program, opened as a file, used with mouse, fingers and
// keys.
import assert from 'node:assert/strict';
import { readFileSync, statSync } from 'node:fs';
import test, { before } from 'node:test';
import { pathToFileURL } from 'node:url';

import { advertise, coloursOn, linesOf, makePages, middleOf } from './pages.js';

const HOSTILE = '</script><script>window.hacked = 1</script><!-- "\'\u0000\u001b\u2028 &amp; {{data}}';

const pages = makePages('report');

/** Two dongles: the user walks from one to the other, and the second falls silent. */
function recording() {
    const lines = [];
    for (let step = 0; step < 300; ++step) {
        const near = step < 120 ? 0 : 1;
        [0, 1].filter((i) => i === 0 || step < 220).forEach((i) => lines.push(
            advertise(step / 10, `02:4E:43:00:00:0${i + 1}`, (i === near ? -50 : -75) - (step % 3))));
    }
    lines.push({ at: 28, do: 'radio', state: 4 }, { at: 29, do: 'radio', state: 5 });
    return lines.sort((a, b) => a.at - b.at);
}

function record(name, MACAddr) {
    return { 'Device Type': 'Printer', 'MAC Address': MACAddr, 'Nick Name': name, 'Threshold RSSI': -65 };
}

function makePage(name, nickName, ...options) {
    const shop = pages.write(`${name}.jsonl`, linesOf(recording()));
    const settings = pages.write(`${name}.json`, JSON.stringify({
        [`BT:${nickName}`]: record(nickName, '02:4E:43:00:00:01'),
        'BT:Kitchen': record('Kitchen', '02:4E:43:00:00:02'),
    }));
    const truth = pages.write(`${name}.truth.jsonl`,
        linesOf([{ at: 0, truth: '02:4E:43:00:00:01' }, { at: 12, truth: '02:4E:43:00:00:02' }]));
    const page = pages.path(`${name}.html`);
    pages.run('report', shop, '--settings', settings, '--truth', truth, '-o', page, ...options);
    return page;
}

const open = (path, options) => pages.open(pathToFileURL(path).href, options);

const RANGE = 'document.getElementById("range").textContent';
const textOf = (id) => `document.getElementById(${JSON.stringify(id)}).textContent`;

async function drag(page, from, to, modifiers = 0) {
    await page.mouse('mousePressed', from.x, from.y, { button: 'left', clickCount: 1, modifiers });
    await page.mouse('mouseMoved', (from.x + to.x) / 2, from.y, { button: 'left', modifiers });
    await page.mouse('mouseMoved', to.x, to.y, { button: 'left', modifiers });
    await page.mouse('mouseReleased', to.x, to.y, { button: 'left', clickCount: 1, modifiers });
}

let desk;
let tablet;
before(async () => {
    const path = makePage('shop', 'Bar');
    [desk, tablet] = await Promise.all([open(path), open(path, { width: 800, height: 1100, touch: true, dark: true })]);
});

/** Does something that changes the range that is shown, and gives the new one. */
async function changed(page, action) {
    const was = await page.evaluate(RANGE);
    await action();
    await page.until(`${RANGE} !== ${JSON.stringify(was)}`);
    return page.evaluate(RANGE);
}

const reset = (page) => page.evaluate('document.getElementById("reset").click()');
const whole = (page) => page.until(`${RANGE} === "0.0 s \u2013 29.9 s"`);

test('the curves are drawn in several colours', async () => {
    const colours = await coloursOn(desk, '#plot canvas', [0x1f6fd6, 0xd1495b]);
    assert.deepEqual(colours, [true, true]);
});

test('the bands name the devices that were decided for, and the true ones', async () => {
    const names = (id) =>
        desk.evaluate(`[...document.querySelectorAll('#${id} text')].map((text) => text.textContent)`);
    assert.deepEqual(await names('decision-band'), ['Bar', 'Kitchen', 'none']);
    assert.deepEqual(await names('truth-band'), ['Bar', 'Kitchen']);
});

test('the wheel zooms around the pointer', async () => {
    const { x, y } = await middleOf(desk, '#plot .u-over');
    const range = await changed(desk, () => desk.mouse('mouseWheel', x, y, { deltaX: 0, deltaY: -400 }));
    assert.match(range, /^7\.[67] s \u2013 22\.[23] s$/);
    await reset(desk);
    await whole(desk);
});

test('a drag over the curves zooms into what was dragged over', async () => {
    const { x, y } = await middleOf(desk, '#plot .u-over');
    const range = await changed(desk, () => drag(desk, { x, y }, { x: x + 200, y }));
    assert.match(range, /^1[45]\.\d s \u2013 2[01]\.\d s$/);
    await reset(desk);
    await whole(desk);
});

test('a drag over a band moves', async () => {
    await changed(desk, () => desk.key('+'));
    const { x, y } = await middleOf(desk, '#decision-band svg');
    const before = await desk.evaluate(RANGE);
    const range = await changed(desk, () => drag(desk, { x, y }, { x: x + 60, y }));
    assert.ok(parseFloat(range) < parseFloat(before), `${before} became ${range}`);
    await reset(desk);
    await whole(desk);
});

test('keys zoom, move and reset', async () => {
    const zoomed = await changed(desk, () => desk.key('+'));
    const moved = await changed(desk, () => desk.key('ArrowRight'));
    assert.ok(parseFloat(moved) > parseFloat(zoomed));
    await changed(desk, () => desk.key('0'));
    await whole(desk);
});

test('pointing at a moment tells rule, signal, threshold, runner-up and distance', async () => {
    const { x, y } = await middleOf(desk, '#decision-band svg');
    await desk.mouse('mouseMoved', x, y);
    await desk.until(`${textOf('facts')}.includes('Kitchen')`);
    const facts = await desk.evaluate(textOf('facts'));
    for (const part of [/Rule\w+: /, /Signal\u2212\d/, /Threshold\u221265\.0 dBm/, /Runner-up/, /TruthKitchen/]) {
        assert.match(facts, part);
    }
});

test('the next decision is said aloud', async () => {
    await desk.key('n');
    await desk.until(`${textOf('spoken')}.startsWith('Chosen: none')`);
});

test('a dongle is switched off and on in the legend', async () => {
    const button = 'document.querySelector("#legend button")';
    await desk.evaluate(`${button}.click()`);
    await desk.until(`${button}.getAttribute("aria-pressed") === "false"`);
    await desk.evaluate(`${button}.click()`);
    await desk.until(`${button}.getAttribute("aria-pressed") === "true"`);
});

test('a tap tells what was the case', async () => {
    const { x, y } = await middleOf(tablet, '#decision-band svg');
    await tablet.touch('touchStart', [x, y]);
    await tablet.touch('touchEnd');
    await tablet.until(`${textOf('facts')}.includes('Kitchen')`);
});

test('two fingers zoom, and one moves', async () => {
    const { x, y } = await middleOf(tablet, '#plot .u-over');
    const zoomed = await changed(tablet, async () => {
        await tablet.touch('touchStart', [x - 50, y], [x + 50, y]);
        await tablet.touch('touchMove', [x - 150, y], [x + 150, y]);
        await tablet.touch('touchEnd');
    });
    assert.match(zoomed, /^(9|10)\.\d s \u2013 (19|20)\.\d s$/);
    const moved = await changed(tablet, async () => {
        await tablet.touch('touchStart', [x, y]);
        await tablet.touch('touchMove', [x - 100, y]);
        await tablet.touch('touchEnd');
    });
    assert.ok(parseFloat(moved) > parseFloat(zoomed));
});

test('the page is dark where the system is', async () => {
    assert.equal(await tablet.evaluate('getComputedStyle(document.body).backgroundColor'), 'rgb(20, 23, 26)');
    assert.equal(await desk.evaluate('getComputedStyle(document.body).backgroundColor'), 'rgb(255, 255, 255)');
});

test('nothing is asked for and nothing complains', () => {
    for (const page of [desk, tablet]) {
        assert.deepEqual(page.problems, []);
        assert.deepEqual(page.requests, []);
    }
});

test('a hostile name is text', async () => {
    const page = await open(makePage('hostile', HOSTILE, '--title', '</title><script>window.hacked = 2</script>'));
    assert.equal(await page.evaluate('typeof window.hacked'), 'undefined');
    assert.equal(await page.evaluate('document.title'), '</title><script>window.hacked = 2</script>');
    assert.equal(await page.evaluate('document.querySelector("#legend .name").textContent'), HOSTILE);
    assert.deepEqual(page.problems, []);
});

/** A page like that of the shop, of an hour of twelve dongles that are heard ten times a second. */
function makeLongPage() {
    const page = readFileSync(makePage('long', 'Bar'), 'utf8');
    const begin = page.indexOf('id="data">') + 'id="data">'.length;
    const end = page.indexOf('</script>', begin);
    const data = JSON.parse(page.slice(begin, end));
    const curve = (count, step) => ({
        t: new Array(count).fill(step),
        v: Array.from({ length: count }, (_, i) => (i === 0 ? -70 : ((i * 7919) % 13) - 6)),
    });
    data.end = 3600000;
    data.dongles = Array.from({ length: 12 }, (_, i) => ({
        ...data.dongles[0], nick: `Dongle ${i}`, address: String(i),
        raw: curve(36000, 100), smoothed: curve(36000, 100), level: curve(7200, 500),
    }));
    data.decision = Array.from({ length: 700 }, (_, i) => ({ ...data.decision[0], at: i * 5000, dongle: i % 12 }));
    return pages.write('hour.html', page.slice(0, begin) + JSON.stringify(data) + page.slice(end));
}

test('an hour of twelve dongles opens in three seconds, and is zoomed without waiting', async (t) => {
    const path = makeLongPage();
    const page = await open(path);
    const opened = await page.evaluate('performance.getEntriesByType("navigation")[0].loadEventEnd');
    const zoomed = await page.evaluate(`(async () => {
        const begin = performance.now();
        document.getElementById('zoom-in').click();
        await new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)));
        return performance.now() - begin;
    })()`);
    const megabytes = (statSync(path).size / 1e6).toFixed(1);
    const [openedIn, zoomedIn] = [Math.round(opened), Math.round(zoomed)];
    t.diagnostic(`432,000 readings, ${megabytes} MB: opened in ${openedIn} ms, zoomed in ${zoomedIn} ms`);
    assert.ok(opened > 0 && opened < 3000, `opened in ${opened} ms`);
    assert.ok(zoomed < 1500, `zoomed in ${zoomed} ms`);
    assert.deepEqual(page.problems, []);
});
