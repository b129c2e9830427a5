// SPDX-License-Identifier: Apache-2.0
// The modules are put together to one script by cmake/BundleModules.cmake; these are the rules that it lives by.
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { dirname, join } from 'node:path';
import test from 'node:test';
import { fileURLToPath } from 'node:url';

const folder = join(dirname(fileURLToPath(import.meta.url)), '..', 'report');
const modules = readdirSync(folder).filter((name) => name.endsWith('.js'));
const textOf = (name) => readFileSync(join(folder, name), 'utf8');

test('there are modules', () => {
    assert.ok(modules.length > 10);
});

test('no two modules give different things the same name', () => {
    const owner = new Map();
    for (const name of modules) {
        for (const [, thing] of textOf(name).matchAll(/^(?:export )?(?:const|let|function|class) (\w+)/gm)) {
            assert.equal(owner.get(thing), undefined, `${thing} is in ${owner.get(thing)} and in ${name}`);
            owner.set(thing, name);
        }
    }
});

test('each module imports only what another one exports', () => {
    for (const name of modules) {
        for (const [, list, from] of textOf(name).matchAll(/^import \{ (.*) \} from '\.\/(.*)';$/gm)) {
            for (const thing of list.split(', ')) {
                const exported = new RegExp(`^export (?:const|function|class) ${thing}\\b`, 'm');
                assert.match(textOf(from), exported, `${name} imports ${thing}`);
            }
        }
    }
});

test('nothing in the scripts ends the element that they stand in', () => {
    const vendored = readFileSync(join(folder, '..', 'vendor', 'uplot', 'uPlot.iife.min.js'), 'utf8');
    for (const text of [...modules.map(textOf), vendored]) {
        assert.doesNotMatch(text, /<\/script|<!--/i);
    }
});

test('no line is longer than 120 characters', () => {
    for (const name of modules) {
        for (const line of textOf(name).split('\n')) assert.ok([...line].length <= 120, `${name}: ${line}`);
    }
});
