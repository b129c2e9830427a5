// SPDX-License-Identifier: Apache-2.0
// Light or dark colours: those of the system until the user chooses.

import { byId } from './dom.js';

const NEXT = { automatic: 'light', light: 'dark', dark: 'automatic' };

/** Sets `dark` and `colours` in the store, now and after each change, and handles the button. */
export function attachTheme(store) {
    const system = matchMedia('(prefers-color-scheme: dark)');
    let choice = 'automatic';
    const apply = () => {
        if (choice === 'automatic') delete document.documentElement.dataset.theme;
        else document.documentElement.dataset.theme = choice;
        byId('theme').textContent = `Colours: ${choice === 'automatic' ? 'auto' : choice}`;
        const style = getComputedStyle(document.documentElement);
        const colours = {};
        for (const name of ['ground', 'text', 'quiet', 'line', 'grid', 'none', 'blind', 'alarm', 'on-colour',
            'accent', 'other']) {
            colours[name] = style.getPropertyValue(`--${name}`).trim();
        }
        store.set({ dark: choice === 'automatic' ? system.matches : choice === 'dark', colours });
    };
    byId('theme').addEventListener('click', () => {
        choice = NEXT[choice];
        apply();
    });
    system.addEventListener('change', apply);
    apply();
}
