// SPDX-License-Identifier: Apache-2.0
// The start of a page: reads its data, builds it, and says so when that fails.

import { byId } from './dom.js';

/** @param show builds the page from its data, an object */
export function startPage(show) {
    try {
        show(JSON.parse(byId('data').textContent));
        document.documentElement.dataset.ready = 'true';
    } catch (error) {
        byId('problem').hidden = false;
        byId('problem').textContent = `This page cannot be shown: ${error.message}`;
        throw error;
    }
}
