// SPDX-License-Identifier: Apache-2.0
// A headless Chromium, driven over a pipe in the DevTools protocol: no package and no open port is needed for it.

import { spawn } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const PATIENCE = 30_000; // milliseconds; far beyond what any answer takes
const QUIET = [
    '--headless', '--no-sandbox', '--disable-gpu', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync', '--disable-dev-shm-usage', '--disable-extensions',
    '--disable-default-apps', '--no-default-browser-check', '--hide-scrollbars', '--force-color-profile=srgb',
    '--host-resolver-rules=MAP * ~NOTFOUND', '--remote-debugging-pipe',
];

export function chromiumPath() {
    return process.env.NEARCAST_CHROMIUM ?? 'chromium';
}

/** Messages over the pipe: JSON, each with a NUL behind it. */
class Connection {
    #out;
    #next = 1;
    #waiting = new Map();
    #rest = '';
    #listeners = [];

    constructor(child) {
        this.#out = child.stdio[3];
        child.stdio[4].setEncoding('utf8');
        child.stdio[4].on('data', (text) => this.#take(text));
        // What it did not get to say is said by those who wait for an answer.
        this.#out.on('error', () => {});
    }

    #take(text) {
        const messages = (this.#rest + text).split('\0');
        this.#rest = messages.pop();
        for (const message of messages.map((part) => JSON.parse(part))) {
            const waiting = this.#waiting.get(message.id);
            this.#waiting.delete(message.id);
            if (waiting === undefined) this.#listeners.forEach((listener) => listener(message));
            else if (message.error) waiting.reject(new Error(`${waiting.method}: ${message.error.message}`));
            else waiting.resolve(message.result);
        }
    }

    onEvent(listener) {
        this.#listeners.push(listener);
    }

    send(method, params = {}, sessionId = undefined) {
        const id = this.#next++;
        return new Promise((resolve, reject) => {
            const timer = setTimeout(() => reject(new Error(`${method}: Chromium does not answer`)), PATIENCE);
            const settle = (action) => (value) => {
                clearTimeout(timer);
                action(value);
            };
            this.#waiting.set(id, { method, resolve: settle(resolve), reject: settle(reject) });
            this.#out.write(`${JSON.stringify({ id, method, params, sessionId })}\0`);
        });
    }
}

/** One page, and what it complained about. */
class Page {
    /** What went wrong on the page, as texts: errors of the console, exceptions, refusals of its policy. */
    problems = [];
    /** The addresses that the page asked for beside its own. */
    requests = [];

    constructor(connection, session) {
        this.connection = connection;
        this.session = session;
        connection.onEvent((event) => {
            if (event.sessionId === session) this.#note(event.method, event.params);
        });
    }

    #note(method, params) {
        if (method === 'Runtime.exceptionThrown') {
            const { text, exception } = params.exceptionDetails;
            this.problems.push(exception?.description ?? text);
        } else if (method === 'Runtime.consoleAPICalled' && ['error', 'warning', 'assert'].includes(params.type)) {
            this.problems.push(params.args.map((part) => part.value ?? part.description).join(' '));
        } else if (method === 'Log.entryAdded' && ['error', 'warning'].includes(params.entry.level)) {
            this.problems.push(params.entry.text);
        } else if (method === 'Network.requestWillBeSent' && !params.request.url.startsWith('file:')) {
            this.requests.push(params.request.url);
        }
    }

    send(method, params) {
        return this.connection.send(method, params, this.session);
    }

    async open(url) {
        await this.send('Page.navigate', { url });
        await this.until('document.readyState === "complete"');
    }

    /** The value of an expression on the page; promises are waited for. */
    async evaluate(expression) {
        const answer = await this.send('Runtime.evaluate', { expression, returnByValue: true, awaitPromise: true });
        if (answer.exceptionDetails) throw new Error(answer.exceptionDetails.exception?.description ?? expression);
        return answer.result.value;
    }

    /** Waits until the expression is true; the page is asked again at each of its frames. */
    until(expression) {
        return this.evaluate(`new Promise((resolve, reject) => {
            const begin = performance.now();
            const look = () => {
                if (${expression}) resolve(true);
                else if (performance.now() - begin > ${PATIENCE / 2}) reject(new Error(${JSON.stringify(expression)}));
                else requestAnimationFrame(look);
            };
            look();
        })`);
    }

    mouse(type, x, y, more = {}) {
        return this.send('Input.dispatchMouseEvent', { type, x, y, pointerType: 'mouse', ...more });
    }

    touch(type, ...points) {
        return this.send('Input.dispatchTouchEvent', { type, touchPoints: points.map(([x, y], id) => ({ x, y, id })) });
    }

    async key(key) {
        // The browser itself acts on Tab, and knows it by its code alone.
        const code = key === 'Tab' ? { code: 'Tab', windowsVirtualKeyCode: 9 } : {};
        await this.send('Input.dispatchKeyEvent', { type: 'keyDown', key, ...code });
        await this.send('Input.dispatchKeyEvent', { type: 'keyUp', key, ...code });
    }

    /** A picture of the window, or of the whole page, as PNG. */
    async screenshot(whole = false) {
        const { data } = await this.send('Page.captureScreenshot', { format: 'png', captureBeyondViewport: whole });
        return Buffer.from(data, 'base64');
    }
}

/** Starts a browser of its own and opens a page in it. `close` ends both and leaves nothing behind. */
export async function openBrowser({ width = 1200, height = 900, dark = false, touch = false } = {}) {
    const folder = mkdtempSync(join(tmpdir(), 'nearcast-chromium-'));
    const child = spawn(chromiumPath(), [...QUIET, `--user-data-dir=${folder}`, 'about:blank'],
        { stdio: ['ignore', 'ignore', 'ignore', 'pipe', 'pipe'] });
    const ended = new Promise((resolve) => child.once('close', resolve));
    const failed = new Promise((_, reject) => child.once('error', reject));
    const connection = new Connection(child);
    const { targetInfos } = await Promise.race([connection.send('Target.getTargets'), failed]);
    const { targetId } = targetInfos.find((target) => target.type === 'page');
    const { sessionId } = await connection.send('Target.attachToTarget', { targetId, flatten: true });
    const page = new Page(connection, sessionId);
    for (const domain of ['Page', 'Runtime', 'Log', 'Network']) await page.send(`${domain}.enable`);
    await page.send('Emulation.setDeviceMetricsOverride', { width, height, deviceScaleFactor: 1, mobile: touch });
    await page.send('Emulation.setFocusEmulationEnabled', { enabled: true });
    await page.send('Emulation.setTouchEmulationEnabled', { enabled: touch });
    await page.send('Emulation.setEmulatedMedia',
        { features: [{ name: 'prefers-color-scheme', value: dark ? 'dark' : 'light' }] });
    const close = async () => {
        connection.send('Browser.close').catch(() => {});
        await ended;
        rmSync(folder, { recursive: true, force: true, maxRetries: 5, retryDelay: 100 });
    };
    return { page, close };
}
