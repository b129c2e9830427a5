// SPDX-License-Identifier: Apache-2.0
// The program as it is built where uPlot is missing: what needs no page works, and the rest says what is missing.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import test, { after } from 'node:test';

const MISSING = /built without uPlot.*npm ci --ignore-scripts.*web/;

const folder = mkdtempSync(join(tmpdir(), 'nearcast-without-'));
after(() => rmSync(folder, { recursive: true }));

const run = (...words) => spawnSync(process.env.NEARCAST_PROGRAM, words, { encoding: 'utf8' });

function write(name, text) {
    writeFileSync(join(folder, name), text);
    return join(folder, name);
}

const walk = write('walk.jsonl', [0, 1, 2].map((at) =>
    `{"at": ${at}, "do": "advertise", "manufacturerData": "FFFF000000000001", "RSSI": -50}\n`).join(''));
write('walk.truth.jsonl', '{"at": 0, "truth": "00:00:00:00:00:01"}\n');

test('report fails, says what is missing and how to get it, and leaves the page that was there', () => {
    const page = write('report.html', 'before');
    const { status, stdout, stderr } = run('report', walk, '-o', page);
    assert.equal(status, 1, stderr);
    assert.equal(stdout, '');
    assert.match(stderr, /^nearcast report: /);
    assert.match(stderr, MISSING);
    assert.equal(readFileSync(page, 'utf8'), 'before');
});

test('evaluate with a page fails before it plays anything', () => {
    const page = write('evaluate.html', 'before');
    const { status, stdout, stderr } = run('evaluate', walk, '--html', page);
    assert.equal(status, 1, stderr);
    assert.equal(stdout, '');
    assert.match(stderr, /^nearcast evaluate: /);
    assert.match(stderr, MISSING);
    assert.equal(readFileSync(page, 'utf8'), 'before');
});

test('evaluate without a page prints its figures', () => {
    const { status, stdout, stderr } = run('evaluate', walk);
    assert.equal(status, 0, stderr);
    assert.match(stdout, /nearest/);
});
