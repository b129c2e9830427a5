// SPDX-License-Identifier: Apache-2.0
// Beginning of a page: its data are read and handed on; a page that cannot be shown says so.

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
