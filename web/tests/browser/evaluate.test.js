// SPDX-License-Identifier: Apache-2.0
// The page of `nearcast evaluate --html` in a real browser: made by the program, opened as a file, used with mouse,
// finger and keys.
import assert from 'node:assert/strict';
import test, { before } from 'node:test';
import { pathToFileURL } from 'node:url';

import { advertise, coloursOn, linesOf, makePages, middleOf, pixelsOf } from './pages.js';

const KITCHEN = '00:00:00:00:00:01';
const BAR = '00:00:00:00:00:02';
const HOSTILE = '<img src=x onerror="window.hacked = 1">{{data}}.jsonl';

const pages = makePages('evaluate');

/** A user who stands at the kitchen, then at the bar; readings go up and down. */
function walk(name) {
    const lines = [];
    for (let step = 0; step < 80; ++step) {
        const [here, there] = step < 40 ? [KITCHEN, BAR] : [BAR, KITCHEN];
        lines.push(advertise(step / 2, here, -55 - ((step * 7) % 11)));
        lines.push(advertise(step / 2, there, -62 + ((step * 5) % 9)));
    }
    const truth = pages.write(`${name}.truth`, linesOf([{ at: 0, truth: KITCHEN }, { at: 20, truth: BAR }]));
    return [pages.write(name, linesOf(lines)), '--truth', truth];
}

function makePage(name, ...words) {
    const page = pages.path(name);
    pages.run('evaluate', ...words, '--html', page);
    return pathToFileURL(page).href;
}

const cells = (page, selector) => page.evaluate(
    `[...document.querySelectorAll(${JSON.stringify(`${selector} tr`)})].map((row) =>
        [...row.cells].map((cell) => cell.textContent))`);
const texts = (page, selector) => page.evaluate(
    `[...document.querySelectorAll(${JSON.stringify(selector)})].map((node) => node.textContent)`);
const TIP = 'document.getElementById("tip")';

let desk;
let grid;
before(async () => {
    const curve = makePage('curve.html', ...walk('walk.jsonl'), '--sweep', 'patience=0..40:5');
    const family = makePage('grid.html', ...walk('again.jsonl'), '--rule', 'nearest', '--sweep', 'dwell=0..4:3',
        '--sweep', 'patience=0..20:2');
    [desk, grid] = await Promise.all([
        pages.open(curve), pages.open(family, { width: 420, height: 900, touch: true, dark: true })]);
});

test('there is a chart of wrong switches and one of the time to follow', async () => {
    assert.deepEqual(await texts(desk, 'figcaption'),
        ['Time right over wrong switches', 'Time right over the time to follow a change']);
});

test('the curve is drawn in the colour of the rule, other rules in another', async () => {
    assert.deepEqual(await coloursOn(desk, '.plot canvas', [0x1f6fd6, 0x8a5a00, 0xff00ff]), [true, true, false]);
});

test('the table of all recordings says what the program printed', async () => {
    const words = pages.run('evaluate', ...walk('walk.jsonl'));
    const printed = words.trimEnd().split('\n').slice(2).map((line) => line.trim().split(/ +/));
    const rows = await cells(desk, '#totals tbody');
    const shown = rows.map((row) => row.map((text) => (text === '\u2013' ? '-' : text)));
    assert.deepEqual(shown, printed);
    assert.equal(await desk.evaluate('document.querySelector("#totals tr.main td").textContent'), 'nearest');
});

test('the table of the sweep has a line for each value', async () => {
    assert.deepEqual((await cells(desk, '#sweep tbody')).map(([value]) => value), ['0', '10', '20', '30', '40']);
    assert.equal((await cells(desk, '#sweep thead'))[0][0], 'patience dB s');
    assert.deepEqual((await cells(grid, '#sweep tbody')).map((row) => row.slice(0, 2).join(' ')),
        ['0 0', '0 20', '2 0', '2 20', '4 0', '4 20']);
});

test('each recording has its table, which is made when it is opened', async () => {
    const [name] = await texts(desk, '#recordings summary');
    assert.ok(name.endsWith('walk.jsonl'), name);
    await desk.evaluate('document.querySelector("#recordings summary").click()');
    await desk.until('document.querySelector("#recordings table") !== null');
    assert.deepEqual(await cells(desk, '#recordings tbody'), await cells(desk, '#totals tbody'));
});

test('the settings that were used are listed with their units', async () => {
    const rows = await cells(desk, '#settings tbody');
    assert.deepEqual(rows.find(([name]) => name === 'dwell'), ['dwell', '0.5', 's']);
    assert.equal(rows.length, 13);
});

test('pointing at a mark tells its figures, and leaving it takes them away', async () => {
    const { x, y } = await middleOf(desk, '.mark');
    await desk.mouse('mouseMoved', x, y);
    await desk.until(`!${TIP}.hidden`);
    const said = await desk.evaluate(`${TIP}.textContent`);
    assert.match(said, /^[a-z0-9.-]+: [\d.]+ % right, [\d.]+ wrong switches\/min, /);
    await desk.mouse('mouseMoved', 5, 5);
    await desk.until(`${TIP}.hidden`);
});

test('a mark is where its point was drawn', async () => {
    const colour = await desk.evaluate(`(() => {
        const mark = [...document.querySelectorAll('.mark')].find((one) => one.ariaLabel.startsWith('nearest:'));
        const canvas = document.querySelector('.plot canvas');
        const [box, place] = [canvas.getBoundingClientRect(), mark.getBoundingClientRect()];
        const scale = canvas.width / box.width;
        const column = Math.floor((place.left + place.width / 2 - box.left) * scale);
        const line = Math.floor((place.top + place.height / 2 - box.top) * scale);
        const { data, width } = ${pixelsOf('.plot canvas')};
        return data.slice((line * width + column) * 4).slice(0, 4).join(' ');
    })()`);
    assert.equal(colour, '31 111 214 255');
});

test('Tab reaches a chart, arrows go from mark to mark, and Escape hides what was said', async () => {
    await desk.evaluate('document.getElementById("theme").focus()');
    await desk.key('Tab');
    await desk.until(`!${TIP}.hidden && ${TIP}.textContent.startsWith("nearest: ")`);
    await desk.key('ArrowRight');
    await desk.until(`!${TIP}.hidden && ${TIP}.textContent.startsWith("patience 0: ")`);
    assert.equal(await desk.evaluate(`document.activeElement.ariaLabel === ${TIP}.textContent`), true);
    await desk.key('Home');
    await desk.until(`!${TIP}.textContent.startsWith("patience")`);
    await desk.key('Escape');
    await desk.until(`${TIP}.hidden`);
    const before = await desk.evaluate('document.activeElement.closest("figure").textContent');
    await desk.key('Tab');
    assert.notEqual(await desk.evaluate('document.activeElement.closest("figure").textContent'), before);
});

test('of a grid each value of the first setting has a curve and a name in the legend', async () => {
    assert.deepEqual(await texts(grid, 'figure:first-child .legend li'), ['dwell 0', 'dwell 2', 'dwell 4']);
    const labels = await grid.evaluate('[...document.querySelectorAll(".mark")].map((mark) => mark.ariaLabel)');
    assert.ok(labels.some((label) => label.startsWith('dwell 2, patience 20: ')), labels.join('\n'));
});

test('a touch tells the figures of a mark, within a narrow window', async () => {
    const { x, y } = await middleOf(grid, '.mark');
    await grid.touch('touchStart', [x, y]);
    await grid.touch('touchEnd');
    await grid.until(`!${TIP}.hidden`);
    assert.ok(await grid.evaluate(`${TIP}.getBoundingClientRect().right <= innerWidth`));
    assert.ok(await grid.evaluate('document.documentElement.scrollWidth <= innerWidth'));
});

test('the page is dark where the system is, until somebody chooses', async () => {
    const ground = 'getComputedStyle(document.body).backgroundColor';
    assert.equal(await grid.evaluate(ground), 'rgb(20, 23, 26)');
    assert.equal(await desk.evaluate(ground), 'rgb(255, 255, 255)');
    await desk.evaluate('document.getElementById("theme").click()');
    await desk.evaluate('document.getElementById("theme").click()');
    assert.equal(await desk.evaluate(ground), 'rgb(20, 23, 26)');
    await desk.evaluate('new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)))');
    assert.deepEqual(await coloursOn(desk, '.plot canvas', [0x6aa9ff, 0x1f6fd6]), [true, false]);
});

test('nothing is asked for and nothing complains', () => {
    for (const page of [desk, grid]) {
        assert.deepEqual(page.problems, []);
        assert.deepEqual(page.requests, []);
    }
});

test('a hostile name is text', async () => {
    const page = await pages.open(makePage('hostile.html', ...walk(HOSTILE.replaceAll('/', '')), '--rule', 'nearest'));
    assert.equal(await page.evaluate('typeof window.hacked'), 'undefined');
    const [name] = await texts(page, '#recordings summary');
    assert.ok(name.endsWith(HOSTILE), name);
    assert.equal(await page.evaluate('document.querySelectorAll("img").length'), 0);
    assert.deepEqual(page.problems, []);
});

test('without a point there is no chart, and the tables say the rest', async () => {
    const lines = pages.write('short.jsonl', linesOf([advertise(0, KITCHEN, -50), advertise(1, KITCHEN, -50)]));
    const late = pages.write('late.truth', linesOf([{ at: 100, truth: KITCHEN }]));
    const page = await pages.open(makePage('empty.html', lines, '--truth', late, '--rule', 'nearest'));
    assert.deepEqual(await texts(page, 'figure'), []);
    assert.equal((await cells(page, '#totals tbody'))[0][0], 'nearest');
    assert.deepEqual(page.problems, []);
});
