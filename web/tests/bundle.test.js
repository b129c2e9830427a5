// SPDX-License-Identifier: Apache-2.0
// The modules of a page are put together to one script by cmake/BundleModules.cmake; these are the rules it relies on.
import assert from 'node:assert/strict';
import { readFileSync, readdirSync } from 'node:fs';
import { basename, dirname, join } from 'node:path';
import test from 'node:test';
import { fileURLToPath } from 'node:url';

const web = join(dirname(fileURLToPath(import.meta.url)), '..');
const modulesOf = (folder) =>
    readdirSync(join(web, folder)).filter((name) => name.endsWith('.js')).map((name) => join(web, folder, name));
const textOf = (path) => readFileSync(path, 'utf8');
const pages = ['report', 'evaluate'].map((page) => [page, [...modulesOf('shared'), ...modulesOf(page)]]);
const all = [...modulesOf('shared'), ...modulesOf('report'), ...modulesOf('evaluate')];

test('there are modules', () => {
    for (const folder of ['shared', 'report', 'evaluate']) assert.ok(modulesOf(folder).length > 4, folder);
});

for (const [page, modules] of pages) {
    test(`${page}: no two modules give different things the same name`, () => {
        const owner = new Map();
        for (const path of modules) {
            for (const [, thing] of textOf(path).matchAll(/^(?:export )?(?:const|let|function|class) (\w+)/gm)) {
                assert.equal(owner.get(thing), undefined, `${thing} is in ${owner.get(thing)} and in ${path}`);
                owner.set(thing, path);
            }
        }
    });

    test(`${page}: no two modules have the same name`, () => {
        assert.equal(new Set(modules.map((path) => basename(path))).size, modules.length);
    });
}

test('each module imports only what another one exports, from its own folder or the shared one', () => {
    for (const path of all) {
        const imports = [...textOf(path).matchAll(/^import \{ (.*) \} from '((?:\.|\.\.\/shared)\/[^/']*)';$/gm)];
        assert.equal(imports.length, textOf(path).match(/^import /gm)?.length ?? 0, path);
        for (const [, list, from] of imports) {
            for (const thing of list.split(', ')) {
                const exported = new RegExp(`^export (?:const|function|class) ${thing}\\b`, 'm');
                assert.match(textOf(join(dirname(path), from)), exported, `${path} imports ${thing}`);
            }
        }
    }
});

test('nothing in the scripts ends the element that they stand in', () => {
    const plot = textOf(join(web, 'node_modules', 'uplot', 'dist', 'uPlot.iife.min.js'));
    for (const text of [...all.map(textOf), plot]) assert.doesNotMatch(text, /<\/script|<!--/i);
});

test('no line is longer than 120 characters', () => {
    for (const path of all) {
        for (const line of textOf(path).split('\n')) assert.ok([...line].length <= 120, `${path}: ${line}`);
    }
});

test('what npm fetches is fixed by its hash, from whatever registry it comes', () => {
    const lock = textOf(join(web, 'package-lock.json'));
    assert.doesNotMatch(lock, /:\/\/|"resolved"/);
    const { '': own, ...packages } = JSON.parse(lock).packages;
    assert.deepEqual(own.dependencies, JSON.parse(textOf(join(web, 'package.json'))).dependencies);
    for (const [name, { version, integrity }] of Object.entries(packages)) {
        assert.match(integrity, /^sha512-[A-Za-z0-9+/]{86}==$/, name);
        assert.equal(version, own.dependencies[name.replace('node_modules/', '')]);
    }
    assert.match(textOf(join(web, '.npmrc')), /^omit-lockfile-registry-resolved=true$/m);
});
